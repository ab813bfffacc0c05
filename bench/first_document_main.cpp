// tarvik_first_document FILE DPI: draws page 1 of FILE with its seals twice
// in this new process, then the floor for that page size, and prints the
// three times in microseconds: "first warm floor". The benchmark runs it to
// see what the first document of a process costs.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "document_job.h"

namespace {

template <typename Job>
long long Microseconds(Job job) {
  const auto start = std::chrono::steady_clock::now();
  job();
  const auto end = std::chrono::steady_clock::now();
  return std::chrono::duration_cast<std::chrono::microseconds>(end - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string path = argv[1];
  const int dpi = std::atoi(argv[2]);
  bool ok = true;
  const long long first = Microseconds([&] { ok = ok && bench::RenderFirstPage(path, dpi); });
  const long long warm = Microseconds([&] { ok = ok && bench::RenderFirstPage(path, dpi); });
  int w = 0, h = 0;
  if (!ok || !bench::FirstPageSize(path, dpi, w, h)) return 1;
  const long long floor = Microseconds([&] { bench::Floor(w, h); });
  std::printf("%lld %lld %lld\n", first, warm, floor);
  return 0;
}
