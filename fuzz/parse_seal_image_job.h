// The job the seal picture fuzz target runs, shared with the corpus replay
// test: arbitrary bytes through ParseSealImage, whose raster decoders and
// package check must reject them without crashing, leaking or hanging.
// Returns 1 when a picture came out, 0 when the bytes were refused.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvik/tarvik.h"

namespace fuzzjob {

inline int ParseSealImage(std::string bytes) {
  if (bytes.size() > (1u << 22)) return 0;
  bool isOfd = false;
  std::unique_ptr<tarvik::Dib> dib(
      tarvik::ParseSealImage(reinterpret_cast<unsigned char*>(bytes.data()),
                             static_cast<unsigned int>(bytes.size()), 64, 64, 0, isOfd));
  if (!dib) return 0;
  // Touch every row so that a wrong pitch or height shows up under ASan.
  uint8_t sum = 0;
  for (int y = 0; y < dib->GetHeight(); ++y) sum ^= dib->GetScanline(y)[dib->GetPitch() - 1];
  volatile uint8_t sink = sum;
  (void)sink;
  return 1;
}

}  // namespace fuzzjob
