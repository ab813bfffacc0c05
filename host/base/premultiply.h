// Pixel conversion between straight-alpha 0xAARRGGBB, as bitmaps hold it,
// and the premultiplied ARGB32 that cairo draws on. Internal to the host
// platform.
#pragma once

#include <cstdint>

namespace host {

class Dib;

/// 0xAARRGGBB with straight alpha to cairo's premultiplied pixel.
inline uint32_t PremultiplyArgb(uint32_t argb) {
  const uint32_t a = argb >> 24;
  if (a == 255) return argb;
  if (a == 0) return 0;
  auto channel = [&](int shift) { return (((argb >> shift) & 0xFF) * a + 127) / 255 << shift; };
  return a << 24 | channel(16) | channel(8) | channel(0);
}

/// A premultiplied pixel back to straight alpha, rounded; a pixel nothing
/// covered (alpha 0) takes the RGB of `background`.
uint32_t UnpremultiplyArgb(uint32_t pixel, uint32_t background);

/// Turns `dib`, a kDibArgb32 bitmap holding premultiplied pixels as the
/// machine stores 32-bit words (cairo's ARGB32), into straight alpha with
/// UnpremultiplyArgb.
void UnpremultiplyInPlace(Dib& dib, uint32_t background);

/// Writes `dib` (indexed, RGB24 or ARGB32) as premultiplied ARGB32 rows,
/// `stride` bytes apart, at `data`.
void ConvertToPremultiplied(const Dib& dib, uint8_t* data, int stride);

}  // namespace host
