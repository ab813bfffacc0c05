// Decoding a raster seal picture, beside copying the decoded bitmap (the
// floor: any decoder has to write at least that many bytes); rendering an OFD
// seal package at 300 dpi, beside clearing and filling a bitmap of the same
// size with cairo (the floor for any rendering).
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "host/base/bitmap_device.h"
#include "host/base/codec.h"
#include "host/base/path.h"
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

// testdata/sample_seal.ofd: a 40 mm round seal drawn as an OFD page.
std::string SealOfd() {
  const auto file =
      std::filesystem::path(__FILE__).parent_path() / ".." / "testdata" / "sample_seal.ofd";
  std::ifstream in(file, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void BM_RenderOfdSeal300Dpi(benchmark::State& state) {
  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  std::string bytes = SealOfd();
  for (auto _ : state) {
    bool isOfd = false;
    std::unique_ptr<host::Dib> dib(tarvik::ParseSealImage(
        reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()), 0, 0,
        300, isOfd));
    if (!dib) {
      state.SkipWithError("OFD seal did not render");
      return;
    }
    benchmark::DoNotOptimize(dib.get());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RenderOfdSeal300Dpi)->Unit(benchmark::kMicrosecond);

// 40 mm at 300 dpi: 472 x 472 pixels, the size the seal above renders at.
void BM_ClearAndFillOfdSealSize(benchmark::State& state) {
  constexpr int kSide = 472;
  host::Path rect;
  rect.AddRect(0, 0, kSide, kSide);
  for (auto _ : state) {
    std::unique_ptr<host::Device> device =
        host::CreateBitmapDevice(kSide, kSide, host::kDibArgb32, 0xFFFFFFFF);
    device->FillPath(rect, host::Matrix(), 0xFF808080, host::FillRule::kNonZero);
    std::unique_ptr<host::Dib> dib(device->TakeBitmap());
    benchmark::DoNotOptimize(dib.get());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ClearAndFillOfdSealSize)->Unit(benchmark::kMicrosecond);

}  // namespace
