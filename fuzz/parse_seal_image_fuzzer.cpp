// Feeds arbitrary bytes to ParseSealImage (fuzz/parse_seal_image_job.h).
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz/parse_seal_image_job.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The unknown-kind message would flood the output; the content is checked
  // by the tests, not here.
  std::freopen("/dev/null", "w", stdout);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzjob::ParseSealImage(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
