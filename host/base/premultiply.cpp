#include "host/base/premultiply.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "host/base/dib.h"

namespace host {

namespace {

// Every straight channel value, min(255, (c * 255 + a / 2) / a), by alpha
// and premultiplied channel: three lookups instead of three divisions.
struct UnpremultiplyTable {
  uint8_t value[256][256];
};

constexpr UnpremultiplyTable MakeUnpremultiplyTable() {
  UnpremultiplyTable table{};
  for (uint32_t a = 1; a < 256; ++a) {
    for (uint32_t c = 0; c < 256; ++c)
      table.value[a][c] = static_cast<uint8_t>(std::min<uint32_t>(255, (c * 255 + a / 2) / a));
  }
  return table;
}

constexpr UnpremultiplyTable kUnpremultiply = MakeUnpremultiplyTable();

inline uint32_t Unpremultiply(uint32_t pixel, uint32_t uncovered) {
  const uint32_t a = pixel >> 24;
  if (a == 255) return pixel;
  if (a == 0) return uncovered;
  const uint8_t* straight = kUnpremultiply.value[a];
  return a << 24 | uint32_t{straight[(pixel >> 16) & 0xFF]} << 16 |
         uint32_t{straight[(pixel >> 8) & 0xFF]} << 8 | straight[pixel & 0xFF];
}

}  // namespace

uint32_t UnpremultiplyArgb(uint32_t pixel, uint32_t background) {
  return Unpremultiply(pixel, background & 0x00FFFFFF);
}

namespace {

// Four pixels at a time where all four are opaque (left as they are) or all
// uncovered, as most of a page or a seal is; words already in the bitmap's
// byte order.
void UnpremultiplyRow(uint32_t* pixels, int width, uint32_t uncovered) {
  int x = 0;
#if defined(__SSE2__)
  // Sixteen pixels (a cache line) are checked at once first.
  const __m128i opaque = _mm_set1_epi32(255);
  const __m128i clear = _mm_setzero_si128();
  const __m128i fill = _mm_set1_epi32(static_cast<int>(uncovered));
  auto allAlpha = [](__m128i alphas, __m128i value) {
    return _mm_movemask_epi8(_mm_cmpeq_epi32(alphas, value)) == 0xFFFF;
  };
  for (; x + 16 <= width; x += 16) {
    auto* line = reinterpret_cast<__m128i*>(pixels + x);
    const __m128i four[4] = {_mm_loadu_si128(line), _mm_loadu_si128(line + 1),
                             _mm_loadu_si128(line + 2), _mm_loadu_si128(line + 3)};
    const __m128i all = _mm_and_si128(_mm_and_si128(four[0], four[1]),
                                      _mm_and_si128(four[2], four[3]));
    if (allAlpha(_mm_srli_epi32(all, 24), opaque)) continue;
    const __m128i any = _mm_or_si128(_mm_or_si128(four[0], four[1]),
                                     _mm_or_si128(four[2], four[3]));
    if (allAlpha(_mm_srli_epi32(any, 24), clear)) {
      for (int g = 0; g < 4; ++g) _mm_storeu_si128(line + g, fill);
      continue;
    }
    for (int g = 0; g < 4; ++g) {
      const __m128i alphas = _mm_srli_epi32(four[g], 24);
      if (allAlpha(alphas, opaque)) continue;
      if (allAlpha(alphas, clear)) {
        _mm_storeu_si128(line + g, fill);
        continue;
      }
      uint32_t* mixed = pixels + x + 4 * g;
      for (int i = 0; i < 4; ++i) mixed[i] = Unpremultiply(mixed[i], uncovered);
    }
  }
#endif
  for (; x + 4 <= width; x += 4) {
    uint32_t* four = pixels + x;
    const uint32_t all = four[0] & four[1] & four[2] & four[3];
    const uint32_t any = four[0] | four[1] | four[2] | four[3];
    if (all >> 24 == 255) continue;
    if (any >> 24 == 0) {
      four[0] = four[1] = four[2] = four[3] = uncovered;
      continue;
    }
    for (int i = 0; i < 4; ++i) four[i] = Unpremultiply(four[i], uncovered);
  }
  for (; x < width; ++x) pixels[x] = Unpremultiply(pixels[x], uncovered);
}

}  // namespace

void UnpremultiplyInPlace(Dib& dib, uint32_t background) {
  const int width = dib.GetWidth();
  const uint32_t uncovered = background & 0x00FFFFFF;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    uint8_t* row = dib.GetScanline(y);
    if constexpr (std::endian::native == std::endian::little) {
      UnpremultiplyRow(reinterpret_cast<uint32_t*>(row), width, uncovered);
      continue;
    }
    for (int x = 0; x < width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, row + 4 * x, 4);
      const uint32_t argb = Unpremultiply(pixel, uncovered);
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
  // One loop per format: no pixel pays for choosing the format.
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
