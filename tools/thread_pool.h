// Runs numbered tasks on a few threads.
#pragma once

#include <functional>

namespace tools {

/// Calls task(i) for every i in [0, count) on up to `threads` threads (the
/// calling thread among them); returns when all are done. Tasks are taken in
/// order.
void RunParallel(int count, int threads, const std::function<void(int)>& task);

/// The default thread count: the number of cores, at least 1.
int DefaultThreads();

}  // namespace tools
