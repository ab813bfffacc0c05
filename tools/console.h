// What a command prints on standard error while it works: messages from any
// thread, and on a terminal a progress line (pages done / total, elapsed).
#pragma once

#include <chrono>
#include <mutex>
#include <string>

namespace tools {

class Console {
 public:
  /// `progress`: keep a progress line for `total` pages (a terminal, not --quiet).
  Console(bool progress, int total);
  /// One line on standard error, above the progress line.
  void Message(const std::string& line);
  /// Counts a page as done and redraws the progress line.
  void PageDone();
  /// Ends the progress line.
  void Finish();

 private:
  void Draw();  // under mutex_

  std::mutex mutex_;
  const bool progress_;
  const int total_;
  int done_ = 0;
  bool drawn_ = false;
  const std::chrono::steady_clock::time_point start_;
};

}  // namespace tools
