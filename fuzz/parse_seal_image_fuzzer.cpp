// Feeds arbitrary bytes to ParseSealImage: raster decoders and the package
// check must reject them without crashing, leaking or hanging.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "tarvik/tarvik.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The unknown-kind message would flood the output; the content is checked
  // by the tests, not here.
  std::freopen("/dev/null", "w", stdout);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 22)) return 0;
  std::vector<unsigned char> bytes(data, data + size);
  bool isOfd = false;
  std::unique_ptr<tarvik::Dib> dib(tarvik::ParseSealImage(
      bytes.data(), static_cast<unsigned int>(bytes.size()), 64, 64, 0, isOfd));
  if (dib) {
    // Touch every row so that a wrong pitch or height shows up under ASan.
    uint8_t sum = 0;
    for (int y = 0; y < dib->GetHeight(); ++y) sum ^= dib->GetScanline(y)[dib->GetPitch() - 1];
    volatile uint8_t sink = sum;
    (void)sink;
  }
  return 0;
}
