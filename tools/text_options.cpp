#include "text_options.h"

#include <cstdlib>
#include <initializer_list>

namespace tools {

const char* const kTextOptionsUsage =
    "seal text:\n"
    "      --text TEXT          text laid out against each seal\n"
    "      --layout straight|ellipse   --halign left|right|center   --valign top|bottom|center\n"
    "      --outside            ellipse text outside the seal's ring\n"
    "      --angle DEG          rotation, a decimal number\n"
    "      --font NAME          font family (default SimSun)\n"
    "      --text-size PT       whole points (default 12)\n"
    "      --bold --italic      --color RRGGBB|AARRGGBB\n"
    "      --offset-x MM --offset-y MM   whole millimetres\n"
    "      --width-percent P    stamps: width of the text as a share of the seal's\n";

namespace {

enum Id : int {
  kText = 100,
  kLayout,
  kHalign,
  kValign,
  kOutside,
  kAngle,
  kFont,
  kTextSize,
  kBold,
  kItalic,
  kColor,
  kOffsetX,
  kOffsetY,
  kWidthPercent,
};

// The index of `s` in `names`, or -1.
int Choice(const std::string& s, std::initializer_list<const char*> names) {
  int i = 0;
  for (const char* n : names) {
    if (s == n) return i;
    ++i;
  }
  return -1;
}

bool ChoiceOf(const std::string& s, std::initializer_list<const char*> names, uint32_t& out,
              std::string& why) {
  const int i = Choice(s, names);
  if (i < 0) {
    why = "'" + s + "' is not one of";
    for (const char* n : names) why += std::string(" ") + n;
    return false;
  }
  out = static_cast<uint32_t>(i);
  return true;
}

// "RRGGBB" (opaque) or "AARRGGBB", an optional '#' first.
bool ParseColor(std::string s, uint32_t& out, std::string& why) {
  const std::string given = s;
  if (!s.empty() && s[0] == '#') s.erase(0, 1);
  if ((s.size() != 6 && s.size() != 8) ||
      s.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    why = "'" + given + "' is not a colour as RRGGBB or AARRGGBB in hexadecimal";
    return false;
  }
  const unsigned long v = std::strtoul(s.c_str(), nullptr, 16);
  out = static_cast<uint32_t>(v) | (s.size() == 6 ? 0xFF000000u : 0u);
  return true;
}

}  // namespace

TextOptions::TextOptions() {
  param.fontSize = 12;
  param.fontName = U"SimSun";
}

const std::vector<OptionSpec>& TextOptionSpecs() {
  static const std::vector<OptionSpec> kSpecs = {
      {"text", 0, true, kText},         {"layout", 0, true, kLayout},
      {"halign", 0, true, kHalign},     {"valign", 0, true, kValign},
      {"outside", 0, false, kOutside},  {"angle", 0, true, kAngle},
      {"font", 0, true, kFont},         {"text-size", 0, true, kTextSize},
      {"bold", 0, false, kBold},        {"italic", 0, false, kItalic},
      {"color", 0, true, kColor},       {"offset-x", 0, true, kOffsetX},
      {"offset-y", 0, true, kOffsetY},  {"width-percent", 0, true, kWidthPercent},
  };
  return kSpecs;
}

OptionResult ApplyTextOption(const GivenOption& given, TextOptions& out, std::string& why) {
  tarvik::RenderSealParam::TextParam& p = out.param;
  const std::string& v = given.value;
  long whole = 0;
  double number = 0;
  bool ok = true;
  switch (given.spec->id) {
    case kText:
      p.text = host::WideString::FromUtf8(v);
      out.haveText = true;
      break;
    case kFont:
      p.fontName = host::WideString::FromUtf8(v);
      break;
    case kLayout:
      ok = ChoiceOf(v, {"straight", "ellipse"}, p.layoutKind, why);
      break;
    case kHalign:
      ok = ChoiceOf(v, {"left", "right", "center"}, p.horizontalAlign, why);
      break;
    case kValign:
      ok = ChoiceOf(v, {"top", "bottom", "center"}, p.verticalAlign, why);
      break;
    case kOutside:
      p.outside = 1;
      break;
    case kBold:
      p.bold = 1;
      break;
    case kItalic:
      p.italic = 1;
      break;
    case kAngle:
      ok = ParseDecimal(v, -1e6, 1e6, number, why);
      if (ok) p.angle = static_cast<float>(number);
      break;
    case kTextSize:
      ok = ParseInteger(v, 1, 100000, whole, why);
      if (ok) p.fontSize = static_cast<uint32_t>(whole);
      break;
    case kOffsetX:
      ok = ParseInteger(v, -1000000, 1000000, whole, why);
      if (ok) p.offsetX = static_cast<int32_t>(whole);
      break;
    case kOffsetY:
      ok = ParseInteger(v, -1000000, 1000000, whole, why);
      if (ok) p.offsetY = static_cast<int32_t>(whole);
      break;
    case kWidthPercent:
      ok = ParseInteger(v, 0, 100000, whole, why);
      if (ok) p.widthPercent = static_cast<uint32_t>(whole);
      break;
    case kColor:
      ok = ParseColor(v, p.color, why);
      break;
    default:
      return OptionResult::kNotMine;
  }
  return ok ? OptionResult::kTaken : OptionResult::kBad;
}

}  // namespace tools
