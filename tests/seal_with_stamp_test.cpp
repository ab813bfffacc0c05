// Seal pictures with stamp text: the order of the adjustments on copies, the
// fresh device, and the failure results.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

#include "host/base/bitmap_device.h"
#include "support/seal_document.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

// Channels chosen so that a radius-1 blur shows: 100 -> 99, 7 -> 6, 1 and
// 255 stay.
constexpr uint32_t kSeal = 0xFF640701;

std::string SealPng() { return testing_support::SolidPng(9, 9, kSeal); }

struct StampCase {
  const char* name;
  int crossMark, colorMode, blur, blurRadius;
  uint32_t corner;  // pixel (0, 0): on the cross when there is one
  uint32_t middle;  // pixel (4, 1): off the cross
};

class SealWithStamp : public ::testing::TestWithParam<StampCase> {
 protected:
  void SetUp() override { SetDeviceCreator(host::BitmapDeviceCreator, nullptr); }
  void TearDown() override { SetDeviceCreator(nullptr, nullptr); }
  std::unique_ptr<Dib> Render(RenderSealParam::ImageParam& image) {
    std::string png = SealPng();
    RenderSealParam::TextParam text;  // no text: the stamp draws nothing
    text.fontName = U"WenQuanYi Zen Hei";
    RenderSealParam param;
    param.image = &image;
    param.text = &text;
    return std::unique_ptr<Dib>(RenderSealImageWithStamp(
        reinterpret_cast<unsigned char*>(png.data()), static_cast<unsigned>(png.size()), param));
  }
};

TEST_P(SealWithStamp, AdjustsCrossThenColourThenBlur) {
  const StampCase& c = GetParam();
  RenderSealParam::ImageParam image{
      .crossMark = c.crossMark, .blur = c.blur, .blurRadius = c.blurRadius, .colorMode = c.colorMode};
  std::unique_ptr<Dib> dib = Render(image);
  ASSERT_TRUE(dib);
  EXPECT_EQ(std::make_tuple(dib->GetWidth(), dib->GetHeight(), dib->GetPixel({0, 0}), dib->GetPixel({4, 1})),
            std::make_tuple(9, 9, c.corner, c.middle));
}

constexpr uint32_t kGreySeal = 0xFF262626;  // (11*100 + 16*7 + 5*1) >> 5 = 38

// A uniform level after a radius-1 box blur: three taps of 1/3 over rows,
// then over columns, truncated.
constexpr uint32_t BlurredLevel(uint32_t v) {
  const double t = 1.0 / 3;
  const double rows = v * t + v * t + v * t;
  return static_cast<uint32_t>(rows * t + rows * t + rows * t);
}
constexpr uint32_t kBlurredGrey = 0xFF000000u | BlurredLevel(38) * 0x010101u;

INSTANTIATE_TEST_SUITE_P(
    Adjustments, SealWithStamp,
    ::testing::Values(StampCase{"Plain", 0, 0, 0, 0, kSeal, kSeal},
                      StampCase{"Cross", 1, 0, 0, 0, 0xFFFF0000, kSeal},
                      StampCase{"CrossGrey", 1, 1, 0, 0, 0xFF575757, kGreySeal},
                      StampCase{"CrossBlack", 1, 2, 0, 0, 0xFF000000, 0xFF000000},
                      StampCase{"OtherColourModeKeepsColours", 0, 3, 0, 0, kSeal, kSeal},
                      StampCase{"BlurRadiusOne", 0, 0, 1, 1, 0xFF630601, 0xFF630601},
                      StampCase{"BlurRadiusZero", 0, 0, 1, 0, kSeal, kSeal},
                      StampCase{"RadiusWithoutFlag", 0, 0, 0, 1, kSeal, kSeal},
                      StampCase{"GreyThenBlur", 0, 1, 1, 1, kBlurredGrey, kBlurredGrey}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SealWithStampFailures, NullWithoutCreatorOrDecodableData) {
  RenderSealParam::ImageParam image;
  RenderSealParam::TextParam text;
  RenderSealParam param;
  param.image = &image;
  param.text = &text;
  std::string png = SealPng();
  auto* bytes = reinterpret_cast<unsigned char*>(png.data());
  SetDeviceCreator(nullptr, nullptr);
  EXPECT_EQ(RenderSealImageWithStamp(bytes, static_cast<unsigned>(png.size()), param), nullptr);

  SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  EXPECT_EQ(RenderSealImageWithStamp(bytes, 20, param), nullptr);  // truncated picture
  SetDeviceCreator([](int, int, DibFormat, uint32_t, void*) -> Device* { return nullptr; },
                   nullptr);
  EXPECT_EQ(RenderSealImageWithStamp(bytes, static_cast<unsigned>(png.size()), param), nullptr);
  SetDeviceCreator(nullptr, nullptr);
}

}  // namespace
}  // namespace tarvik
