// A user's job, end to end: page 1 of each signed fixture opened, parsed and
// drawn with its seals at 150 dpi (tools/render_command.cpp's calls, no
// output file), each iteration beside the floor for that page size (a
// page-sized bitmap made, cleared and read back) measured in the same
// iteration. Counters: floor_ms and x_floor (job / floor).
//  - BM_Document/<name>: warm, in this process.
//  - BM_FirstDocument/<name>: a new process's first document (tarvik_first_document);
//    x_warm is first / warm within that process.
//  - BM_TarvikRender/<name>: the whole `tarvik render --page 1` run, output
//    file included, wall time; x_first is against the in-process first document.
//  - BM_DocumentThreads/<name>: the job on 1 or 2 threads (each its own
//    document), and BM_SharedTarvikThreads: page 1 of one open document
//    through one Tarvik; compare items_per_second, and against
//    BM_ThreadCeiling, the machine's own ratio for lock-free arithmetic (a
//    loaded or shared machine gives less than 2x there too).
// The documents are read from TARVIK_FIXTURE_DIR, else ../shared/fixtures/ofd
// beside the source tree; without them nothing is registered.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "document_job.h"

extern char** environ;

namespace {

constexpr int kDpi = 150;

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double>(b - a).count();
}

struct Fixture {
  std::string path;
  int width = 0, height = 0;
};

void SetFloorCounters(benchmark::State& state, double job, double floor) {
  state.counters["floor_ms"] = floor * 1e3 / static_cast<double>(state.iterations());
  state.counters["x_floor"] = floor > 0 ? job / floor : 0;
}

void Document(benchmark::State& state, const Fixture* f) {
  double job = 0, floor = 0;
  for (auto _ : state) {
    const auto t0 = Clock::now();
    std::unique_ptr<host::Dib> page = bench::RenderFirstPage(f->path, kDpi);
    const auto t1 = Clock::now();
    std::unique_ptr<host::Dib> empty = bench::Floor(f->width, f->height);
    const auto t2 = Clock::now();
    benchmark::DoNotOptimize(page.get());
    benchmark::DoNotOptimize(empty.get());
    job += Seconds(t0, t1);
    floor += Seconds(t1, t2);
    state.SetIterationTime(Seconds(t0, t1));
  }
  SetFloorCounters(state, job, floor);
}

// Runs argv to its end with stdout into `out` (when given); false on failure.
bool Run(const std::vector<std::string>& args, std::string* out) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  int pipeFds[2];
  if (pipe(pipeFds) != 0) return false;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipeFds[1], 1);
  posix_spawn_file_actions_addclose(&actions, pipeFds[0]);
  pid_t pid = 0;
  const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipeFds[1]);
  std::string text;
  char buffer[256];
  for (ssize_t n; (n = read(pipeFds[0], buffer, sizeof buffer)) > 0;) text.append(buffer, n);
  close(pipeFds[0]);
  int status = 0;
  if (rc != 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return false;
  if (out) *out = text;
  return true;
}

// First, warm and floor seconds of a new process's job.
bool FirstInProcess(const Fixture* f, double& first, double& warm, double& floor) {
  std::string out;
  if (!Run({TARVIK_FIRST_DOCUMENT, f->path, std::to_string(kDpi)}, &out)) return false;
  long long a = 0, b = 0, c = 0;
  if (std::sscanf(out.c_str(), "%lld %lld %lld", &a, &b, &c) != 3) return false;
  first = a * 1e-6, warm = b * 1e-6, floor = c * 1e-6;
  return true;
}

void FirstDocument(benchmark::State& state, const Fixture* f) {
  double first = 0, warm = 0, floor = 0;
  for (auto _ : state) {
    double a = 0, b = 0, c = 0;
    if (!FirstInProcess(f, a, b, c)) {
      state.SkipWithError("tarvik_first_document failed");
      return;
    }
    first += a, warm += b, floor += c;
    state.SetIterationTime(a);
  }
  SetFloorCounters(state, first, floor);
  state.counters["x_warm"] = warm > 0 ? first / warm : 0;
}

#ifdef TARVIK_CLI
void TarvikRender(benchmark::State& state, const Fixture* f) {
  const std::string output =
      (std::filesystem::temp_directory_path() / "tarvik_bench_render.png").string();
  double whole = 0, first = 0;
  for (auto _ : state) {
    const auto t0 = Clock::now();
    if (!Run({TARVIK_CLI, "render", f->path, "--page", "1", "--dpi", std::to_string(kDpi), "-o",
              output},
             nullptr)) {
      state.SkipWithError("tarvik render failed");
      return;
    }
    const double s = Seconds(t0, Clock::now());
    state.SetIterationTime(s);
    whole += s;
    double a = 0, b = 0, c = 0;
    if (FirstInProcess(f, a, b, c)) first += a;
  }
  std::error_code ec;
  std::filesystem::remove(output, ec);
  state.counters["first_ms"] = first * 1e3 / static_cast<double>(state.iterations());
  state.counters["x_first"] = first > 0 ? whole / first : 0;
}
#endif

void DocumentThreads(benchmark::State& state, const Fixture* f) {
  for (auto _ : state) {
    std::unique_ptr<host::Dib> page = bench::RenderFirstPage(f->path, kDpi);
    benchmark::DoNotOptimize(page.get());
  }
  state.SetItemsProcessed(state.iterations());
}

void SharedTarvikThreads(benchmark::State& state, bench::OpenSigned* doc) {
  for (auto _ : state) {
    std::unique_ptr<host::Dib> page = bench::RenderFirstPage(*doc, kDpi);
    benchmark::DoNotOptimize(page.get());
  }
  state.SetItemsProcessed(state.iterations());
}

void ThreadCeiling(benchmark::State& state) {
  for (auto _ : state) {
    uint64_t x = 1;
    for (uint64_t i = 0; i < 20'000'000; ++i) x = x * 6364136223846793005ULL + i;
    benchmark::DoNotOptimize(x);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ThreadCeiling)->Name("BM_ThreadCeiling")->Threads(1)->Threads(2)->UseRealTime()
    ->Unit(benchmark::kMillisecond);

std::filesystem::path FixtureFolder() {
  if (const char* dir = std::getenv("TARVIK_FIXTURE_DIR")) return dir;
  return std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "shared" / "fixtures" / "ofd";
}

const bool kRegistered = [] {
  static std::vector<std::unique_ptr<Fixture>> fixtures;
  static std::vector<std::unique_ptr<bench::OpenSigned>> shared;
  std::error_code ec;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(FixtureFolder(), ec))
    if (entry.path().extension() == ".ofd") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    auto f = std::make_unique<Fixture>();
    f->path = file.string();
    // Signed documents only: a job that draws a page with seals.
    auto doc = std::make_unique<bench::OpenSigned>();
    if (!doc->Open(f->path) || !bench::FirstPageSize(f->path, kDpi, f->width, f->height) ||
        !bench::RenderFirstPage(*doc, kDpi))
      continue;
    const std::string name = file.stem().string();
    benchmark::RegisterBenchmark(("BM_Document/" + name).c_str(), Document, f.get())
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("BM_FirstDocument/" + name).c_str(), FirstDocument, f.get())
        ->UseManualTime()
        ->Iterations(5)
        ->Unit(benchmark::kMillisecond);
#ifdef TARVIK_CLI
    benchmark::RegisterBenchmark(("BM_TarvikRender/" + name).c_str(), TarvikRender, f.get())
        ->UseManualTime()
        ->Iterations(5)
        ->Unit(benchmark::kMillisecond);
#endif
    benchmark::RegisterBenchmark(("BM_DocumentThreads/" + name).c_str(), DocumentThreads, f.get())
        ->Threads(1)
        ->Threads(2)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("BM_SharedTarvikThreads/" + name).c_str(), SharedTarvikThreads,
                                 doc.get())
        ->Threads(1)
        ->Threads(2)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    fixtures.push_back(std::move(f));
    shared.push_back(std::move(doc));
  }
  return true;
}();

}  // namespace
