#include "host/base/premultiply.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#include "host/base/dib.h"

namespace host {

uint32_t UnpremultiplyArgb(uint32_t pixel, uint32_t background) {
  const uint32_t a = pixel >> 24;
  if (a == 0) return background & 0x00FFFFFF;
  if (a == 255) return pixel;
  auto channel = [&](int shift) {
    return std::min<uint32_t>(255, (((pixel >> shift) & 0xFF) * 255 + a / 2) / a) << shift;
  };
  return a << 24 | channel(16) | channel(8) | channel(0);
}

void UnpremultiplyInPlace(Dib& dib, uint32_t background) {
  const int width = dib.GetWidth();
  const uint32_t uncovered = background & 0x00FFFFFF;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    uint8_t* row = dib.GetScanline(y);
    if constexpr (std::endian::native == std::endian::little) {
      // Words already in the bitmap's byte order. Opaque and uncovered
      // pixels, nearly all of a page, in one loop simple enough to
      // vectorise; the translucent ones, if the row has any, after it.
      auto* pixels = reinterpret_cast<uint32_t*>(row);
      uint32_t translucent = 0;
      for (int x = 0; x < width; ++x) {
        const uint32_t a = pixels[x] >> 24;
        translucent |= static_cast<uint32_t>(a - 1 < 254);
        pixels[x] = a == 0 ? uncovered : pixels[x];
      }
      if (!translucent) continue;
      for (int x = 0; x < width; ++x) {
        if ((pixels[x] >> 24) - 1 < 254) pixels[x] = UnpremultiplyArgb(pixels[x], background);
      }
      continue;
    }
    for (int x = 0; x < width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, row + 4 * x, 4);
      const uint32_t argb = UnpremultiplyArgb(pixel, background);
      row[4 * x] = static_cast<uint8_t>(argb);
      row[4 * x + 1] = static_cast<uint8_t>(argb >> 8);
      row[4 * x + 2] = static_cast<uint8_t>(argb >> 16);
      row[4 * x + 3] = static_cast<uint8_t>(argb >> 24);
    }
  }
}

void ConvertToPremultiplied(const Dib& dib, uint8_t* data, int stride) {
  const DibFormat format = dib.GetFormat();
  const int width = dib.GetWidth();
  std::array<uint32_t, 256> palette{};
  if (format == kDibIndexed8) {
    for (int i = 0; i < 256; ++i) palette[i] = PremultiplyArgb(dib.GetPaletteEntry(i));
  }
  // One loop per format, so that each is simple enough to vectorise.
  for (int y = 0; y < dib.GetHeight(); ++y) {
    const uint8_t* in = dib.GetScanline(y);
    auto* out = reinterpret_cast<uint32_t*>(data + static_cast<size_t>(y) * stride);
    switch (format) {
      case kDibIndexed8:
        for (int x = 0; x < width; ++x) out[x] = palette[in[x]];
        break;
      case kDibRgb24:
        for (int x = 0; x < width; ++x) {
          out[x] = 0xFF000000u | uint32_t{in[3 * x + 2]} << 16 | uint32_t{in[3 * x + 1]} << 8 |
                   in[3 * x];
        }
        break;
      default:
        for (int x = 0; x < width; ++x) {
          out[x] = PremultiplyArgb(uint32_t{in[4 * x + 3]} << 24 | uint32_t{in[4 * x + 2]} << 16 |
                                   uint32_t{in[4 * x + 1]} << 8 | in[4 * x]);
        }
        break;
    }
  }
}

}  // namespace host
