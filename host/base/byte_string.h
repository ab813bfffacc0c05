// A byte string: a thin value wrapper over std::string with the comparisons
// the seal code needs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

class HOST_API ByteString {
 public:
  ByteString() = default;
  ByteString(const char* s) : str_(s ? s : "") {}  // NOLINT: implicit by design
  ByteString(const char* s, size_t n) : str_(s, n) {}
  ByteString(std::string s) : str_(std::move(s)) {}  // NOLINT
  ByteString(std::string_view s) : str_(s) {}        // NOLINT

  const char* c_str() const { return str_.c_str(); }
  int GetLength() const { return static_cast<int>(str_.size()); }
  bool IsEmpty() const { return str_.empty(); }
  const std::string& str() const { return str_; }
  std::string_view view() const { return str_; }

  /// Exact comparison: <0, 0 or >0, as strcmp over the whole length.
  int Compare(std::string_view other) const;
  /// ASCII case-insensitive comparison: <0, 0 or >0.
  int CompareNoCase(std::string_view other) const;

  bool operator==(const ByteString& o) const { return str_ == o.str_; }
  bool operator==(const char* s) const { return str_ == (s ? s : ""); }

 private:
  std::string str_;
};

/// Hash of a byte string's characters; equal strings give equal hashes.
HOST_API unsigned int HashKey(const ByteString& key);

/// Bucket count to use for about `count` entries: the smallest odd number not
/// below `count` (at least 3, at most 2^24 - 3). Always positive.
HOST_API unsigned int CalcHashTableSize(int count);

}  // namespace host
