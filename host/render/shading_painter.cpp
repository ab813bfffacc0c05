#include "host/render/shading_painter.h"

#include <algorithm>
#include <cmath>

#include "host/ofd/ofd_color.h"

namespace host {

namespace {

// How far a one-sided extension reaches, in lengths of the ramp: far enough
// to cover any object the shading fills in practice.
constexpr float kOneSidedReach = 256;

}  // namespace

bool MakeGradient(const OfdShading& shading, Gradient& out) {
  out = Gradient();
  const size_t n = shading.segments.size();
  if (n == 0) return false;
  for (float v : {shading.startX, shading.startY, shading.endX, shading.endY, shading.startRadius,
                  shading.endRadius}) {
    if (!std::isfinite(v)) return false;
  }
  for (size_t i = 0; i < n; ++i) {
    const OfdShadingSegment& s = shading.segments[i];
    float offset = s.position;
    if (!(offset >= 0) || !std::isfinite(offset))
      offset = n == 1 ? 0.0f : static_cast<float>(i) / static_cast<float>(n - 1);
    out.stops.push_back(GradientStop{std::clamp(offset, 0.0f, 1.0f), s.color.ToArgb()});
  }
  std::stable_sort(out.stops.begin(), out.stops.end(),
                   [](const GradientStop& l, const GradientStop& r) { return l.offset < r.offset; });

  out.kind = shading.kind == OfdShading::Kind::kRadial ? Gradient::Kind::kRadial
                                                       : Gradient::Kind::kAxial;
  out.x0 = shading.startX;
  out.y0 = shading.startY;
  out.x1 = shading.endX;
  out.y1 = shading.endY;
  out.r0 = std::max(0.0f, shading.startRadius);
  out.r1 = std::max(0.0f, shading.endRadius);

  if (shading.mapType != OfdShading::MapType::kDirect && shading.mapUnit > 0 &&
      std::isfinite(shading.mapUnit)) {
    // One period of the ramp spans MapUnit along the axis (or the radius).
    out.extend = shading.mapType == OfdShading::MapType::kReflect ? Gradient::Extend::kReflect
                                                                  : Gradient::Extend::kRepeat;
    if (out.kind == Gradient::Kind::kAxial) {
      const float length = std::hypot(out.x1 - out.x0, out.y1 - out.y0);
      if (length > 0) {
        const float k = shading.mapUnit / length;
        out.x1 = out.x0 + (out.x1 - out.x0) * k;
        out.y1 = out.y0 + (out.y1 - out.y0) * k;
      }
    } else if (out.r1 > out.r0) {
      out.r1 = out.r0 + shading.mapUnit;
    }
    return true;
  }

  switch (shading.extend) {
    case OfdShading::Extend::kNone: out.extend = Gradient::Extend::kNone; break;
    case OfdShading::Extend::kBoth: out.extend = Gradient::Extend::kPad; break;
    default:
      out.extend = Gradient::Extend::kPad;
      if (out.kind != Gradient::Kind::kAxial) break;
      // One side only: lengthen the ramp on that side with its end colour and
      // draw nothing past the ends.
      out.extend = Gradient::Extend::kNone;
      const float dx = out.x1 - out.x0, dy = out.y1 - out.y0;
      const float scale = 1 / (kOneSidedReach + 1);
      if (shading.extend == OfdShading::Extend::kBeforeStart) {
        out.x0 -= dx * kOneSidedReach;
        out.y0 -= dy * kOneSidedReach;
        for (GradientStop& s : out.stops) s.offset = (s.offset + kOneSidedReach) * scale;
        out.stops.insert(out.stops.begin(), GradientStop{0, out.stops.front().color});
      } else {
        out.x1 += dx * kOneSidedReach;
        out.y1 += dy * kOneSidedReach;
        for (GradientStop& s : out.stops) s.offset *= scale;
        out.stops.push_back(GradientStop{1, out.stops.back().color});
      }
      break;
  }
  return true;
}

}  // namespace host
