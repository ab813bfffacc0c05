// The box blur: exact truncated results, repeated edges, all four channels.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "image/box_filter.h"

namespace tarvik {
namespace {

std::unique_ptr<host::Dib> Uniform(int w, int h, uint32_t argb) {
  auto dib = host::Dib::Create(w, h, host::kDibArgb32);
  dib->Fill(argb);
  return dib;
}

struct UniformCase {
  int radius;
  uint8_t in;
  uint8_t out;
};

class BoxFilterUniform : public ::testing::TestWithParam<UniformCase> {};

// Taps of 1/(2r+1) do not add up to exactly 1, and results are truncated: a
// uniform area may lose one level, the same at the borders as in the middle.
TEST_P(BoxFilterUniform, LosesAtMostTheTruncatedLevelEverywhere) {
  const UniformCase& c = GetParam();
  const uint32_t in = 0x01010101u * c.in;
  auto dib = Uniform(7, 5, in);
  BlurSealImage(*dib, c.radius);
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 7; ++x) ASSERT_EQ(dib->GetPixel({x, y}), 0x01010101u * c.out) << x << "," << y;
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, BoxFilterUniform,
                         ::testing::Values(UniformCase{1, 7, 6}, UniformCase{1, 100, 99},
                                           UniformCase{1, 1, 1}, UniformCase{1, 255, 255},
                                           UniformCase{3, 1, 0}, UniformCase{3, 255, 254},
                                           UniformCase{0, 7, 7}, UniformCase{-2, 100, 100}));

TEST(BoxFilter, RadiusTwoKeepsEveryUniformLevel) {
  for (int v = 0; v < 256; ++v) {
    auto dib = Uniform(3, 3, 0x01010101u * static_cast<uint32_t>(v));
    BlurSealImage(*dib, 2);
    ASSERT_EQ(dib->GetPixel({1, 1}), 0x01010101u * static_cast<uint32_t>(v)) << v;
  }
}

TEST(BoxFilter, RadiusBeyondTheImageHoldsToTheEdges) {
  auto dib = Uniform(3, 2, 0x80402010);
  BlurSealImage(*dib, 40);
  const uint32_t first = dib->GetPixel({0, 0});
  EXPECT_NE(first, 0u);
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 3; ++x) EXPECT_EQ(dib->GetPixel({x, y}), first);
  }
}

TEST(BoxFilter, SinglePixelSpreadsIntoATruncatedBlock) {
  auto dib = Uniform(5, 5, 0);
  dib->SetPixel({2, 2}, 0xFFFFFFFF);
  BlurSealImage(*dib, 1);
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 5; ++x) {
      const bool inBlock = x >= 1 && x <= 3 && y >= 1 && y <= 3;
      // 255/3 = 85 after the rows, 85/3 truncated to 28 after the columns.
      EXPECT_EQ(dib->GetPixel({x, y}), inBlock ? 0x1C1C1C1Cu : 0u) << x << "," << y;
    }
  }
}

TEST(BoxFilter, ChannelsAreBlurredApartAndEdgesRepeat) {
  // A left column of opaque red beside transparent white: along a row the
  // edge pixel repeats, so x = 0 keeps two thirds of its own value.
  auto dib = Uniform(4, 2, 0x00FFFFFF);
  for (int y = 0; y < 2; ++y) dib->SetPixel({0, y}, 0xFFFF0000);
  BlurSealImage(*dib, 1);
  const double third = 1.0 / 3;
  const auto level = [&](int own, int other, int weightOwn) {
    double s = 0.0;
    for (int k = 0; k < 3; ++k) s += (k < weightOwn ? own : other) * third;
    // The columns see three equal rows.
    return static_cast<uint32_t>(static_cast<int>(s * third + s * third + s * third));
  };
  const uint32_t a = level(255, 0, 2), r = level(255, 255, 3), gb = level(0, 255, 2);
  EXPECT_EQ(dib->GetPixel({0, 0}), a << 24 | r << 16 | gb << 8 | gb);
  EXPECT_EQ(dib->GetPixel({0, 1}), dib->GetPixel({0, 0}));
  EXPECT_EQ(dib->GetPixel({3, 0}), 0x00FFFFFFu);  // out of the red's reach
}

TEST(BoxFilter, RunRefusesRadiusBelowOneAndOtherFormatsStay) {
  filter::bitmap_t view;
  EXPECT_FALSE(filter::run(filter::box_kernel, filter::convolve, view, 0));

  auto rgb = host::Dib::Create(3, 3, host::kDibRgb24);
  rgb->SetPixel({1, 1}, 0xFFFFFFFF);
  BlurSealImage(*rgb, 1);
  EXPECT_EQ(rgb->GetPixel({1, 1}), 0xFFFFFFFFu);
  EXPECT_EQ(rgb->GetPixel({0, 0}), 0xFF000000u);
}

TEST(BoxFilter, NormalizeScalesOnlyKernelsThatDoNotAddUpToOne) {
  filter::filter_t mean;
  filter::box_kernel(&mean, 2);
  ASSERT_EQ(mean.count, 5);
  filter::normalize(mean);
  EXPECT_EQ(mean.data[0], 1.0 / 5);

  filter::filter_t uneven;
  filter::box_kernel(&uneven, 1);
  uneven.data[0] = uneven.data[1] = uneven.data[2] = 1.0;
  filter::normalize(uneven);
  EXPECT_EQ(uneven.data[1], 1.0 / 3);
}

}  // namespace
}  // namespace tarvik
