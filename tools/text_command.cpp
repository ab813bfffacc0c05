// tarvik text: where a text would be laid out on each seal of an OFD
// document, as JSON records on standard output.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "text_options.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"
#include "tarvik/tarvik.h"

namespace tools {

namespace {

constexpr const char* kUsage =
    "usage: tarvik text FILE.ofd --text TEXT [seal text options]\n";

std::string Quote(const std::string& s) {
  std::string out = "\"";
  for (unsigned char c : s) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\u%04x", c);
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

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
             ", \"char\": " + Quote(utf8) + ", \"x\": " + Num(c.x) + ", \"y\": " + Num(c.y) + "}";
    }
    out += "]}";
  }
  return out + (records.empty() ? "]" : "\n      ]");
}

}  // namespace

int RunText(const std::vector<std::string>& args) {
  std::string path;
  TextOptions options;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const OptionResult r = ParseTextOption(args, i, options);
    if (r == OptionResult::kTaken) continue;
    if (r == OptionResult::kNotMine && !a.empty() && a[0] != '-' && path.empty()) {
      path = a;
      continue;
    }
    std::fprintf(stderr, "tarvik text: bad or unexpected argument '%s'\n%s%s", a.c_str(), kUsage,
                 kTextOptionsUsage);
    return 2;
  }
  if (path.empty() || !options.haveText) {
    std::fprintf(stderr, "%s%s", kUsage, kTextOptionsUsage);
    return 2;
  }
  const tarvik::RenderSealParam::TextParam& param = options.param;

  host::OfdPackage package;
  if (!OpenPackage(path, "text", package)) return 1;
  std::string out = "[";
  bool first = true;
  for (int d = 0; d < package.CountDocuments(); ++d) {
    host::OfdDocument doc;
    if (doc.LoadDocument(&package, package.GetDocument(d), -1) != 0) continue;
    const std::unique_ptr<host::OfdSignatures> signatures = host::OfdSignatures::Load(&doc);
    if (!signatures) continue;
    for (const host::OfdSignatureInfo& sig : signatures->GetSignatures()) {
      out += first ? "\n  " : ",\n  ";
      first = false;
      out += "{\"document\": " + std::to_string(d + 1) + ", \"id\": " + Quote(sig.id) +
             ", \"stamps\": [";
      for (size_t s = 0; s < sig.stampAnnots.size(); ++s) {
        const host::OfdStampAnnotInfo& a = sig.stampAnnots[s];
        host::OfdAnnotationSeal seal;
        seal.Boundary = a.boundary;
        seal.Clip = a.clip;
        seal.pageIndex = a.pageIndex;
        std::vector<tarvik::TextObject> records;
        const int result = tarvik::GetSealImageTextRect(&seal, param, records);
        out += (s ? ",\n    " : "\n    ") + std::string("{\"id\": ") + Quote(a.id) +
               ", \"page\": " + std::to_string(a.pageIndex + 1) + ", \"boundary\": [" +
               Num(a.boundary.left) + ", " + Num(a.boundary.top) + ", " + Num(a.boundary.right) +
               ", " + Num(a.boundary.bottom) + "], \"result\": " + std::to_string(result) +
               ",\n      \"records\": " + Records(records) + "}";
      }
      out += sig.stampAnnots.empty() ? "]}" : "\n  ]}";
    }
  }
  out += first ? "]\n" : "\n]\n";
  std::fputs(out.c_str(), stdout);
  return 0;
}

}  // namespace tools
