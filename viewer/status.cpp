#include "tarvik/viewer/status.h"

#include "tarvik/viewer/signature_info.h"

namespace tarvik::viewer {

const char* StatusName(Status status) {
  switch (status) {
    case Status::kOk: return "ok";
    case Status::kBadArgument: return "bad argument";
    case Status::kIoError: return "cannot read or write the file";
    case Status::kNotOfd: return "not an OFD package";
    case Status::kBadDocument: return "bad document";
    case Status::kPageOutOfRange: return "page out of range";
    case Status::kBadPage: return "bad page";
    case Status::kTooLarge: return "too large";
    case Status::kOutOfMemory: return "out of memory";
    case Status::kBadSeal: return "bad seal";
    case Status::kUnsupported: return "not supported";
  }
  return "unknown status";
}

const char* VerdictName(Verdict verdict) {
  switch (verdict) {
    case Verdict::kNotChecked: return "not checked";
    case Verdict::kValid: return "valid";
    case Verdict::kIntact: return "intact";
    case Verdict::kInvalid: return "invalid";
    case Verdict::kUnknown: return "unknown";
  }
  return "unknown";
}

}  // namespace tarvik::viewer
