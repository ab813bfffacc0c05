// The box blur of a seal-sized bitmap at a few radii, beside a full copy of
// the same bitmap (the floor: the blur writes every byte once more).
#include <benchmark/benchmark.h>

#include <memory>

#include "image/box_filter.h"

namespace {

constexpr int kSide = 472;  // 40 mm at 300 dpi

std::unique_ptr<host::Dib> Seal() {
  auto dib = host::Dib::Create(kSide, kSide, host::kDibArgb32);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      if ((x / 8 + y / 8) % 3 == 0) dib->SetPixel({x, y}, 0xFFE0201A);
    }
  }
  return dib;
}

void BM_BoxBlurSeal(benchmark::State& state) {
  const std::unique_ptr<host::Dib> seal = Seal();
  for (auto _ : state) {
    std::unique_ptr<host::Dib> copy = seal->Clone();
    tarvik::BlurSealImage(*copy, static_cast<int>(state.range(0)));
    benchmark::DoNotOptimize(copy.get());
  }
}
BENCHMARK(BM_BoxBlurSeal)->Arg(1)->Arg(3)->Arg(8)->Unit(benchmark::kMicrosecond);

void BM_CopySealForBlur(benchmark::State& state) {
  const std::unique_ptr<host::Dib> seal = Seal();
  for (auto _ : state) {
    std::unique_ptr<host::Dib> copy = seal->Clone();
    benchmark::DoNotOptimize(copy.get());
  }
}
BENCHMARK(BM_CopySealForBlur)->Unit(benchmark::kMicrosecond);

}  // namespace
