#include "image/color_ops.h"

#include <cstdlib>
#include <cstring>

namespace tarvik {

namespace {

// 0xFFFF0000 stored little-endian. A pixel of N bytes takes the last N.
constexpr uint8_t kStrokeBytes[4] = {0x00, 0x00, 0xFF, 0xFF};

constexpr uint32_t kAlphaMask = 0xFF000000u;
constexpr uint32_t kOpaqueWhite = 0xFFFFFFFFu;

uint32_t BlackPaletteEntry(uint32_t v) { return v & kAlphaMask; }

uint32_t BlackPixel(uint32_t v) { return v == kOpaqueWhite ? v : v & kAlphaMask; }

// Applies `paletteRule` to the non-zero palette entries of a paletted bitmap,
// or `pixelRule` to the non-zero pixels of its format-7 form, replacing the
// caller's bitmap by that form when it is in another format.
void Recolour(host::Dib*& dib, uint32_t (*paletteRule)(uint32_t), uint32_t (*pixelRule)(uint32_t)) {
  if (!dib) return;
  if (dib->GetFormat() == host::kDibIndexed8) {
    for (int i = 0; i < dib->GetPaletteSize(); ++i) {
      const uint32_t entry = dib->GetPaletteEntry(i);
      if (entry != 0) dib->SetPaletteEntry(i, paletteRule(entry));
    }
    return;
  }
  if (dib->GetFormat() != host::kDibArgb32) {
    std::unique_ptr<host::Dib> converted = dib->CloneConvert(host::kDibArgb32);
    if (!converted) return;
    delete dib;
    dib = converted.release();
  }
  const int width = dib->GetWidth();
  const int height = dib->GetHeight();
  for (int x = 0; x < width; ++x) {
    for (int y = 0; y < height; ++y) {
      const host::Point p(x, y);
      const uint32_t v = dib->GetPixel(p);
      if (v != 0) dib->SetPixel(p, pixelRule(v));
    }
  }
}

void WithRawPointer(std::unique_ptr<host::Dib>& dib, void (*op)(host::Dib*&)) {
  host::Dib* raw = dib.release();
  op(raw);
  dib.reset(raw);
}

}  // namespace

void DrawCrossMark(host::Dib& dib) {
  if (dib.GetBPP() < 24) return;
  const int w = dib.GetWidth();
  const int h = dib.GetHeight();
  // The strokes aim at W and H, one past the last pixel: the end point is
  // never painted, but the block before it still reaches the corner.
  DrawThickLine(dib, 0, 0, w, h);
  DrawThickLine(dib, w, 0, 0, h);
}

void DrawThickLine(host::Dib& dib, int x0, int y0, int x1, int y1) {
  const int n = dib.GetBPP() / 8;
  if (n < 1 || n > 4) return;
  const int64_t w = dib.GetWidth();
  const int64_t h = dib.GetHeight();
  const int64_t pitch = dib.GetPitch();
  uint8_t* bits = dib.GetBuffer();
  // Nothing can be painted; a pitch too small for a row would let writes
  // run past the buffer.
  if (w <= 0 || h <= 0 || pitch < w * n || !bits) return;
  const uint8_t* colour = kStrokeBytes + (4 - n);

  // 64-bit so that distant end points cannot overflow the error terms.
  const int64_t dx = std::llabs(int64_t{x1} - x0);
  const int64_t dy = std::llabs(int64_t{y1} - y0);
  const int sx = x1 > x0 ? 1 : -1;
  const int sy = y1 > y0 ? 1 : -1;
  int64_t err = dx - dy;
  int64_t x = x0;
  int64_t y = y0;
  while (x != x1 || y != y1) {
    for (int64_t py = y - 1; py <= y + 1; ++py) {
      if (py < 0 || py >= h) continue;
      uint8_t* row = bits + py * pitch;
      for (int64_t px = x - 1; px <= x + 1; ++px) {
        if (px >= 0 && px < w) std::memcpy(row + px * n, colour, static_cast<size_t>(n));
      }
    }
    const int64_t e2 = 2 * err;
    if (e2 > -dy) {
      err -= dy;
      x += sx;
    }
    if (e2 < dx) {
      err += dx;
      y += sy;
    }
  }
}

uint32_t GrayOf(uint32_t colour) {
  const uint32_t r = (colour >> 16) & 0xFF;
  const uint32_t g = (colour >> 8) & 0xFF;
  const uint32_t b = colour & 0xFF;
  const uint32_t y = (11 * r + 16 * g + 5 * b) >> 5;
  return (colour & kAlphaMask) | (y << 16) | (y << 8) | y;
}

void ConvertToGray(host::Dib*& dib) { Recolour(dib, GrayOf, GrayOf); }

void ConvertToGray(std::unique_ptr<host::Dib>& dib) {
  WithRawPointer(dib, static_cast<void (*)(host::Dib*&)>(ConvertToGray));
}

void ConvertToBlack(host::Dib*& dib) { Recolour(dib, BlackPaletteEntry, BlackPixel); }

void ConvertToBlack(std::unique_ptr<host::Dib>& dib) {
  WithRawPointer(dib, static_cast<void (*)(host::Dib*&)>(ConvertToBlack));
}

}  // namespace tarvik
