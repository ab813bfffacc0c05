// The abbreviated path syntax of OFD path objects ("M 0 0 L 10 0 B ... C").
#pragma once

#include <cstddef>
#include <string_view>

#include "host/base/host_export.h"
#include "host/base/path.h"

namespace host {

/// Most segments one path takes; the rest of a longer description is dropped.
inline constexpr size_t kMaxPathSegments = 1000000;

/// Outcome of ParseAbbreviatedData: a code and the byte offset where parsing
/// stopped (the length of the data on success).
struct HOST_API PathDataResult {
  enum Code { kOk, kBadNumber, kUnknownCommand, kTooManySegments };
  Code code = kOk;
  size_t offset = 0;
  explicit operator bool() const { return code == kOk; }
  /// A short English description of the code; never null.
  const char* Description() const;
};

/// Appends the path that `data` describes to `path`, in the data's own units.
/// Commands: S and M x y (start a sub-path), L x y, Q x1 y1 x2 y2, B x1 y1 x2
/// y2 x3 y3, A rx ry angle large-arc sweep x y (an elliptical arc, as cubics),
/// C (close). Numbers are separated by blanks or commas; a number where a
/// command is expected repeats the previous command (M repeats as L). On
/// failure `path` keeps the segments before the fault. At most `maxSegments`
/// segments are added. Thread-safe; never throws except std::bad_alloc.
HOST_API PathDataResult ParseAbbreviatedData(std::string_view data, Path& path,
                                             size_t maxSegments = kMaxPathSegments);

}  // namespace host
