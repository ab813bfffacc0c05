// The cairo bitmap device: alpha at the edges, clipping, bitmaps, paths, text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <vector>

#include "host/base/device.h"
#include "host/base/font.h"
#include "support/fonts.h"
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

// Rows long enough for the read-back's runs of sixteen and four: wholly
// opaque, wholly uncovered and mixed runs, and a tail.
TEST(BitmapDevice_Alpha, LongRowsComeBackPixelByPixel) {
  constexpr int kWidth = 53;
  auto colourAt = [](int x) -> uint32_t {
    if (x < 16) return 0xFF336699;
    if (x < 36) return 0;
    if (x < 40) return 0xFFABCDEF;
    const uint32_t mixed[3] = {0x80102030, 0, 0xFFABCDEF};
    return mixed[x % 3];
  };
  auto source = Dib::Create(kWidth, 1, host::kDibArgb32);
  for (int x = 0; x < kWidth; ++x) source->SetPixel({x, 0}, colourAt(x));
  for (uint32_t background : {0x00FFFFFFu, 0x00000000u}) {
    auto device = NewDevice(kWidth, 1, background);
    ASSERT_TRUE(device->DrawBitmap(source.get(), 0, 0));
    auto dib = Take(*device);
    for (int x = 0; x < kWidth; ++x) {
      const uint32_t expected = colourAt(x) ? colourAt(x) : background;
      EXPECT_TRUE(Near(dib->GetPixel({x, 0}), expected, 1)) << "pixel " << x;
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
      for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 10; ++x)  // the source reads 0 outside itself
          EXPECT_TRUE(Near(dib->GetPixel({x, y}), source->GetPixel({x - dx, y - dy}), 1))
              << "format " << format << " at " << dx << "," << dy << " pixel " << x << "," << y;
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
      const bool frame = x == 0 || y == 0 || x == 9 || y == 9, red = x >= 2 && x < 8 && y >= 3 && y < 7;
      EXPECT_EQ(dib->GetPixel({x, y}), frame ? 0xFF0000FFu : red ? 0xFFFF0000u : 0u) << x << "," << y;
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
  EXPECT_EQ((std::vector<bool>{device->FillPath(box, nan, 0xFF000000, host::FillRule::kNonZero),
                               device->FillPath(box, huge, 0x01000000, host::FillRule::kNonZero),
                               device->StrokePath(box, singular, 0xFF000000, wide),
                               device->StrokePath(box, Matrix(), 0x01000000, wide),
                               device->StrokePath(box, Matrix(), 0x01000000, dashed),
                               device->StrokePath(box, Matrix(), 0x01000000, zeroDash)}),
            (std::vector<bool>{false, true, false, true, true, true}));
  device->SaveState();
  device->ClipRect(host::GRect(NAN, 0, 1, 1));
  device->ClipPath(box, nan, host::FillRule::kNonZero);
  device->RestoreState();
  device->RestoreState();  // unmatched: ignored
  if (haveFont) {
    for (const Matrix& m : {singular, huge, nan}) EXPECT_EQ(device->DrawText(U"中", 1, &font, &m, 0xFF000000, 10), 0);
    for (float size : {0.0f, -3.0f, NAN, 1e9f}) EXPECT_EQ(device->DrawText(U"中", 1, &font, nullptr, 0xFF000000, size), 0);
  }
  EXPECT_TRUE(device->FillPath(RectPath(0, 0, 8, 8), Matrix(), 0xFF00FF00, host::FillRule::kNonZero));
  EXPECT_EQ(Take(*device)->GetPixel({4, 4}), 0xFF00FF00u);
}

TEST(BitmapDevice_DrawBitmapMatrix, ScalesUnitSquare) {
  auto source = Dib::Create(2, 2, host::kDibArgb32);
  const uint32_t c[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFF00};
  for (int i = 0; i < 4; ++i) source->SetPixel({i % 2, i / 2}, c[i]);
  // Corners: top left, top right, bottom left, bottom right.
  const struct { Matrix m; int alpha; uint32_t corners[4]; } cases[] = {
      {Matrix(20, 0, 0, 20, 5, 5), 255, {c[0], c[1], c[2], c[3]}},
      {Matrix(-20, 0, 0, 20, 25, 5), 255, {c[1], c[0], c[3], c[2]}},  // mirrored
      {Matrix(0, 20, 20, 0, 5, 5), 255, {c[0], c[2], c[1], c[3]}},    // transposed
      {Matrix(20, 0, 0, 20, 5, 5), 128, {c[0], c[1], c[2], c[3]}},
  };
  for (const auto& k : cases) {
    auto device = NewDevice(30, 30, 0);
    ASSERT_TRUE(device->DrawBitmapMatrix(source.get(), k.m, k.alpha));
    auto dib = Take(*device);
    // Pixel centres within a quarter source pixel of the edges, and the
    // outermost rows and columns: padding keeps them unfaded.
    for (int p : {5, 7}) {
      for (int i = 0; i < 4; ++i) {
        const int x = i % 2 ? 29 - p : p, y = i / 2 ? 29 - p : p;
        EXPECT_TRUE(Near(dib->GetPixel({x, y}), (k.corners[i] & 0xFFFFFF) | static_cast<uint32_t>(k.alpha) << 24, 1))
            << x << "," << y << " " << std::hex << dib->GetPixel({x, y});
      }
    }
    for (int p : {0, 4, 25, 29}) EXPECT_EQ(std::pair(dib->GetPixel({p, 15}), dib->GetPixel({15, p})), std::pair(0u, 0u));
  }
  auto device = NewDevice(4, 4, 0);
  EXPECT_FALSE(device->DrawBitmapMatrix(source.get(), Matrix(0, 0, 0, 0, 1, 1)) ||
               device->DrawBitmapMatrix(source.get(), Matrix(NAN, 0, 0, 1, 0, 0)));
}

}  // namespace
