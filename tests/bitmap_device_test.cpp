// The cairo bitmap device: alpha at the edges, clipping, bitmaps, paths, text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <numbers>
#include <vector>

#include "host/base/device.h"
#include "host/base/font.h"
#include "support/fixed_metrics_face.h"
#include "support/render_compare.h"

namespace {

using host::Dib;
using host::Matrix;
using host::Path;

std::unique_ptr<host::Device> NewDevice(int w, int h, uint32_t background) {
  return host::CreateBitmapDevice(w, h, host::kDibArgb32, background);
}

std::unique_ptr<Dib> Take(host::Device& device) { return std::unique_ptr<Dib>(device.TakeBitmap()); }

bool Near(uint32_t a, uint32_t b, int tolerance) {
  for (int shift = 0; shift < 32; shift += 8) {
    const int d = static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF);
    if (std::abs(d) > tolerance) return false;
  }
  return true;
}

Path RectPath(float x, float y, float w, float h) {
  Path p;
  p.AddRect(x, y, w, h);
  return p;
}

// Bounding box of the pixels with any alpha; empty (left > right) when none.
struct Box {
  int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
};
Box InkBox(const Dib& dib) {
  Box box;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    for (int x = 0; x < dib.GetWidth(); ++x) {
      if (dib.GetPixel({x, y}) >> 24 == 0) continue;
      box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
             std::max(box.bottom, y)};
    }
  }
  return box;
}

TEST(BitmapDevice_Create, RefusesBadSizesAndFormats) {
  const struct {
    int w, h;
    host::DibFormat format;
    bool ok;
  } cases[] = {
      {10, 7, host::kDibArgb32, true},   {0, 7, host::kDibArgb32, false},
      {10, -1, host::kDibArgb32, false}, {host::kMaxDibSide + 1, 1, host::kDibArgb32, false},
      {10, 7, host::kDibRgb24, false},   {10, 7, host::kDibIndexed8, false},
  };
  for (const auto& c : cases) {
    auto device = host::CreateBitmapDevice(c.w, c.h, c.format, 0);
    ASSERT_EQ(device != nullptr, c.ok) << c.w << "x" << c.h << " format " << c.format;
    std::unique_ptr<host::Device> viaCreator(
        host::BitmapDeviceCreator(c.w, c.h, c.format, 0, nullptr));
    EXPECT_EQ(viaCreator != nullptr, c.ok);
    if (!c.ok) continue;
    EXPECT_EQ(device->GetWidth(), 10u);
    EXPECT_EQ(device->GetHeight(), 7u);
  }
}

TEST(BitmapDevice_TakeBitmap, KeepsBackgroundAndStopsDrawing) {
  for (uint32_t background : {0x00FFFFFFu, 0x00000000u, 0xFF336699u, 0x80336699u}) {
    auto device = NewDevice(4, 3, background);
    device->SaveState();
    auto dib = Take(*device);
    ASSERT_TRUE(dib);
    for (int i = 0; i < 12; ++i) EXPECT_TRUE(Near(dib->GetPixel({i % 4, i / 4}), background, 1));

    EXPECT_EQ(device->TakeBitmap(), nullptr);
    EXPECT_FALSE(device->FillPath(RectPath(0, 0, 4, 3), Matrix(), 0xFF000000, host::FillRule::kNonZero));
    EXPECT_FALSE(device->DrawBitmap(dib.get(), 0, 0));
    device->RestoreState();
    device->ClipRect(host::GRect(0, 0, 1, 1));
    EXPECT_EQ(device->TakeBitmap(), nullptr);
  }
}

// Straight alpha goes in through a bitmap and comes back out unchanged, and
// untouched pixels of a transparent white background stay 0x00FFFFFF.
TEST(BitmapDevice_Alpha, SurvivesPremultiplication) {
  const uint32_t colours[] = {0x01FF0000, 0x0100FFFF, 0x7F804020, 0x80123456,
                              0xFE7F7F7F, 0xFF123456, 0xC0FFFFFF};
  for (uint32_t background : {0x00FFFFFFu, 0x00000000u}) {
    for (uint32_t colour : colours) {
      auto pixel = Dib::Create(1, 1, host::kDibArgb32);
      pixel->SetPixel({0, 0}, colour);
      auto device = NewDevice(2, 1, background);
      ASSERT_TRUE(device->DrawBitmap(pixel.get(), 0, 0));
      auto dib = Take(*device);
      EXPECT_TRUE(Near(dib->GetPixel({0, 0}), colour, 1))
          << std::hex << colour << " came back as " << dib->GetPixel({0, 0});
      EXPECT_EQ(dib->GetPixel({1, 0}), background);
    }
  }
}

TEST(BitmapDevice_DrawBitmap, DrawsEveryFormatAtOffsets) {
  const uint32_t colours[6] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF808080, 0xFFFFFF00, 0x80102030};
  for (host::DibFormat format : {host::kDibIndexed8, host::kDibRgb24, host::kDibArgb32}) {
    auto source = Dib::Create(3, 2, format);
    if (format == host::kDibIndexed8) source->SetPalette(colours, 6);
    for (int i = 0; i < 6; ++i) source->SetPixel({i % 3, i / 3}, colours[i]);
    for (auto [dx, dy] : {std::pair{0, 0}, {-2, -1}, {8, 6}, {9, -1}, {40, 3}, {-3, 0}}) {
      auto device = NewDevice(10, 7, 0);
      EXPECT_TRUE(device->DrawBitmap(source.get(), dx, dy));
      auto dib = Take(*device);
      for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 10; ++x) {
          const uint32_t expected = source->GetPixel({x - dx, y - dy});  // 0 outside
          EXPECT_TRUE(Near(dib->GetPixel({x, y}), expected, 1))
              << "format " << format << " at " << dx << "," << dy << " pixel " << x << "," << y;
        }
      }
    }
  }
  auto device = NewDevice(4, 4, 0);
  EXPECT_FALSE(device->DrawBitmap(nullptr, 0, 0));
}

TEST(BitmapDevice_Clip, RectAndPathClipUntilRestore) {
  auto device = NewDevice(10, 10, 0);
  const Path all = RectPath(0, 0, 10, 10);
  device->SaveState();
  device->ClipRect(host::GRect(8, 7, 2, 3));  // corners in either order
  device->FillPath(all, Matrix(), 0xFFFF0000, host::FillRule::kNonZero);
  device->RestoreState();
  device->SaveState();
  device->ClipPath(RectPath(0, 0, 1, 1), Matrix(10, 0, 0, 10, 0, 0), host::FillRule::kEvenOdd);
  Path ring;
  ring.AddRect(0, 0, 10, 10);
  ring.AddRect(1, 1, 8, 8);
  device->ClipPath(ring, Matrix(), host::FillRule::kEvenOdd);  // leaves a 1-pixel frame
  device->FillPath(all, Matrix(), 0xFF0000FF, host::FillRule::kNonZero);
  device->RestoreState();
  EXPECT_EQ(device->SaveDepth(), 0);
  auto dib = Take(*device);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 10; ++x) {
      uint32_t expected = 0;
      if (x >= 2 && x < 8 && y >= 3 && y < 7) expected = 0xFFFF0000;
      if (x == 0 || y == 0 || x == 9 || y == 9) expected = 0xFF0000FF;
      EXPECT_EQ(dib->GetPixel({x, y}), expected) << x << "," << y;
    }
  }
}

TEST(BitmapDevice_FillPath, MultiplyGivesProduct) {
  auto device = NewDevice(6, 6, 0xFF808080);
  EXPECT_TRUE(device->FillPath(RectPath(1, 1, 2, 2), Matrix(2, 0, 0, 2, 0, 0), 0xFFFF8000,
                               host::FillRule::kNonZero, host::BlendMode::kMultiply));
  auto dib = Take(*device);
  EXPECT_TRUE(Near(dib->GetPixel({3, 3}), 0xFF804000, 1)) << std::hex << dib->GetPixel({3, 3});
  EXPECT_EQ(dib->GetPixel({1, 1}), 0xFF808080u);
}

// A horizontal line whose device centre is y = 20: exactly the rows covered by
// the scaled pen are inked.
TEST(BitmapDevice_StrokePath, WidthScalesWithMatrix) {
  const struct {
    float sx, sy, width;
    int deviceWidth;
  } cases[] = {{1, 1, 2, 2}, {2, 2, 1, 2}, {4, 4, 1, 4}, {2, 2, 3, 6}, {1, 4, 1, 4}, {4, 1, 2, 2}};
  for (const auto& c : cases) {
    auto device = NewDevice(40, 40, 0);
    Path line;
    line.MoveTo(5 / c.sx, 20 / c.sy);
    line.LineTo(35 / c.sx, 20 / c.sy);
    host::StrokeStyle style;
    style.width = c.width;
    ASSERT_TRUE(device->StrokePath(line, Matrix(c.sx, 0, 0, c.sy, 0, 0), 0xFF000000, style));
    auto dib = Take(*device);
    const int half = c.deviceWidth / 2, top = 20 - half, bottom = 20 + (c.deviceWidth - half);
    for (int y = 10; y < 30; ++y) {
      const uint32_t alpha = dib->GetPixel({20, y}) >> 24;
      if (y >= top && y < bottom) {
        EXPECT_EQ(alpha, 255u) << c.sx << "x" << c.sy << " row " << y;
      } else if (y < top - 1 || y > bottom) {
        EXPECT_EQ(alpha, 0u) << c.sx << "x" << c.sy << " row " << y;
      }
    }
  }
}

// Hostile parameters fail or draw nothing, and never leave cairo in its
// sticky error state: a plain fill afterwards still works.
TEST(BitmapDevice_BadInput, LeavesDeviceUsable) {
  const Path box = RectPath(0, 0, 1, 1);
  host::Font font(nullptr);
  const bool haveFont = font.LoadFont(U"WenQuanYi Zen Hei", nullptr, 3, 400, 0) != 0;
  auto device = NewDevice(8, 8, 0);
  host::StrokeStyle wide, dashed, zeroDash;
  wide.width = 1e30f;
  dashed.dashes = {-1, 2};
  zeroDash.dashes = {0, 0};
  dashed.dashOffset = NAN;
  const Matrix singular(0, 0, 0, 0, 1, 1), huge(1e30f, 0, 0, 1e30f, 0, 0), nan(NAN, 0, 0, 1, 0, 0);
  EXPECT_FALSE(device->FillPath(box, nan, 0xFF000000, host::FillRule::kNonZero));
  EXPECT_TRUE(device->FillPath(box, huge, 0x01000000, host::FillRule::kNonZero));
  EXPECT_FALSE(device->StrokePath(box, singular, 0xFF000000, wide));
  EXPECT_TRUE(device->StrokePath(box, Matrix(), 0x01000000, wide));
  EXPECT_TRUE(device->StrokePath(box, Matrix(), 0x01000000, dashed));
  EXPECT_TRUE(device->StrokePath(box, Matrix(), 0x01000000, zeroDash));
  device->SaveState();
  device->ClipRect(host::GRect(NAN, 0, 1, 1));
  device->ClipPath(box, nan, host::FillRule::kNonZero);
  device->RestoreState();
  device->RestoreState();  // unmatched: ignored
  if (haveFont) {
    for (const Matrix& m : {singular, huge, nan}) {
      EXPECT_EQ(device->DrawText(U"中", 1, &font, &m, 0xFF000000, 10), 0);
    }
    for (float size : {0.0f, -3.0f, NAN, 1e9f}) {
      EXPECT_EQ(device->DrawText(U"中", 1, &font, nullptr, 0xFF000000, size), 0);
    }
  }
  EXPECT_TRUE(device->FillPath(RectPath(0, 0, 8, 8), Matrix(), 0xFF00FF00, host::FillRule::kNonZero));
  EXPECT_EQ(Take(*device)->GetPixel({4, 4}), 0xFF00FF00u);
}

TEST(BitmapDevice_DrawBitmapMatrix, ScalesUnitSquare) {
  auto source = Dib::Create(2, 2, host::kDibArgb32);
  const uint32_t c[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFF00};
  for (int i = 0; i < 4; ++i) source->SetPixel({i % 2, i / 2}, c[i]);
  const struct {
    Matrix m;
    int alpha;
    uint32_t topLeft, topRight, bottomLeft, bottomRight;
  } cases[] = {
      {Matrix(20, 0, 0, 20, 5, 5), 255, c[0], c[1], c[2], c[3]},
      {Matrix(-20, 0, 0, 20, 25, 5), 255, c[1], c[0], c[3], c[2]},  // mirrored
      {Matrix(0, 20, 20, 0, 5, 5), 255, c[0], c[2], c[1], c[3]},    // transposed
      {Matrix(20, 0, 0, 20, 5, 5), 128, c[0], c[1], c[2], c[3]},
  };
  for (const auto& k : cases) {
    auto device = NewDevice(30, 30, 0);
    ASSERT_TRUE(device->DrawBitmapMatrix(source.get(), k.m, k.alpha));
    auto dib = Take(*device);
    const uint32_t alpha = static_cast<uint32_t>(k.alpha) << 24;
    auto expect = [&](int x, int y, uint32_t colour) {
      EXPECT_TRUE(Near(dib->GetPixel({x, y}), (colour & 0xFFFFFF) | alpha, 1))
          << x << "," << y << " " << std::hex << dib->GetPixel({x, y});
    };
    // Pixel centres within a quarter source pixel of the edges, and the
    // outermost rows and columns: padding keeps them unfaded.
    for (int p : {5, 7}) {
      expect(p, p, k.topLeft);
      expect(29 - p, p, k.topRight);
      expect(p, 29 - p, k.bottomLeft);
      expect(29 - p, 29 - p, k.bottomRight);
    }
    for (int p : {0, 4, 25, 29}) {
      EXPECT_EQ(dib->GetPixel({p, 15}), 0u);
      EXPECT_EQ(dib->GetPixel({15, p}), 0u);
    }
  }
  auto device = NewDevice(4, 4, 0);
  EXPECT_FALSE(device->DrawBitmapMatrix(source.get(), Matrix(0, 0, 0, 0, 1, 1)));
  EXPECT_FALSE(device->DrawBitmapMatrix(source.get(), Matrix(NAN, 0, 0, 1, 0, 0)));
}

TEST(BitmapDevice_Golden, RingAndStar) {
  auto device = NewDevice(64, 64, 0xFFFFFFFF);
  Path ring;
  ring.AddEllipse(16, 16, 13, 13);
  host::StrokeStyle style;
  style.width = 2;  // 4 pixels under the matrix
  ASSERT_TRUE(device->StrokePath(ring, Matrix(2, 0, 0, 2, 0, 0), 0xFFE00000, style));
  Path star;  // five points, drawn in one stroke: even-odd leaves the centre empty
  for (int i = 0; i < 5; ++i) {
    const double angle = -std::numbers::pi / 2 + i * 4 * std::numbers::pi / 5;
    const float x = static_cast<float>(std::cos(angle)), y = static_cast<float>(std::sin(angle));
    if (i == 0) {
      star.MoveTo(x, y);
    } else {
      star.LineTo(x, y);
    }
  }
  star.Close();
  ASSERT_TRUE(device->FillPath(star, Matrix(20, 0, 0, 20, 32, 33), 0xC00040E0,
                               host::FillRule::kEvenOdd));
  auto dib = Take(*device);
  EXPECT_TRUE(testing_support::CompareWithReference(*dib, "bitmap_device_ring_star", 2));
}

// "中" of WenQuanYi Zen Hei at 40 units: its ink lies in the em box that the
// matrix places (baseline origin, y down), upright and rotated by 90 degrees.
TEST(BitmapDevice_DrawText, PlacesInkInTheEmBox) {
  host::Font font(nullptr);
  ASSERT_NE(font.LoadFont(U"WenQuanYi Zen Hei", nullptr, 3, 400, 0), 0);
  ASSERT_NE(font.GetFaceHandle()->CairoFace(), nullptr);
  const char32_t text[] = U"中";
  const struct {
    Matrix m;
    Box expected;  // the em box, from 20% of an em below the baseline to an em above
  } cases[] = {
      {Matrix(1, 0, 0, 1, 10, 50), {10, 10, 50, 58}},
      {Matrix(0, 1, -1, 0, 50, 10), {42, 10, 90, 50}},  // text x runs down the page
  };
  for (const auto& c : cases) {
    auto device = NewDevice(100, 100, 0x00FFFFFF);
    ASSERT_NE(device->DrawText(text, 1, &font, &c.m, 0xFF000000, 40), 0);
    const Box ink = InkBox(*Take(*device));
    EXPECT_GE(ink.left, c.expected.left - 1);
    EXPECT_GE(ink.top, c.expected.top - 1);
    EXPECT_LE(ink.right, c.expected.right + 1);
    EXPECT_LE(ink.bottom, c.expected.bottom + 1);
    // The glyph fills most of its em box.
    EXPECT_GE(ink.right - ink.left, 25);
    EXPECT_GE(ink.bottom - ink.top, 25);
  }
  // Advances come from the font: a second glyph starts one advance further.
  const Matrix at(1, 0, 0, 1, 5, 50);
  Box boxes[2];
  for (int n = 1; n <= 2; ++n) {
    auto device = NewDevice(100, 100, 0);
    ASSERT_NE(device->DrawText(U"中中", n, &font, &at, 0xFF000000, 40), 0);
    boxes[n - 1] = InkBox(*Take(*device));
  }
  const double advance = font.GetGlyphAdvance(font.GetGlyphIndex(U'中')) * 40 / 1000.0;
  EXPECT_NEAR(boxes[1].right - boxes[0].right, advance, 1);
  EXPECT_EQ(boxes[1].left, boxes[0].left);
}

// Past 256 pixels per em glyphs are filled as outlines rather than cached as
// masks: the ink is the same shape, just scaled.
TEST(BitmapDevice_DrawText, LargeGlyphsDrawAsOutlinesWithTheSameInk) {
  host::Font font(nullptr);
  ASSERT_NE(font.LoadFont(U"WenQuanYi Zen Hei", nullptr, 3, 400, 0), 0);
  Box boxes[2];
  int inked[2] = {0, 0};
  const float sizes[2] = {250, 262};  // a cached mask, then an outline
  for (int i = 0; i < 2; ++i) {
    auto device = NewDevice(320, 320, 0x00FFFFFF);
    const Matrix at(1, 0, 0, 1, 10, 280);
    ASSERT_NE(device->DrawText(U"中", 1, &font, &at, 0xFF000000, sizes[i]), 0);
    const auto dib = Take(*device);
    boxes[i] = InkBox(*dib);
    for (int y = 0; y < 320; ++y)
      for (int x = 0; x < 320; ++x) inked[i] += (dib->GetPixel({x, y}) >> 24) > 0x80;
  }
  const double scale = sizes[1] / sizes[0];
  EXPECT_NEAR(boxes[1].right - boxes[1].left, (boxes[0].right - boxes[0].left) * scale, 2);
  EXPECT_NEAR(boxes[1].bottom - boxes[1].top, (boxes[0].bottom - boxes[0].top) * scale, 2);
  EXPECT_NEAR(inked[1], inked[0] * scale * scale, inked[0] * 0.03);
}

// Faces loaded from memory, drawn and dropped one after another while cairo
// still caches what it made from them.
TEST(BitmapDevice_DrawText, DrawsWithShortLivedMemoryFaces) {
  std::ifstream in("/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf", std::ios::binary);
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
  if (bytes.empty()) GTEST_SKIP() << "DejaVuSansMono.ttf is not installed";
  const Matrix m(1, 0, 0, 1, 4, 30);
  for (int i = 0; i < 4; ++i) {
    auto font = std::make_unique<host::Font>(nullptr);
    ASSERT_NE(font->LoadFontFromMemory(bytes.data(), bytes.size()), 0);
    auto device = NewDevice(40, 40, 0);
    ASSERT_NE(device->DrawText(U"H", 1, font.get(), &m, 0xFF000000, 30), 0);
    font.reset();
    const Box ink = InkBox(*Take(*device));
    EXPECT_GE(ink.bottom - ink.top, 15) << "round " << i;
  }
}

TEST(BitmapDevice_DrawText, FaceWithoutOutlinesDrawsNothing) {
  testing_support::FixedMetricsFont fake({{U'中', {7, 1000, 800}}});
  auto device = NewDevice(20, 20, 0x00FFFFFF);
  const Matrix m(1, 0, 0, 1, 2, 15);
  EXPECT_EQ(device->DrawText(U"中", 1, &fake, &m, 0xFF000000, 12), 0);
  EXPECT_EQ(device->DrawText(U"中", 1, nullptr, &m, 0xFF000000, 12), 0);
  auto dib = Take(*device);
  EXPECT_EQ(InkBox(*dib).right, -1);
}

}  // namespace
