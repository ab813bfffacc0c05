// A user's job on one signed document, as tools/render_command.cpp does it:
// open the package, read the document and its signatures, parse page 1 and
// draw it with its seals at a given dpi into a bitmap (no output file). Also
// the floor for a page of the same size: making the bitmap device, clearing
// the page and taking the bitmap back.
#pragma once

#include <memory>
#include <string>

#include "host/base/dib.h"

namespace tarvik {
class Tarvik;
}

namespace bench {

/// Page 1 of `path` with its seals at `dpi`; null when the file is not a
/// signed OFD document whose first page can be read.
std::unique_ptr<host::Dib> RenderFirstPage(const std::string& path, int dpi);

/// The same job drawn through a Tarvik (and its document) made beforehand:
/// only the page is loaded, parsed and drawn. `tarvik` must belong to an
/// open document (see OpenSigned).
struct OpenSigned;
std::unique_ptr<host::Dib> RenderFirstPage(OpenSigned& doc, int dpi);

/// An open signed document with its Tarvik, shared by several threads.
struct OpenSigned {
  struct Impl;
  std::unique_ptr<Impl> impl;
  OpenSigned();
  ~OpenSigned();
  bool Open(const std::string& path);
};

/// Width and height in pixels of page 1 of `path` at `dpi`; false when it
/// cannot be read.
bool FirstPageSize(const std::string& path, int dpi, int& width, int& height);

/// The floor: a page-sized bitmap made, cleared and read back.
std::unique_ptr<host::Dib> Floor(int width, int height);

}  // namespace bench
