// JSON text for the commands that print JSON.
#pragma once

#include <string>

namespace tools {

/// `s` (UTF-8) as a JSON string literal, quotes included.
std::string JsonQuote(const std::string& s);

}  // namespace tools
