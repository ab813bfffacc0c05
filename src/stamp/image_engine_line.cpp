#include "stamp/image_engine_line.h"

#include <algorithm>
#include <cmath>

#include "host/base/matrix.h"

namespace tarvik {

bool ImageEngine_Line::Draw(host::Device* device) {
  const int n = text.GetLength();
  if (n <= 0 || !device) return false;

  const uint32_t W = deviceWidth;
  const uint32_t H = deviceHeight;
  // Nominal width: the share of the device width, the product kept in 32 bits.
  const float T = static_cast<float>(static_cast<float>(W * widthPercent) / 100.0);
  const float s = T / static_cast<float>(n);
  fontSize = s;

  // Line height: the tallest glyph, each height truncated to whole units.
  float hMax = 0.0f;
  for (int i = 0; i < n; ++i) {
    const uint32_t glyph = font ? font->GetGlyphIndex(text[i]) : 0;
    if (glyph == 0) continue;
    const float scaled = static_cast<float>(font->GetGlyphHeight(glyph)) * s;
    hMax = std::max(hMax, static_cast<float>(static_cast<int>(scaled / 1000.0)));
  }
  const float M = GetTextWidth(text, font.get(), s);
  const float X = static_cast<float>(offsetX);
  const float Y = static_cast<float>(offsetY);

  // "Right" places by the nominal width, centring by the measured one.
  float x;
  if (hAlign == "Left") {
    x = X - static_cast<float>(W >> 1);
  } else if (hAlign == "Right") {
    x = X + static_cast<float>(static_cast<int>(static_cast<float>(W >> 1) - T));
  } else {
    x = X - static_cast<float>(static_cast<int>(M * 0.5));
  }
  float y;
  if (vAlign == "Top") {
    y = Y - (static_cast<float>(H >> 1) - hMax);
  } else if (vAlign == "Bottom") {
    y = static_cast<float>(H >> 1) + Y;
  } else {
    y = static_cast<float>(0.5 * hMax + Y);
  }

  const double r = static_cast<double>(angle) * degToRad;
  const float cs = static_cast<float>(std::cos(r));
  const float sn = static_cast<float>(std::sin(r));
  // Positions are relative to the exact centre, which is half a pixel off the
  // shifted half sizes above for an odd size.
  const host::Matrix matrix(cs, sn, -sn, cs, static_cast<float>(static_cast<float>(W) * 0.5 + x),
                            static_cast<float>(static_cast<float>(H) * 0.5 + y));
  const bool ok = device->DrawText(text.c_str(), n, font.get(), &matrix, color, s) != 0;
  if (!ok) Report("Draw Line Error");
  return ok;
}

}  // namespace tarvik
