// Feeds arbitrary bytes as an OFD package through the whole document job:
// open, parse, draw pages with their seals at a low resolution. Bad packages
// must fail cleanly; hostile ones must stay within the renderer's limits.
#include <cstdint>
#include <string>

#include "fuzz/ofd_document_job.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 22)) return 0;
  fuzzjob::DrawOfdDocument(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
