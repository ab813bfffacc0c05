// A string of 32-bit character codes. "Absent" (holds nothing) is distinct
// from "empty" (holds a string of length 0).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

class HOST_API WideString {
 public:
  /// An absent string.
  WideString() = default;
  WideString(std::u32string s) : str_(std::move(s)) {}  // NOLINT: implicit by design
  WideString(const char32_t* s) {                       // NOLINT
    if (s) str_ = std::u32string(s);
  }
  WideString(const char32_t* s, size_t n) : str_(std::u32string(s, n)) {}

  /// Decodes UTF-8; invalid sequences become U+FFFD.
  static WideString FromUtf8(std::string_view utf8);
  /// Encodes as UTF-8; an absent string gives "".
  std::string ToUtf8() const;
  /// Appends `c` to `out` as UTF-8; a surrogate or a value past U+10FFFF is
  /// written as U+FFFD.
  static void AppendUtf8(char32_t c, std::string& out);

  bool IsNull() const { return !str_.has_value(); }
  /// 0 for an absent string.
  int GetLength() const { return str_ ? static_cast<int>(str_->size()) : 0; }
  /// The character data, or null for an absent string.
  const char32_t* c_str() const { return str_ ? str_->c_str() : nullptr; }
  /// The character at `i`; the caller checks the index.
  char32_t operator[](int i) const { return (*str_)[static_cast<size_t>(i)]; }
  std::u32string_view view() const { return str_ ? std::u32string_view(*str_) : std::u32string_view(); }

  bool operator==(const WideString&) const = default;

 private:
  std::optional<std::u32string> str_;
};

}  // namespace host
