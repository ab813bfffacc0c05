// Feeds arbitrary text to the abbreviated path parser and draws what it made
// (fuzz/path_data_job.h).
#include <cstdint>
#include <string>

#include "fuzz/path_data_job.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (fuzzjob::ParsePathData(std::string(reinterpret_cast<const char*>(data), size)) < 0)
    __builtin_trap();
  return 0;
}
