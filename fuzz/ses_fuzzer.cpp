// Feeds arbitrary bytes to the seal and signature parsers (fuzz/ses_job.h).
#include <cstdint>
#include <string>

#include "fuzz/ses_job.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzjob::ParseSes(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
