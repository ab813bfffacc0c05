// Colours of OFD page objects: colour spaces, solid colours, and the axial,
// radial and tiling fills that may stand in for a solid colour.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/host_export.h"
#include "host/base/matrix.h"

namespace host {

class OfdPageBlock;

/// A colour space resource. Component values range over 0 .. 2^bits - 1.
struct HOST_API OfdColorSpace {
  enum class Kind : uint8_t { kGray, kRGB, kCMYK };
  uint32_t id = 0;
  Kind kind = Kind::kRGB;
  int bitsPerComponent = 8;  // 1, 2, 4, 8 or 16
  /// Palette entries ("CV" values), each a list of components; empty when none.
  std::vector<std::vector<float>> palette;
};

struct OfdShading;
struct OfdPattern;

/// A colour as written on an object or a draw parameter. Solid unless
/// `shading` or `pattern` is set, in which case that fill replaces it.
struct HOST_API OfdColor {
  /// False when nothing gave this colour (the owner then treats it as absent).
  bool isSet = false;
  /// Components as written ("r g b", a grey level, "c m y k"; "#hex" values
  /// already converted), in the colour space's range. Empty: black.
  std::vector<float> values;
  /// Palette index of an indexed colour, or -1.
  int index = -1;
  /// ColorSpace reference and the space it resolved to (null: 8-bit RGB, or
  /// grey/CMYK judged by the number of components).
  uint32_t colorSpaceId = 0;
  const OfdColorSpace* colorSpace = nullptr;
  /// Opacity 0 (transparent) .. 255 (opaque).
  int alpha = 255;
  std::shared_ptr<const OfdShading> shading;
  std::shared_ptr<const OfdPattern> pattern;

  /// An opaque solid colour from 8-bit RGB components.
  static OfdColor Rgb(int r, int g, int b);
  /// The solid colour as 0xAARRGGBB (a shading or pattern reads as its first
  /// stop or black). Thread-safe.
  uint32_t ToArgb() const;
};

/// One colour stop of a shading; `position` is in 0..1, or negative when the
/// stop gave none (stops are then spread evenly).
struct HOST_API OfdShadingSegment {
  float position = -1;
  OfdColor color;
};

/// An axial (linear) or radial gradient. Points and radii are in the
/// coordinates of the object it fills.
struct HOST_API OfdShading {
  enum class Kind : uint8_t { kAxial, kRadial };
  /// MapType: the ramp drawn once, or repeated every mapUnit as is or mirrored.
  enum class MapType : uint8_t { kDirect, kRepeat, kReflect };
  /// Extend: where the end colours go on past the ramp.
  enum class Extend : uint8_t { kNone, kBeforeStart, kAfterEnd, kBoth };
  Kind kind = Kind::kAxial;
  MapType mapType = MapType::kDirect;
  float mapUnit = 0;  // length of one repeat; 0 when not given
  Extend extend = Extend::kNone;
  float startX = 0, startY = 0, endX = 0, endY = 0;
  float startRadius = 0, endRadius = 0;  // radial only
  float eccentricity = 0, angle = 0;     // radial only: of the end ellipse
  std::vector<OfdShadingSegment> segments;
};

/// A tiling fill: `cell` drawn every xStep by yStep under `ctm`.
struct HOST_API OfdPattern {
  float width = 0, height = 0;  // cell size
  float xStep = 0, yStep = 0;   // 0: the cell size
  /// ReflectMethod: which cells are drawn mirrored, every other column, row
  /// or both.
  enum class ReflectMethod : uint8_t { kNormal, kColumn, kRow, kRowAndColumn };
  ReflectMethod reflectMethod = ReflectMethod::kNormal;
  bool relativeToObject = true; // RelativeTo="Object" (else "Page")
  Matrix ctm;
  std::shared_ptr<const OfdPageBlock> cell;
};

}  // namespace host
