// The third-party libraries the host platform is built on, and their
// versions, for a program's --version.
#pragma once

#include <string>
#include <vector>

#include "host/base/host_export.h"

namespace host {

struct LibraryVersion {
  std::string name;     // "cairo", "FreeType", ...
  std::string version;  // "1.16.0"; the version built against where the library cannot tell
};

/// The libraries in a fixed order: those loaded report their own version.
/// Thread-safe.
HOST_API std::vector<LibraryVersion> LibraryVersions();

}  // namespace host
