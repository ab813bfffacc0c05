// What the C interface adds to a page render: the document library's
// RenderPage (the baseline) beside tarvik_render_rgba (render, then BGRA to
// RGBA into the caller's buffer) and tarvik_render_image, at 150 dpi. bench/python_bench.py runs the
// baseline to measure the Python module against it.
//   tarvik_capi_bench [--benchmark_filter=...]   (TARVIK_BENCH_OFD=file to choose the page)
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tarvik/tarvik_c.h"
#include "tarvik/viewer.h"

namespace {

std::string PagePath() {
  const char* chosen = std::getenv("TARVIK_BENCH_OFD");
  return chosen ? chosen : std::string(TARVIK_SOURCE_DIR) + "/testdata/signed_v4_png.ofd";
}

void BM_RenderPageCpp(benchmark::State& state) {
  tarvik::viewer::Error error;
  auto doc = tarvik::viewer::Document::Open(PagePath(), &error);
  if (!doc) {
    state.SkipWithError(error.message.c_str());
    return;
  }
  tarvik::viewer::RenderOptions options;
  options.dpi = 150;
  for (auto _ : state) {
    auto page = doc->RenderPage(0, options);
    benchmark::DoNotOptimize(page.get());
  }
}
BENCHMARK(BM_RenderPageCpp)->Unit(benchmark::kMillisecond)->UseRealTime();

// One document rendered by several threads at once: per-render time, so that
// two threads at the same time per render means twice the pages.
void BM_RenderPageCppThreads(benchmark::State& state) {
  static std::unique_ptr<tarvik::viewer::Document> doc;
  if (state.thread_index() == 0) doc = tarvik::viewer::Document::Open(PagePath());
  tarvik::viewer::RenderOptions options;
  options.dpi = 150;
  for (auto _ : state) {
    if (!doc) {
      state.SkipWithError("cannot open the page");
      break;
    }
    auto page = doc->RenderPage(0, options);
    benchmark::DoNotOptimize(page.get());
  }
  if (state.thread_index() == 0) doc.reset();
}
BENCHMARK(BM_RenderPageCppThreads)->Unit(benchmark::kMillisecond)->UseRealTime()->Threads(1)->Threads(2);

void BM_RenderPageCApi(benchmark::State& state) {
  tarvik_document* doc = nullptr;
  if (tarvik_open(PagePath().c_str(), nullptr, &doc) != TARVIK_OK) {
    state.SkipWithError(tarvik_last_error());
    return;
  }
  int w = 0, h = 0;
  tarvik_pixel_size(doc, 0, 150, &w, &h);
  std::vector<uint8_t> pixels(static_cast<size_t>(w) * h * 4);
  for (auto _ : state) {
    if (tarvik_render_rgba(doc, 0, nullptr, pixels.data(), pixels.size(), 0, &w, &h, nullptr) != TARVIK_OK) {
      state.SkipWithError(tarvik_last_error());
      break;
    }
    benchmark::DoNotOptimize(pixels.data());
  }
  tarvik_close(doc);
}
BENCHMARK(BM_RenderPageCApi)->Unit(benchmark::kMillisecond)->UseRealTime();

// The picture the library allocates, converted in place (what Python uses).
void BM_RenderPageCApiImage(benchmark::State& state) {
  tarvik_document* doc = nullptr;
  if (tarvik_open(PagePath().c_str(), nullptr, &doc) != TARVIK_OK) {
    state.SkipWithError(tarvik_last_error());
    return;
  }
  for (auto _ : state) {
    tarvik_image* image = nullptr;
    if (tarvik_render_image(doc, 0, nullptr, &image, nullptr) != TARVIK_OK) {
      state.SkipWithError(tarvik_last_error());
      break;
    }
    benchmark::DoNotOptimize(image);
    tarvik_image_free(image);
  }
  tarvik_close(doc);
}
BENCHMARK(BM_RenderPageCApiImage)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
