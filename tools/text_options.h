// Seal text options shared by `tarvik text`, `tarvik render` and (as stamp
// text) `tarvik seal`.
#pragma once

#include <string>
#include <vector>

#include "options.h"
#include "tarvik/tarvik.h"

namespace tools {

/// Help lines for the options below.
extern const char* const kTextOptionsUsage;

/// The seal text a command was asked for; defaults 12 pt "SimSun", black.
struct TextOptions {
  TextOptions();
  tarvik::RenderSealParam::TextParam param;
  bool haveText = false;  // --text was given
};

/// --text --layout --halign --valign --outside --angle --font --text-size
/// --bold --italic --color --offset-x --offset-y --width-percent.
const std::vector<OptionSpec>& TextOptionSpecs();

enum class OptionResult { kNotMine, kTaken, kBad };

/// Applies `given` when it is one of TextOptionSpecs(); kBad with the reason
/// in `why` for a bad value.
OptionResult ApplyTextOption(const GivenOption& given, TextOptions& out, std::string& why);

}  // namespace tools
