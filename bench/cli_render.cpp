// The tarvik program on a multi-page document: the same pages on one thread
// and on two (the ratio of the two times is the speed-up), and the size of
// a signed page as PDF beside the same page as a 150-dpi PNG.
//
// Run: build/bench/tarvik_cli_bench (needs the fixture folder for the
// multi-page document).
#include <benchmark/benchmark.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path kDocument = fs::path(TARVIK_FIXTURE_DIR) / "ofdrw__anzhengtong_manual_seal.ofd";

bool Run(const std::string& args) {
  const std::string command = std::string("'") + TARVIK_CLI + "' " + args + " >/dev/null 2>&1";
  const int status = std::system(command.c_str());
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Six pages at 150 dpi: an even count, so two threads can split them evenly.
void BM_RenderPages(benchmark::State& state) {
  if (!fs::exists(kDocument)) {
    state.SkipWithError("fixture absent");
    return;
  }
  const fs::path out = fs::temp_directory_path() / "tarvik_cli_bench";
  const std::string args = "render '" + kDocument.string() + "' --pages 1-6 --dpi 150 -q --threads " +
                           std::to_string(state.range(0)) + " -o '" + out.string() + "/'";
  for (auto _ : state) {
    if (!Run(args)) {
      state.SkipWithError("tarvik render failed");
      break;
    }
  }
  state.counters["pages/s"] = benchmark::Counter(6, benchmark::Counter::kIsIterationInvariantRate);
  fs::remove_all(out);
}
BENCHMARK(BM_RenderPages)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

// The machine's own ceiling for the ratio above, in the same run: a fixed
// amount of arithmetic split over one or two threads. On a shared or
// virtual machine two threads may give less than 2x here too.
void BM_CpuCeiling(benchmark::State& state) {
  const int threads = static_cast<int>(state.range(0));
  constexpr uint64_t kWork = 400'000'000;
  for (auto _ : state) {
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
      pool.emplace_back([&] {
        uint64_t x = 1;
        for (uint64_t i = 0; i < kWork / threads; ++i) x = x * 6364136223846793005ULL + i;
        benchmark::DoNotOptimize(x);
      });
    }
    for (std::thread& t : pool) t.join();
  }
}
BENCHMARK(BM_CpuCeiling)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

// The signed sample as PDF and as PNG: the counters are the file sizes.
void BM_SignedPageFormats(benchmark::State& state) {
  const fs::path out = fs::temp_directory_path() / "tarvik_cli_bench_formats";
  fs::create_directories(out);
  const std::string input = std::string("'") + TARVIK_SOURCE_DIR + "/testdata/signed_v4_png.ofd'";
  const bool pdf = state.range(0) == 1;
  const fs::path file = out / (pdf ? "page.pdf" : "page.png");
  for (auto _ : state) {
    if (!Run("render " + input + " --page 1 -q -o '" + file.string() + "'")) {
      state.SkipWithError("tarvik render failed");
      break;
    }
  }
  std::error_code ec;
  state.counters["bytes"] = static_cast<double>(fs::file_size(file, ec));
  state.SetLabel(pdf ? "PDF" : "PNG 150 dpi");
  fs::remove_all(out);
}
BENCHMARK(BM_SignedPageFormats)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
