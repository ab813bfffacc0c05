// Device data kept with a bitmap: shared by whole clones, dropped by any
// change, and never drawn stale.
#include <gtest/gtest.h>

#include <memory>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/base/dib.h"
#include "host/base/dib_device_cache.h"

namespace host {
namespace {

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
  ASSERT_TRUE(dib->GetDeviceCache());
  EXPECT_EQ(dib->Clone()->GetDeviceCache(), dib->GetDeviceCache());
  const Rect part(0, 0, 2, 2);
  EXPECT_FALSE(dib->Clone(&part)->GetDeviceCache());

  // Each way of changing pixels or palette drops it.
  const auto change = {+[](Dib& d) { d.GetBuffer(); }, +[](Dib& d) { d.GetScanline(0); },
                       +[](Dib& d) { d.SetPixel({0, 0}, 0); }, +[](Dib& d) { d.Fill(0); }};
  for (auto f : change) {
    auto copy = dib->Clone();
    f(*copy);
    EXPECT_FALSE(copy->GetDeviceCache());
    EXPECT_TRUE(dib->GetDeviceCache());
  }
  auto indexed = Dib::Create(2, 2, kDibIndexed8);
  indexed->KeepDeviceData();
  const uint32_t palette[] = {0xFF000000};
  indexed->SetPalette(palette, 1);
  EXPECT_FALSE(indexed->GetDeviceCache());
}

TEST(DibDeviceCache, DrawsWhatThePixelsAreNow) {
  auto dib = Kept(0xFF102030);
  EXPECT_EQ(DrawnCentre(*dib), 0xFF102030u);
  auto copy = dib->Clone();
  EXPECT_EQ(DrawnCentre(*copy), 0xFF102030u);  // the shared conversion
  EXPECT_TRUE(dib->GetDeviceCache()->Find(nullptr) == nullptr);
  copy->Fill(0xFF405060);
  EXPECT_EQ(DrawnCentre(*copy), 0xFF405060u);
  EXPECT_EQ(DrawnCentre(*dib), 0xFF102030u);
}

}  // namespace
}  // namespace host
