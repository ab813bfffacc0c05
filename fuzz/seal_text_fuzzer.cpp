// Drives the seal text layout, its drawing and the stamp engines with
// arbitrary parameters (fuzz/seal_text_job.h).
#include <cstdint>
#include <string>

#include "fuzz/seal_text_job.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzjob::DrawSealText(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
