#include "text_options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <initializer_list>

namespace tools {

const char* const kTextOptionsUsage =
    "  seal text: --text TEXT [--layout straight|ellipse] [--halign left|right|center]\n"
    "      [--valign top|bottom|center] [--outside] [--angle DEG] [--font NAME]\n"
    "      [--size PT] [--bold] [--italic] [--color RRGGBB|AARRGGBB]\n"
    "      [--offset-x MM] [--offset-y MM] [--width-percent P (stamps)]\n";

namespace {

// The index of `s` in `names`, or -1.
int Choice(const std::string& s, std::initializer_list<const char*> names) {
  int i = 0;
  for (const char* n : names) {
    if (s == n) return i;
    ++i;
  }
  return -1;
}

// "RRGGBB" (opaque) or "AARRGGBB", an optional '#' first.
bool ParseColor(std::string s, uint32_t& out) {
  if (!s.empty() && s[0] == '#') s.erase(0, 1);
  if (s.size() != 6 && s.size() != 8) return false;
  char* end = nullptr;
  const unsigned long v = std::strtoul(s.c_str(), &end, 16);
  if (*end != '\0') return false;
  out = static_cast<uint32_t>(v) | (s.size() == 6 ? 0xFF000000u : 0u);
  return true;
}

bool WholeNumber(const std::string& s, double lo, double hi, double& out) {
  return ParseNumber(s, lo, hi, out) && out == std::floor(out);
}

}  // namespace

TextOptions::TextOptions() {
  param.fontSize = 12;
  param.fontName = U"SimSun";
}

bool ParseNumber(const std::string& s, double lo, double hi, double& out) {
  if (s.empty()) return false;
  errno = 0;
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  if (errno != 0 || *end != '\0' || !std::isfinite(v) || v < lo || v > hi) return false;
  out = v;
  return true;
}

OptionResult ParseTextOption(const std::vector<std::string>& args, size_t& i, TextOptions& out) {
  const std::string& a = args[i];
  tarvik::RenderSealParam::TextParam& p = out.param;
  if (a == "--outside") {
    p.outside = 1;
    return OptionResult::kTaken;
  }
  if (a == "--bold") {
    p.bold = 1;
    return OptionResult::kTaken;
  }
  if (a == "--italic") {
    p.italic = 1;
    return OptionResult::kTaken;
  }
  static const char* const kValued[] = {"--text",  "--font",  "--layout",   "--halign", "--valign",
                                        "--angle", "--size",  "--offset-x", "--offset-y",
                                        "--color", "--width-percent"};
  bool valued = false;
  for (const char* name : kValued) valued = valued || a == name;
  if (!valued) return OptionResult::kNotMine;
  if (i + 1 >= args.size()) return OptionResult::kBad;
  const std::string& value = args[++i];
  double number = 0;
  int choice = -1;
  if (a == "--text") {
    p.text = host::WideString::FromUtf8(value);
    out.haveText = true;
  } else if (a == "--font") {
    p.fontName = host::WideString::FromUtf8(value);
  } else if (a == "--layout" && (choice = Choice(value, {"straight", "ellipse"})) >= 0) {
    p.layoutKind = static_cast<uint32_t>(choice);
  } else if (a == "--halign" && (choice = Choice(value, {"left", "right", "center"})) >= 0) {
    p.horizontalAlign = static_cast<uint32_t>(choice);
  } else if (a == "--valign" && (choice = Choice(value, {"top", "bottom", "center"})) >= 0) {
    p.verticalAlign = static_cast<uint32_t>(choice);
  } else if (a == "--angle" && ParseNumber(value, -1e6, 1e6, number)) {
    p.angle = static_cast<float>(number);
  } else if (a == "--size" && WholeNumber(value, 0, 100000, number)) {
    p.fontSize = static_cast<uint32_t>(number);
  } else if (a == "--offset-x" && WholeNumber(value, -1e9, 1e9, number)) {
    p.offsetX = static_cast<int32_t>(number);
  } else if (a == "--offset-y" && WholeNumber(value, -1e9, 1e9, number)) {
    p.offsetY = static_cast<int32_t>(number);
  } else if (a == "--width-percent" && WholeNumber(value, 0, 100000, number)) {
    p.widthPercent = static_cast<uint32_t>(number);
  } else if (a == "--color" && ParseColor(value, p.color)) {
  } else {
    return OptionResult::kBad;
  }
  return OptionResult::kTaken;
}

}  // namespace tools
