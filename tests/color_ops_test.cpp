// Cross mark, grey and black colouring of seal bitmaps.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

#include "image/color_ops.h"

namespace tarvik {
namespace {

using host::Dib;
using host::DibFormat;

// One character per pixel, rows separated by '/': 'X' for the stroke's bytes
// (the last N of 00 00 FF FF), '.' for untouched zero bytes, '?' otherwise.
// Row padding must stay zero.
std::string Mask(const Dib& dib) {
  static const uint8_t kStroke[4] = {0x00, 0x00, 0xFF, 0xFF};
  const int n = dib.GetBPP() / 8;
  std::string out;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    const uint8_t* row = dib.GetScanline(y);
    for (int x = 0; x < dib.GetWidth(); ++x) {
      const uint8_t* p = row + x * n;
      const bool zero = std::all_of(p, p + n, [](uint8_t b) { return b == 0; });
      out += std::memcmp(p, kStroke + 4 - n, n) == 0 ? 'X' : zero ? '.' : '?';
    }
    for (int i = dib.GetWidth() * n; i < dib.GetPitch(); ++i) EXPECT_EQ(row[i], 0) << "padding";
    if (y + 1 < dib.GetHeight()) out += '/';
  }
  return out;
}

std::string Rows(int width, int height, char c) {
  std::string row(width, c), out = row;
  for (int y = 1; y < height; ++y) out += "/" + row;
  return out;
}

TEST(CrossMark_Pixels, StrokeBlocksClippedAtBorders) {
  const std::string k9 = "XXX....XX/XXXX..XXX/XXXXXXXXX/.XXXXXXXX/..XXXXXX./..XXXXXX./.XXXXXXXX/"
                         "XXXXXXXXX/XXXX..XXX";
  const std::string k10x7 = "XXXX...XXX/XXXXX.XXXX/XXXXXXXXXX/..XXXXXXX./..XXXXXXX./XXXXXXXXXX/"
                            "XXXXX.XXXX";
  const struct { int w, h; DibFormat format; std::string mask; } cases[] = {
      {1, 1, host::kDibArgb32, "X"},
      {5, 5, host::kDibIndexed8, Rows(5, 5, '.')},
      {2, 2, host::kDibArgb32, "XX/XX"},
      {3, 3, host::kDibRgb24, Rows(3, 3, 'X')},
      {4, 4, host::kDibRgb24, Rows(4, 4, 'X')},
      {8, 4, host::kDibArgb32, Rows(8, 4, 'X')},
      {8, 8, host::kDibArgb32, "XXX...XX/XXXX.XXX/XXXXXXXX/.XXXXXXX/..XXXXX./.XXXXXXX/XXXXXXXX/XXXX.XXX"},
      {9, 9, host::kDibArgb32, k9},
      {9, 9, host::kDibRgb24, k9},
      {10, 7, host::kDibArgb32, k10x7},
      {10, 7, host::kDibRgb24, k10x7},
      {2, 100, host::kDibArgb32, Rows(2, 100, 'X')},
  };
  for (const auto& c : cases) {
    auto dib = Dib::Create(c.w, c.h, c.format);
    ASSERT_NE(dib, nullptr);
    DrawCrossMark(*dib);
    EXPECT_EQ(Mask(*dib), c.mask) << c.w << "x" << c.h << " format " << c.format;
  }
}

TEST(CrossMark_ThickLine, StepsAndStopsBeforeEndPoint) {
  const struct { int x0, y0, x1, y1; std::string mask; } cases[] = {
      {0, 0, 2, 5, "XX..../XXX.../XXX.../XXXX../XXXX../.XXX../......"},
      {0, 0, 1, 4, "XX..../XX..../XXX.../XXX.../XXX.../....../......"},
      {0, 2, 4, 2, "....../XXXXX./XXXXX./XXXXX./....../....../......"},
      {4, 2, 0, 2, "....../XXXXXX/XXXXXX/XXXXXX/....../....../......"},
      {3, 3, 3, 3, Rows(6, 7, '.')},
      {-10, -10, -3, 20, Rows(6, 7, '.')},
      {-2, 3, 8, 3, "....../....../XXXXXX/XXXXXX/XXXXXX/....../......"},
      {3, 50, 3, 6, "....../....../....../....../....../....../..XXX."},
  };
  for (const auto& c : cases) {
    auto dib = Dib::Create(6, 7, host::kDibArgb32);
    DrawThickLine(*dib, c.x0, c.y0, c.x1, c.y1);
    EXPECT_EQ(Mask(*dib), c.mask) << c.x0 << "," << c.y0 << " -> " << c.x1 << "," << c.y1;
  }
}

TEST(SealColour_Convert, RecolourInPlaceKeepingFormat) {
  // Input colour, its grey form (GrayOf: weights truncated, alpha kept), its
  // black form as a pixel.
  const struct { uint32_t in, gray, black; } cases[] = {
      {0x00000000, 0x00000000, 0x00000000}, {0xFFFF0000, 0xFF575757, 0xFF000000},
      {0x80FF0000, 0x80575757, 0x80000000}, {0x00FFFFFF, 0x00FFFFFF, 0x00000000},
      {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}, {0x00000001, 0x00000000, 0x00000000},
      {0x7F123456, 0x7F2D2D2D, 0x7F000000}, {0xFF000013, 0xFF020202, 0xFF000000},
      {0xFF00FF00, 0xFF7F7F7F, 0xFF000000}, {0xFF0000FF, 0xFF272727, 0xFF000000},
      {0xFFFF00FF, 0xFF7F7F7F, 0xFF000000}, {0xAB808080, 0xAB808080, 0xAB000000},
  };
  const int n = static_cast<int>(std::size(cases));
  for (const auto& c : cases) EXPECT_EQ(GrayOf(c.in), c.gray) << std::hex << c.in;
  for (DibFormat format : {host::kDibArgb32, host::kDibIndexed8}) {
    const bool indexed = format == host::kDibIndexed8;
    for (bool black : {false, true}) {
      auto dib = Dib::Create(n, 1, format);
      for (int i = 0; i < n; ++i) {
        if (indexed) {
          dib->SetPaletteEntry(i, cases[i].in);
          dib->GetScanline(0)[i] = static_cast<uint8_t>(i);
        } else {
          dib->SetPixel({i, 0}, cases[i].in);
        }
      }
      const Dib* before = dib.get();
      black ? ConvertToBlack(dib) : ConvertToGray(dib);
      ASSERT_EQ(dib.get(), before);
      EXPECT_EQ(dib->GetFormat(), format);
      for (int i = 0; i < n; ++i) {
        // Only the palette changes; unlike a pixel, an opaque white entry blackens.
        if (indexed) {
          EXPECT_EQ(dib->GetScanline(0)[i], i);
        }
        const uint32_t want = !black ? cases[i].gray : indexed ? cases[i].in & 0xFF000000u : cases[i].black;
        EXPECT_EQ(dib->GetPixel({i, 0}), want) << i << (black ? " black " : " grey ") << format;
      }
    }
  }
}

TEST(SealColour_Convert, Rgb24ReplacedByArgb32Copy) {
  // Red, black, white; 24-bit pixels read as opaque, so black is recoloured.
  const uint32_t in[] = {0xFFFF0000, 0xFF000000, 0xFFFFFFFF};
  const uint32_t gray[] = {0xFF575757, 0xFF000000, 0xFFFFFFFF};
  const uint32_t black[] = {0xFF000000, 0xFF000000, 0xFFFFFFFF};
  for (bool toBlack : {false, true}) {
    Dib* dib = Dib::Create(3, 1, host::kDibRgb24).release();
    for (int i = 0; i < 3; ++i) dib->SetPixel({i, 0}, in[i]);
    const Dib* before = dib;
    toBlack ? ConvertToBlack(dib) : ConvertToGray(dib);
    std::unique_ptr<Dib> owned(dib);
    ASSERT_NE(dib, before);
    EXPECT_EQ(dib->GetFormat(), host::kDibArgb32);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(dib->GetPixel({i, 0}), toBlack ? black[i] : gray[i]) << i;
  }
  Dib* none = nullptr;
  ConvertToGray(none);
  ConvertToBlack(none);
  EXPECT_EQ(none, nullptr);
}

}  // namespace
}  // namespace tarvik
