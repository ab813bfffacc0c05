// Gradient fills for devices: axial and radial colour ramps.
#pragma once

#include <cstdint>
#include <vector>

namespace host {

/// One colour stop: `offset` in 0..1 along the ramp, `color` 0xAARRGGBB
/// (straight alpha).
struct GradientStop {
  float offset = 0;
  uint32_t color = 0xFF000000;
};

/// An axial ramp from (x0, y0) to (x1, y1), or a radial one between the
/// circles (x0, y0, r0) and (x1, y1, r1), in the user units of the matrix it
/// is drawn under. Stops are sorted by offset.
struct Gradient {
  enum class Kind : uint8_t { kAxial, kRadial };
  /// What lies beyond the ramp's ends: nothing, the end colours, or the ramp
  /// repeated or mirrored.
  enum class Extend : uint8_t { kNone, kPad, kRepeat, kReflect };
  Kind kind = Kind::kAxial;
  Extend extend = Extend::kPad;
  float x0 = 0, y0 = 0, r0 = 0;
  float x1 = 0, y1 = 0, r1 = 0;
  std::vector<GradientStop> stops;
};

}  // namespace host
