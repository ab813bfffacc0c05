// Bitmaps: creation limits, copies, conversions, pixel and palette access,
// and the device data kept with them.
#include <gtest/gtest.h>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/base/dib.h"
#include "host/base/dib_device_cache.h"

#include <tuple>
#include <utility>
#include <vector>

namespace host {
namespace {

// A 3 x 2 bitmap of `format` holding six known colours (opaque ones when the
// format has no alpha).
std::unique_ptr<Dib> Sample(DibFormat format) {
  static const uint32_t kColours[6] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF,
                                       0x80102030, 0x00FFFFFF, 0xFF000000};
  auto dib = Dib::Create(3, 2, format);
  if (format == kDibIndexed8) dib->SetPalette(kColours, 6);
  for (int i = 0; i < 6; ++i) dib->SetPixel({i % 3, i / 3}, kColours[i] | (format == kDibRgb24 ? 0xFF000000 : 0));
  return dib;
}

TEST(Dib_Create, RefusesBadSizesAndFormats) {
  const struct { int w, h; DibFormat f; bool ok; } cases[] = {
      {1, 1, kDibArgb32, true},       {0, 5, kDibArgb32, false},
      {5, -1, kDibArgb32, false},     {kMaxDibSide, 1, kDibRgb24, true},
      {kMaxDibSide + 1, 1, kDibRgb24, false}, {16384, 16384, kDibArgb32, false},
      {8192, 8192, kDibIndexed8, true},       {4, 4, kDibInvalid, false},
      {4, 4, static_cast<DibFormat>(5), false},
  };
  for (const auto& c : cases) {
    auto dib = Dib::Create(c.w, c.h, c.f);
    EXPECT_EQ(dib != nullptr, c.ok) << c.w << "x" << c.h << " format " << c.f;
  }
}

TEST(Dib_CloneConvert, EveryPairKeepsColours) {
  for (DibFormat from : {kDibIndexed8, kDibRgb24, kDibArgb32}) {
    for (DibFormat to : {kDibIndexed8, kDibRgb24, kDibArgb32}) {
      auto src = Sample(from);
      auto out = src->CloneConvert(to);
      ASSERT_NE(out, nullptr);
      EXPECT_EQ(out->GetFormat(), to);
      for (int i = 0; i < 6; ++i) {
        const uint32_t want = src->GetPixel({i % 3, i / 3}) | (to == kDibRgb24 ? 0xFF000000 : 0);
        EXPECT_EQ(out->GetPixel({i % 3, i / 3}), want) << from << " to " << to << " pixel " << i;
      }
    }
  }
}

TEST(Dib_CloneConvert, TooManyColoursForPalette) {
  auto dib = Dib::Create(20, 20, kDibArgb32);
  for (int i = 0; i < 400; ++i) dib->SetPixel({i % 20, i / 20}, 0xFF000000u | i);
  EXPECT_EQ(dib->CloneConvert(kDibIndexed8), nullptr);
  EXPECT_EQ(dib->CloneConvert(kDibInvalid), nullptr);
  const Rect small(0, 0, 10, 1);  // ten colours fit
  auto part = dib->CloneConvert(kDibIndexed8, &small);
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(part->GetPixel({9, 0}), 0xFF000009u);
}

TEST(Dib_Clone, RectIsClippedToBitmap) {
  auto src = Sample(kDibArgb32);
  const struct { Rect rect; int w, h; uint32_t topLeft; } cases[] = {
      {{-5, -5, 1, 1}, 1, 1, 0xFFFF0000}, {{2, 1, 50, 50}, 1, 1, 0xFF000000}, {{2, 2, 1, 1}, 0, 0, 0}};  // inverted
  for (const auto& c : cases) {
    auto out = src->Clone(&c.rect);
    ASSERT_EQ(out != nullptr, c.w > 0);
    if (!out) continue;
    EXPECT_EQ(std::make_tuple(out->GetWidth(), out->GetHeight(), out->GetPixel({0, 0})),
              std::make_tuple(c.w, c.h, c.topLeft));
  }
  // A copy is independent of its source.
  auto copy = src->Clone();
  copy->SetPixel({0, 0}, 0);
  EXPECT_EQ(src->GetPixel({0, 0}), 0xFFFF0000u);
}

TEST(Dib_Pixels, OutsideIsIgnoredAndPaletteNearest) {
  auto dib = Sample(kDibIndexed8);
  dib->SetPixel({-1, 0}, 0xFFFFFFFF);
  dib->SetPixel({3, 0}, 0xFFFFFFFF);
  EXPECT_EQ(std::make_pair(dib->GetPixel({3, 0}), dib->GetPixel({0, -1})), std::make_pair(0u, 0u));
  // An indexed bitmap stores the nearest palette colour.
  dib->SetPixel({0, 0}, 0xFFF01010);
  EXPECT_EQ(std::make_pair(dib->GetPixel({0, 0}), dib->GetScanline(0)[0]), std::make_pair(0xFFFF0000u, uint8_t{0}));
  dib->SetPaletteEntry(0, 0xFF123456);
  EXPECT_EQ(std::vector({dib->GetPixel({0, 0}), dib->GetPaletteEntry(-1), dib->GetPaletteEntry(256)}),
            std::vector({0xFF123456u, 0u, 0u}));
  const uint32_t tooMany[257] = {};
  EXPECT_FALSE(dib->SetPalette(tooMany, 257) || Dib::Create(1, 1, kDibRgb24)->SetPalette(tooMany, 2));
}

// Device data kept with a bitmap: shared by whole clones, dropped by any
// change, and never drawn stale.
std::unique_ptr<Dib> Kept(uint32_t argb) {
  auto dib = Dib::Create(4, 4, kDibArgb32);
  dib->Fill(argb);
  dib->KeepDeviceData();
  return dib;
}

uint32_t DrawnCentre(const Dib& dib) {
  auto device = CreateBitmapDevice(8, 8, kDibArgb32, 0xFFFFFFFF);
  EXPECT_TRUE(device->DrawBitmapMatrix(&dib, Matrix(8, 0, 0, 8, 0, 0), 255, BlendMode::kNormal));
  std::unique_ptr<Dib> out(device->TakeBitmap());
  return out->GetPixel({4, 4});
}

TEST(DibDeviceCache, WholeClonesShareItAndChangesDropIt) {
  auto dib = Kept(0xFF102030);
  const Rect part(0, 0, 2, 2);
  ASSERT_TRUE(dib->GetDeviceCache());
  EXPECT_EQ(std::make_pair(dib->Clone()->GetDeviceCache(), dib->Clone(&part)->GetDeviceCache()),
            std::make_pair(dib->GetDeviceCache(), std::shared_ptr<DibDeviceCache>()));

  // Each way of changing pixels or palette drops it.
  const auto change = {+[](Dib& d) { d.GetBuffer(); }, +[](Dib& d) { d.GetScanline(0); },
                       +[](Dib& d) { d.SetPixel({0, 0}, 0); }, +[](Dib& d) { d.Fill(0); }};
  for (auto f : change) {
    auto copy = dib->Clone();
    f(*copy);
    EXPECT_TRUE(!copy->GetDeviceCache() && dib->GetDeviceCache());
  }
  auto indexed = Dib::Create(2, 2, kDibIndexed8);
  indexed->KeepDeviceData();
  const uint32_t palette[] = {0xFF000000};
  EXPECT_TRUE(indexed->SetPalette(palette, 1) && !indexed->GetDeviceCache());
}

TEST(DibDeviceCache, DrawsWhatThePixelsAreNow) {
  auto dib = Kept(0xFF102030);
  auto copy = dib->Clone();
  EXPECT_EQ(DrawnCentre(*copy), 0xFF102030u);  // the shared conversion
  copy->Fill(0xFF405060);
  EXPECT_EQ(std::make_pair(DrawnCentre(*copy), DrawnCentre(*dib)), std::make_pair(0xFF405060u, 0xFF102030u));
}

}  // namespace
}  // namespace host
