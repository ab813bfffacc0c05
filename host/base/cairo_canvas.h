// What a cairo-backed device draws with. Internal to the host platform: it
// brings in cairo.h.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "host/base/cairo_device.h"
#include "host/base/cairo_handles.h"
#include "host/base/font.h"
#include "host/base/premultiply.h"

namespace host {

struct CairoDevice::Canvas {
  CairoSurfacePtr surface;
  CairoPtr cr;
  CairoFontOptionsPtr fontOptions;
  /// Vector output: text through faces cairo opens from the font files
  /// (one embedded font per file), each host face kept in `faces` for the
  /// canvas's life; otherwise through the host faces' drawing faces.
  bool forDocuments = false;
  mutable std::map<const FaceSource*, std::shared_ptr<const FaceSource>> faces;
  mutable CairoSurfacePtr clearPixel;  // see RestateBlend in cairo_device.cpp

  /// A context and unhinted font options over `surface`; null when cairo
  /// cannot make them or the surface is in error.
  static std::unique_ptr<Canvas> Make(CairoSurfacePtr surface);
};

}  // namespace host
