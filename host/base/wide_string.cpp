#include "host/base/wide_string.h"

namespace host {

WideString WideString::FromUtf8(std::string_view s) {
  std::u32string out;
  out.reserve(s.size());
  size_t i = 0;
  while (i < s.size()) {
    const unsigned char c0 = static_cast<unsigned char>(s[i]);
    int len = 0;
    char32_t cp = 0;
    if (c0 < 0x80) {
      len = 1;
      cp = c0;
    } else if ((c0 & 0xE0) == 0xC0) {
      len = 2;
      cp = c0 & 0x1F;
    } else if ((c0 & 0xF0) == 0xE0) {
      len = 3;
      cp = c0 & 0x0F;
    } else if ((c0 & 0xF8) == 0xF0) {
      len = 4;
      cp = c0 & 0x07;
    }
    // A broken sequence is replaced by one U+FFFD for the lead byte and the
    // continuation bytes that followed it.
    size_t consumed = 1;
    bool ok = len > 0;
    for (int k = 1; ok && k < len; ++k) {
      const size_t at = i + static_cast<size_t>(k);
      ok = at < s.size() && (static_cast<unsigned char>(s[at]) & 0xC0) == 0x80;
      if (!ok) break;
      ++consumed;
      cp = (cp << 6) | (static_cast<unsigned char>(s[at]) & 0x3F);
    }
    // Reject overlong forms, surrogates and values past U+10FFFF.
    static constexpr char32_t kMin[5] = {0, 0, 0x80, 0x800, 0x10000};
    if (ok && (cp < kMin[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) ok = false;
    if (!ok) {
      out.push_back(0xFFFD);
      i += consumed;
      continue;
    }
    out.push_back(cp);
    i += static_cast<size_t>(len);
  }
  return WideString(std::move(out));
}

std::string WideString::ToUtf8() const {
  std::string out;
  if (!str_) return out;
  for (char32_t cp : *str_) AppendUtf8(cp, out);
  return out;
}

void WideString::AppendUtf8(char32_t cp, std::string& out) {
  if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

}  // namespace host
