// Seal text options shared by `tarvik text` and `tarvik render`.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tarvik/tarvik.h"

namespace tools {

/// Usage lines for the options below.
extern const char* const kTextOptionsUsage;

/// The seal text a command was asked for; defaults 12 pt "SimSun", black.
struct TextOptions {
  TextOptions();
  tarvik::RenderSealParam::TextParam param;
  bool haveText = false;  // --text was given
};

enum class OptionResult { kNotMine, kTaken, kBad };

/// Reads the option at args[i] (and its value, advancing i) when it is one of
/// --text --layout --halign --valign --outside --angle --font --size --bold
/// --italic --color --offset-x --offset-y --width-percent.
OptionResult ParseTextOption(const std::vector<std::string>& args, size_t& i, TextOptions& out);

/// A whole argument as a finite number within [lo, hi].
bool ParseNumber(const std::string& s, double lo, double hi, double& out);

}  // namespace tools
