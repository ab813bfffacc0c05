// Decoding a raster seal picture, beside copying the decoded bitmap (the
// floor: any decoder has to write at least that many bytes).
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "host/base/codec.h"
#include "tarvik/tarvik.h"

namespace {

// A 600 x 600 seal-like picture: red ring and star on transparent ground.
const std::string& SealPng() {
  static const std::string png = [] {
    auto dib = host::Dib::Create(600, 600, host::kDibArgb32);
    for (int y = 0; y < 600; ++y) {
      for (int x = 0; x < 600; ++x) {
        const double r = std::hypot(x - 300.0, y - 300.0);
        const bool ink = (r > 260 && r < 285) || (r < 90 && std::fmod(std::atan2(y - 300.0, x - 300.0) + 7, 1.2566) < 0.6);
        if (ink) dib->SetPixel({x, y}, 0xFFE0201A);
      }
    }
    std::string out;
    host::EncodePng(*dib, out);
    return out;
  }();
  return png;
}

void BM_ParseRasterSeal(benchmark::State& state) {
  std::string bytes = SealPng();
  for (auto _ : state) {
    bool isOfd = false;
    std::unique_ptr<host::Dib> dib(tarvik::ParseSealImage(
        reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, 0,
        0, isOfd));
    benchmark::DoNotOptimize(dib.get());
  }
}
BENCHMARK(BM_ParseRasterSeal)->Unit(benchmark::kMicrosecond);

void BM_CopyDecodedSeal(benchmark::State& state) {
  bool isOfd = false;
  std::string bytes = SealPng();
  std::unique_ptr<host::Dib> dib(tarvik::ParseSealImage(
      reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, 0, 0,
      isOfd));
  const size_t size = static_cast<size_t>(dib->GetPitch()) * dib->GetHeight();
  std::unique_ptr<uint8_t[]> target(new uint8_t[size]);
  for (auto _ : state) {
    std::memcpy(target.get(), dib->GetBuffer(), size);
    benchmark::DoNotOptimize(target.get());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_CopyDecodedSeal)->Unit(benchmark::kMicrosecond);

}  // namespace
