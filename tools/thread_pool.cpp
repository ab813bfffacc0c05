#include "thread_pool.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace tools {

void RunParallel(int count, int threads, const std::function<void(int)>& task) {
  std::atomic<int> next{0};
  auto work = [&] {
    for (int i = next++; i < count; i = next++) task(i);
  };
  std::vector<std::thread> helpers;
  const int extra = std::max(0, std::min(threads, count) - 1);
  for (int t = 0; t < extra; ++t) {
    try {
      helpers.emplace_back(work);
    } catch (const std::system_error&) {
      break;  // fewer threads: the others take the tasks
    }
  }
  work();
  for (std::thread& t : helpers) t.join();
}

int DefaultThreads() { return std::max(1u, std::thread::hardware_concurrency()); }

}  // namespace tools
