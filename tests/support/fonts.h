// Tests that need particular installed fonts skip with a message, rather
// than fail, where one is missing.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace testing_support {

/// The first of `families` that the font manager does not resolve to that
/// family's own file (a fallback face instead), or empty when all are
/// installed. Checks "WenQuanYi Zen Hei", "AR PL UKai CN", "AR PL UMing CN",
/// "Noto Sans CJK SC" and "Lohit Tamil" by their files' names, others by
/// their family name without spaces ("DejaVu Serif": DejaVuSerif.ttf).
std::string MissingFont(std::initializer_list<const char*> families);

}  // namespace testing_support

/// Skips the current test, naming the font, unless every family is installed.
#define TARVIK_NEED_FONTS(...)                                                        \
  if (const std::string missing_ = testing_support::MissingFont({__VA_ARGS__}); \
      !missing_.empty())                                                        \
  GTEST_SKIP() << "font " << missing_ << " is not installed"
