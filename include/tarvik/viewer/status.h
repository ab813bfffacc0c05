// Results of the document library: a status code and a message that names
// the file, the package entry and, where known, the byte offset.
#pragma once

#include <string>

#include "tarvik/viewer/viewer_export.h"

namespace tarvik::viewer {

/// What went wrong. Values are stable: the C interface uses the same numbers.
enum class Status : int {
  kOk = 0,
  kBadArgument = 1,     // null or empty input, a resolution that is not positive
  kIoError = 2,         // the file cannot be read or written
  kNotOfd = 3,          // not a zip archive, or no OFD.xml with an OFD root
  kBadDocument = 4,     // no document, or its Document.xml is missing or malformed
  kPageOutOfRange = 5,  // no page with that index
  kBadPage = 6,         // the page's file is missing or malformed
  kTooLarge = 7,        // the bitmap would exceed the size limits
  kOutOfMemory = 8,
  kBadSeal = 9,         // seal data that cannot be read or decoded
  kUnsupported = 10,    // a format or algorithm that is not supported
};

/// A short fixed name for a status ("ok", "not an OFD package", ...).
TARVIK_VIEWER_API const char* StatusName(Status status);

/// A failure and its reason; `status` kOk means success.
struct Error {
  Status status = Status::kOk;
  std::string message;

  bool ok() const { return status == Status::kOk; }
};

}  // namespace tarvik::viewer
