// tarvik text: where a text would be laid out on each seal of an OFD
// document, as JSON records on standard output.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "json_text.h"
#include "options.h"
#include "text_options.h"
#include "tarvik/viewer.h"

namespace tools {

namespace {

constexpr const char* kHelp =
    "usage: tarvik text FILE.ofd --text TEXT [seal text options]\n"
    "\n"
    "Prints where the text goes on each seal of the document, as JSON records in\n"
    "page millimetres.\n"
    "\n"
    "  -h, --help   this text\n";

// Nine significant digits: a float reads back exactly.
std::string Num(float v) {
  if (!std::isfinite(v)) return "null";
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.9g", static_cast<double>(v));
  return buf;
}

std::string Records(const std::vector<tarvik::TextObject>& records) {
  std::string out = "[";
  for (size_t r = 0; r < records.size(); ++r) {
    const tarvik::TextObject& t = records[r];
    const host::Matrix& m = t.matrix;
    out += r ? ",\n        " : "\n        ";
    out += "{\"rect\": [" + Num(t.rect.left) + ", " + Num(t.rect.top) + ", " + Num(t.rect.right) +
           ", " + Num(t.rect.bottom) + "], \"matrix\": [" + Num(m.a) + ", " + Num(m.b) + ", " +
           Num(m.c) + ", " + Num(m.d) + ", " + Num(m.e) + ", " + Num(m.f) + "], \"chars\": [";
    for (size_t i = 0; i < t.chars.size(); ++i) {
      const tarvik::TextObject::CharPos& c = t.chars[i];
      const std::string utf8 =
          host::WideString(std::u32string(1, static_cast<char32_t>(c.character))).ToUtf8();
      out += (i ? ", " : "") + std::string("{\"code\": ") + std::to_string(c.character) +
             ", \"char\": " + JsonQuote(utf8) + ", \"x\": " + Num(c.x) + ", \"y\": " + Num(c.y) + "}";
    }
    out += "]}";
  }
  return out + (records.empty() ? "]" : "\n      ]");
}

}  // namespace

int RunText(const std::vector<std::string>& args) {
  ParsedArgs parsed;
  if (!ParseArgs("text", args, TextOptionSpecs(), parsed)) return kExitUsage;
  if (parsed.help) {
    std::fputs(kHelp, stdout);
    std::fputs(kTextOptionsUsage, stdout);
    std::fputs("\nexit status: 0 printed, 1 the file could not be opened, 2 a usage error\n", stdout);
    return kExitOk;
  }
  TextOptions options;
  for (const GivenOption& o : parsed.options) {
    std::string why;
    if (ApplyTextOption(o, options, why) == OptionResult::kBad) return BadValue("text", o, why);
  }
  if (parsed.operands.size() != 1) {
    return UsageError("text", parsed.operands.empty() ? "no input file" : "one file at a time");
  }
  if (!options.haveText) return UsageError("text", "no text: give --text TEXT");
  const std::string& path = parsed.operands[0];
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    std::fprintf(stderr, "tarvik text: %s: is a folder, not an OFD file\n", path.c_str());
    return kExitFailure;
  }
  const tarvik::RenderSealParam::TextParam& param = options.param;

  tarvik::viewer::Error error;
  const std::unique_ptr<tarvik::viewer::Document> doc = tarvik::viewer::Document::Open(path, &error);
  if (!doc) {
    std::fprintf(stderr, "tarvik text: %s\n", error.message.c_str());
    return kExitFailure;
  }
  std::string out = "[";
  bool first = true;
  const auto& signatures = doc->Signatures();
  for (size_t g = 0; g < signatures.size(); ++g) {
    const tarvik::viewer::SignatureInfo& sig = signatures[g];
    if (!sig.usable) continue;
    out += first ? "\n  " : ",\n  ";
    first = false;
    out += "{\"id\": " + JsonQuote(sig.id) + ", \"stamps\": [";
    for (size_t s = 0; s < sig.stamps.size(); ++s) {
      const tarvik::viewer::StampInfo& a = sig.stamps[s];
      std::vector<tarvik::TextObject> records;
      const int result = doc->LayOutSealText(static_cast<int>(g), static_cast<int>(s), param, records);
      out += (s ? ",\n    " : "\n    ") + std::string("{\"id\": ") + JsonQuote(a.id) +
             ", \"page\": " + (a.page >= 0 ? std::to_string(a.page + 1) : std::string("null")) +
             ", \"boundary\": [" + Num(a.boundary.left) + ", " + Num(a.boundary.top) + ", " +
             Num(a.boundary.right) + ", " + Num(a.boundary.bottom) + "], \"result\": " +
             std::to_string(result) + ",\n      \"records\": " + Records(records) + "}";
    }
    out += sig.stamps.empty() ? "]}" : "\n  ]}";
  }
  out += first ? "]\n" : "\n]\n";
  std::fputs(out.c_str(), stdout);
  return kExitOk;
}

}  // namespace tools
