// Seal picture adjustments: cross mark, grey and black colouring, and the box
// blur (exactly the bytes of a straightforward convolution with repeated
// edges, truncated, on all four channels).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "image/box_filter.h"
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
  const struct { int w, h; DibFormat format; std::string mask; } cases[] = {
      {1, 1, host::kDibArgb32, "X"},
      {5, 5, host::kDibIndexed8, Rows(5, 5, '.')},
      {4, 4, host::kDibRgb24, Rows(4, 4, 'X')},
      {9, 9, host::kDibRgb24,
       "XXX....XX/XXXX..XXX/XXXXXXXXX/.XXXXXXXX/..XXXXXX./..XXXXXX./.XXXXXXXX/XXXXXXXXX/XXXX..XXX"},
      {10, 7, host::kDibArgb32, "XXXX...XXX/XXXXX.XXXX/XXXXXXXXXX/..XXXXXXX./..XXXXXXX./XXXXXXXXXX/XXXXX.XXXX"},
      {2, 100, host::kDibArgb32, Rows(2, 100, 'X')},
  };
  for (const auto& c : cases) {
    auto dib = Dib::Create(c.w, c.h, c.format);
    ASSERT_NE(dib, nullptr);
    DrawCrossMark(*dib);
    EXPECT_EQ(Mask(*dib), c.mask) << c.w << "x" << c.h << " format " << c.format;
  }
}

TEST(SealColour_Convert, RecolourInPlaceKeepingFormat) {
  // Input colour, its grey form (GrayOf: weights truncated, alpha kept), its
  // black form as a pixel.
  const struct { uint32_t in, gray, black; } cases[] = {
      {0x00000000, 0x00000000, 0x00000000}, {0xFFFF0000, 0xFF575757, 0xFF000000},
      {0x80FF0000, 0x80575757, 0x80000000}, {0x00FFFFFF, 0x00FFFFFF, 0x00000000},
      {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}, {0x7F123456, 0x7F2D2D2D, 0x7F000000},
      {0xFF0000FF, 0xFF272727, 0xFF000000}, {0xAB808080, 0xAB808080, 0xAB000000},
  };
  const int n = static_cast<int>(std::size(cases));
  for (const auto& c : cases) EXPECT_EQ(GrayOf(c.in), c.gray) << std::hex << c.in;
  for (DibFormat format : {host::kDibArgb32, host::kDibIndexed8}) {
    const bool indexed = format == host::kDibIndexed8;
    for (bool black : {false, true}) {
      auto dib = Dib::Create(n, 1, format);
      for (int i = 0; i < n; ++i) {
        indexed ? void(dib->SetPaletteEntry(i, cases[i].in)) : dib->SetPixel({i, 0}, cases[i].in);
        if (indexed) dib->GetScanline(0)[i] = static_cast<uint8_t>(i);
      }
      const Dib* before = dib.get();
      black ? ConvertToBlack(dib) : ConvertToGray(dib);
      ASSERT_EQ(std::make_pair(static_cast<const Dib*>(dib.get()), dib->GetFormat()), std::make_pair(before, format));
      for (int i = 0; i < n; ++i) {
        // Only the palette changes; unlike a pixel, an opaque white entry blackens.
        const uint32_t want = !black ? cases[i].gray : indexed ? cases[i].in & 0xFF000000u : cases[i].black;
        EXPECT_EQ(dib->GetPixel({i, 0}), want) << i << (black ? " black " : " grey ") << format;
        EXPECT_TRUE(!indexed || dib->GetScanline(0)[i] == i);
      }
    }
  }
}

TEST(SealColour_Convert, Rgb24ReplacedByArgb32Copy) {
  // Red, black, white; 24-bit pixels read as opaque, so black is recoloured.
  const uint32_t in[] = {0xFFFF0000, 0xFF000000, 0xFFFFFFFF};
  for (bool toBlack : {false, true}) {
    Dib* dib = Dib::Create(3, 1, host::kDibRgb24).release();
    for (int i = 0; i < 3; ++i) dib->SetPixel({i, 0}, in[i]);
    const Dib* before = dib;
    toBlack ? ConvertToBlack(dib) : ConvertToGray(dib);
    std::unique_ptr<Dib> owned(dib);
    ASSERT_NE(dib, before);
    EXPECT_EQ(std::vector({dib->GetPixel({0, 0}), dib->GetPixel({1, 0}), dib->GetPixel({2, 0}), uint32_t(dib->GetFormat())}),
              std::vector({toBlack ? 0xFF000000u : 0xFF575757u, 0xFF000000u, 0xFFFFFFFFu, uint32_t(host::kDibArgb32)}));
  }
  Dib* none = nullptr;
  ConvertToGray(none);
  ConvertToBlack(none);
  EXPECT_EQ(none, nullptr);
}

TEST(BoxFilter, RunRefusesRadiusBelowOneAndOtherFormatsStay) {
  filter::bitmap_t view;
  EXPECT_FALSE(filter::run(filter::box_kernel, filter::convolve, view, 0));

  // Radii below one, and formats other than 32-bit, leave the picture alone.
  for (auto [format, radius] : {std::pair{host::kDibRgb24, 1}, {host::kDibArgb32, 0}, {host::kDibArgb32, -2}}) {
    auto dib = host::Dib::Create(3, 3, format);
    dib->SetPixel({1, 1}, 0xFFFFFFFF);
    BlurSealImage(*dib, radius);
    EXPECT_EQ(std::make_pair(dib->GetPixel({1, 1}), dib->GetPixel({0, 0}) & 0xFFFFFF), std::make_pair(0xFFFFFFFFu, 0u));
  }
}


// The convolution as it was first written, one pixel at a time: the blur
// must give exactly its bytes.
void ReferenceConvolve(uint8_t* pixels, int64_t w, int64_t h, const double* kernel, int64_t r) {
  auto clamp = [](int64_t v, int64_t last) { return v < 0 ? 0 : (v > last ? last : v); };
  auto toByte = [](double s) { return s > 255.0 ? uint8_t{255} : static_cast<uint8_t>(static_cast<int>(s)); };
  const double* taps = kernel + r;
  std::vector<double> scratch(static_cast<size_t>(w * h * 4));
  for (int64_t y = 0; y < h; ++y)
    for (int64_t x = 0; x < w; ++x)
      for (int c = 0; c < 4; ++c) {
        double s = 0.0;
        for (int64_t k = -r; k <= r; ++k) s += pixels[(y * w + clamp(x + k, w - 1)) * 4 + c] * taps[k];
        scratch[static_cast<size_t>((y * w + x) * 4 + c)] = s;
      }
  for (int64_t y = 0; y < h; ++y)
    for (int64_t x = 0; x < w; ++x)
      for (int c = 0; c < 4; ++c) {
        double s = 0.0;
        for (int64_t k = -r; k <= r; ++k) s += scratch[static_cast<size_t>((clamp(y + k, h - 1) * w + x) * 4 + c)] * taps[k];
        pixels[(y * w + x) * 4 + c] = toByte(s);
      }
}

std::vector<uint8_t> Noise(size_t n, uint32_t seed, bool sparse) {
  std::vector<uint8_t> v(n);
  for (uint8_t& b : v) {
    seed = seed * 1664525u + 1013904223u;
    b = sparse && (seed >> 28) != 0 ? 0 : static_cast<uint8_t>(seed >> 24);
  }
  return v;
}

// Noise (or sparse dots) of a w x h picture blurred with `radius`: true when
// the blur gives the reference bytes.
bool BlursAsTheReference(int w, int h, int radius, bool sparse) {
  std::vector<uint8_t> expected = Noise(static_cast<size_t>(w * h * 4), w * 131 + h + radius, sparse);
  auto dib = host::Dib::Create(w, h, host::kDibArgb32);
  std::memcpy(dib->GetBuffer(), expected.data(), expected.size());
  std::vector<double> taps(static_cast<size_t>(2 * radius + 1), 1.0 / (2 * radius + 1));
  ReferenceConvolve(expected.data(), w, h, taps.data(), radius);
  BlurSealImage(*dib, radius);
  return std::memcmp(dib->GetBuffer(), expected.data(), expected.size()) == 0;
}

// Many sizes (rows shorter and longer than the vector blocks, images smaller
// than the radius) and radii, on noise and on sparse dots.
TEST(BoxFilter_Reference, BlurGivesTheReferenceBytesExactly) {
  for (auto [w, h] : {std::pair{1, 1}, {1, 9}, {9, 1}, {5, 17}, {33, 31}, {130, 70}}) {
    for (int radius : {1, 2, 3, 4, 8, 20, 300}) {
      for (bool sparse : {false, true})
        ASSERT_TRUE(BlursAsTheReference(w, h, radius, sparse)) << w << "x" << h << " radius " << radius << sparse;
    }
  }
  // Radii past the row buffers take the pixel-at-a-time way.
  EXPECT_TRUE(BlursAsTheReference(3, 2, 5000, false));
}

}  // namespace
}  // namespace tarvik
