// Filling in an optional Error.
#pragma once

#include <string>

#include "tarvik/viewer/status.h"

namespace tarvik::viewer {

/// Sets `*error` (when given) and returns false.
inline bool Fail(Error* error, Status status, std::string message) {
  if (error) {
    error->status = status;
    error->message = std::move(message);
  }
  return false;
}

}  // namespace tarvik::viewer
