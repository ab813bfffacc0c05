#include "stamp/image_engine_round.h"

#include <cmath>
#include <cstdint>

#include "host/base/matrix.h"
#include "text/seal_text_layout.h"

namespace tarvik {

namespace {

// Degrees, clockwise from the left end of the horizontal axis, at which the
// first character stands.
int StartAngle(const host::ByteString& hAlign, const host::ByteString& vAlign) {
  if (hAlign == "Right" && vAlign == "Center") return 0;
  if (hAlign == "Center" && vAlign == "Top") return 90;
  if (hAlign == "Left" && vAlign == "Center") return 180;
  if (hAlign == "Center" && vAlign == "Bottom") return 270;
  return 0;
}

// Which quarter of the text character `i` of `n` falls in, by its index:
// 0 up to n/4 inclusive, then 1 up to n/2, 2 up to 3n/4, then 3.
int IndexQuarter(int i, int n) {
  if (i <= (n >> 2)) return 0;
  if (i <= (n >> 1)) return 1;
  if (i <= static_cast<int64_t>(n) * 3 / 4) return 2;
  return 3;
}

}  // namespace

bool ImageEngine_Round::Draw(host::Device* device) {
  const int n = text.GetLength();
  if (n <= 0 || !device) return true;

  const float s = fontSize;
  const float third = s / 3.0f;
  const float margin = third + third;
  const float cx = static_cast<float>(deviceWidth >> 1);
  const float cy = static_cast<float>(deviceHeight >> 1);
  // The insets are subtracted in unsigned arithmetic: an inset beyond half the
  // device wraps to a huge semi-axis rather than a negative one.
  const float a =
      static_cast<float>((deviceWidth >> 1) - static_cast<uint32_t>(offsetX)) - margin;
  const float b =
      static_cast<float>((deviceHeight >> 1) - static_cast<uint32_t>(offsetY)) - margin;
  const float a2 = a * a;
  const float b2 = b * b;
  const float a2b2 = a2 * b2;
  const bool curve = a2 != 0.0f && b2 != 0.0f && std::isfinite(a2b2);

  const float step = 360.0f / static_cast<float>(n);
  const int start = StartAngle(hAlign, vAlign);
  const bool startsOnVerticalAxis = start == 90 || start == 270;
  const float radPerDeg = static_cast<float>(degToRad);

  for (int i = 0; i < n; ++i) {
    const char32_t code = text[i];
    const float h = static_cast<float>(GetCharWidth(text, font.get(), i, s) * 0.5);
    host::Matrix matrix(1, 0, 0, 1, cx - h, cy);  // no curve: upright on the centre
    if (curve) {
      const float theta = static_cast<float>(i) * step;
      const float psi = 90.0f - theta;
      const int k = IndexQuarter(i, n);
      const int m = (start / 90 + k) % 4;
      // Signs of the point relative to the centre, y counted upward:
      // upper left, upper right, lower right, lower left.
      const float sx = (m == 1 || m == 2) ? 1.0f : -1.0f;
      const float sy = m <= 1 ? 1.0f : -1.0f;

      // Angle of the ray from the centre against the horizontal axis.
      float alpha;
      if (k % 2 == 0) {
        alpha = startsOnVerticalAxis ? psi : theta;
      } else {
        alpha = startsOnVerticalAxis ? theta - 90.0f : theta - 180.0f;
      }
      const float t = static_cast<float>(std::tan(static_cast<double>(alpha) * degToRad));

      // Where the ray of slope |t| meets x²/a² + y²/b² = 1. The difference
      // can fall a rounding residue below zero when t is 0.
      const float x0 = std::sqrt(a2b2 / (a2 * (t * t) + b2));
      const float y0 = std::sqrt(std::fabs(a2b2 - b2 * (x0 * x0)) / a2);
      const float x = sx * x0;
      const float y = sy * y0;  // -0 below the axis keeps the quotient's sign

      // Tangent direction; a zero divisor gives an infinite quotient, +-90.
      const float quotient = (-b2 * x) / (a2 * y);
      const float deg = static_cast<float>(std::atan(static_cast<double>(quotient)) * radToDeg);
      float r;
      if (sy > 0.0f) {
        r = -deg;
      } else if (m == 2) {
        r = 180.0f - std::fabs(deg);
      } else {
        r = std::fabs(deg) - 180.0f;
      }

      // Step back half the advance along the baseline so that the advance is
      // centred on the point.
      const float rr = r * radPerDeg;
      const float e = cx + x - sy * h * std::fabs(std::cos(rr));
      const float f = cy - y - sx * h * std::fabs(std::sin(rr));
      const double rd = static_cast<double>(r) * degToRad;
      const float cs = static_cast<float>(std::cos(rd));
      const float sn = static_cast<float>(std::sin(rd));
      matrix = host::Matrix(cs, sn, -sn, cs, e, f);
    }
    // A character the device refuses is missing; the rest are still drawn.
    device->DrawText(&code, 1, font.get(), &matrix, color, s);
  }
  return true;
}

}  // namespace tarvik
