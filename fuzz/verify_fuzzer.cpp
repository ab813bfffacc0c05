// Feeds arbitrary bytes to the signature verifier (fuzz/verify_job.h).
#include <cstdint>
#include <string>

#include "fuzz/verify_job.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzjob::Verify(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
