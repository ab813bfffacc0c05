#include "console.h"

#include <cstdio>

namespace tools {

Console::Console(bool progress, int total)
    : progress_(progress), total_(total), start_(std::chrono::steady_clock::now()) {}

void Console::Message(const std::string& line) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (drawn_) std::fputs("\r\033[K", stderr);
  std::fprintf(stderr, "%s\n", line.c_str());
  if (drawn_) Draw();
}

void Console::PageDone() {
  std::lock_guard<std::mutex> lock(mutex_);
  ++done_;
  if (progress_) Draw();
}

void Console::Finish() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (drawn_) std::fputc('\n', stderr);
  drawn_ = false;
}

void Console::Draw() {
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  std::fprintf(stderr, "\r\033[Krendering: %d/%d pages, %.1f s", done_, total_, seconds);
  std::fflush(stderr);
  drawn_ = true;
}

}  // namespace tools
