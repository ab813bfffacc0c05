#include "host/ofd/ofd_color.h"

#include <algorithm>
#include <cmath>

namespace host {

OfdColor OfdColor::Rgb(int r, int g, int b) {
  OfdColor c;
  c.isSet = true;
  c.values = {static_cast<float>(r), static_cast<float>(g), static_cast<float>(b)};
  return c;
}

uint32_t OfdColor::ToArgb() const {
  const std::vector<float>* comps = &values;
  if (shading && !shading->segments.empty()) return shading->segments.front().color.ToArgb();
  if (colorSpace && index >= 0 && static_cast<size_t>(index) < colorSpace->palette.size())
    comps = &colorSpace->palette[static_cast<size_t>(index)];
  const int bits = colorSpace ? std::clamp(colorSpace->bitsPerComponent, 1, 16) : 8;
  const float maxValue = static_cast<float>((1 << bits) - 1);
  auto unit = [&](size_t i) {
    const float v = i < comps->size() ? (*comps)[i] / maxValue : 0.0f;
    return std::isfinite(v) ? std::clamp(v, 0.0f, 1.0f) : 0.0f;
  };
  OfdColorSpace::Kind kind = OfdColorSpace::Kind::kRGB;
  if (colorSpace)
    kind = colorSpace->kind;
  else if (comps->size() == 1)
    kind = OfdColorSpace::Kind::kGray;
  else if (comps->size() == 4)
    kind = OfdColorSpace::Kind::kCMYK;
  float r = 0, g = 0, b = 0;
  switch (kind) {
    case OfdColorSpace::Kind::kGray: r = g = b = unit(0); break;
    case OfdColorSpace::Kind::kRGB: r = unit(0); g = unit(1); b = unit(2); break;
    case OfdColorSpace::Kind::kCMYK: {
      const float k = 1 - unit(3);
      r = (1 - unit(0)) * k;
      g = (1 - unit(1)) * k;
      b = (1 - unit(2)) * k;
      break;
    }
  }
  auto byte = [](float v) { return static_cast<uint32_t>(std::lround(v * 255.0f)); };
  const uint32_t a = static_cast<uint32_t>(std::clamp(alpha, 0, 255));
  return (a << 24) | (byte(r) << 16) | (byte(g) << 8) | byte(b);
}

}  // namespace host
