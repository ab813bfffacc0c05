// Owners for cairo handles. Internal to the host platform: include it only
// from host .cpp files, since it brings in cairo.h.
#pragma once

#include <cairo.h>

#include <memory>

namespace host {

/// Releases one reference of a cairo object; null is ignored.
struct CairoDeleter {
  void operator()(cairo_t* p) const { cairo_destroy(p); }
  void operator()(cairo_surface_t* p) const { cairo_surface_destroy(p); }
  void operator()(cairo_font_face_t* p) const { cairo_font_face_destroy(p); }
  void operator()(cairo_font_options_t* p) const { cairo_font_options_destroy(p); }
  void operator()(cairo_pattern_t* p) const { cairo_pattern_destroy(p); }
};

/// Each owner holds one reference. cairo constructors never return null but
/// an object in an error state: check its status after making it.
using CairoPtr = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurfacePtr = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoFontFacePtr = std::unique_ptr<cairo_font_face_t, CairoDeleter>;
using CairoFontOptionsPtr = std::unique_ptr<cairo_font_options_t, CairoDeleter>;
using CairoPatternPtr = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

}  // namespace host
