// The box blur of a seal-sized bitmap (472 x 472, 40 mm at 300 dpi) and of a
// 2048 x 2048 one at a few radii, beside a full copy of the same bitmap (the
// floor: the blur writes every byte once more) and, when OpenCV was found at
// configure time, its cv::blur with repeated edges on one thread (a fast
// integer box filter: the reference the blur is measured against).
#include <benchmark/benchmark.h>

#include <memory>

#include "image/box_filter.h"

#ifdef TARVIK_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

std::unique_ptr<host::Dib> Seal(int side) {
  auto dib = host::Dib::Create(side, side, host::kDibArgb32);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      if ((x / 8 + y / 8) % 3 == 0) dib->SetPixel({x, y}, 0xFFE0201A);
    }
  }
  return dib;
}

void BM_BoxBlurSeal(benchmark::State& state) {
  const std::unique_ptr<host::Dib> seal = Seal(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::unique_ptr<host::Dib> copy = seal->Clone();
    tarvik::BlurSealImage(*copy, static_cast<int>(state.range(1)));
    benchmark::DoNotOptimize(copy.get());
  }
}
BENCHMARK(BM_BoxBlurSeal)
    ->Args({472, 1})
    ->Args({472, 3})
    ->Args({472, 8})
    ->Args({2048, 3})
    ->Unit(benchmark::kMicrosecond);

void BM_CopySealForBlur(benchmark::State& state) {
  const std::unique_ptr<host::Dib> seal = Seal(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    std::unique_ptr<host::Dib> copy = seal->Clone();
    benchmark::DoNotOptimize(copy.get());
  }
}
BENCHMARK(BM_CopySealForBlur)->Arg(472)->Arg(2048)->Unit(benchmark::kMicrosecond);

#ifdef TARVIK_HAVE_OPENCV
void BM_OpenCvBlur(benchmark::State& state) {
  cv::setNumThreads(1);
  const int side = static_cast<int>(state.range(0)), radius = static_cast<int>(state.range(1));
  const std::unique_ptr<host::Dib> seal = Seal(side);
  const cv::Mat source(side, side, CV_8UC4, seal->GetBuffer());
  for (auto _ : state) {
    cv::Mat copy = source.clone();
    cv::blur(copy, copy, cv::Size(2 * radius + 1, 2 * radius + 1), cv::Point(-1, -1),
             cv::BORDER_REPLICATE);
    benchmark::DoNotOptimize(copy.data);
  }
}
BENCHMARK(BM_OpenCvBlur)
    ->Args({472, 1})
    ->Args({472, 3})
    ->Args({472, 8})
    ->Args({2048, 3})
    ->Unit(benchmark::kMicrosecond);
#endif

}  // namespace
