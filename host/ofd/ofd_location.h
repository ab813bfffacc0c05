// Locations of files inside an OFD package: "/Doc_0/Res/a.png" (from the
// package root) or "Res/a.png" (from the folder of the file that names it).
#pragma once

#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

/// Normalises a location to a package path without a leading '/': backslashes
/// become '/', empty and "." steps are dropped, ".." removes the previous step
/// (never climbing above the root). "" when nothing is left. Thread-safe.
HOST_API std::string NormalizeLocation(std::string_view location);

/// Resolves `location` against `baseFolder` (a package path, with or without
/// a trailing '/'): a location starting with '/' or '\' is taken from the
/// root, any other from the base folder. Result as NormalizeLocation.
HOST_API std::string ResolveLocation(std::string_view baseFolder, std::string_view location);

/// The folder part of a package path, with its trailing '/': "Doc_0/Pages/"
/// for "Doc_0/Pages/Page_0.xml"; "" for a path without '/'.
HOST_API std::string FolderOf(std::string_view path);

}  // namespace host
