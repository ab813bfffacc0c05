// The box blur: exact truncated results, repeated edges, all four channels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
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

namespace tarvik {
namespace {

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

struct Size2 {
  int w, h;
};

// Many sizes (rows shorter and longer than the vector blocks, images smaller
// than the radius) and radii, on noise and on sparse dots.
TEST(BoxFilter_Reference, BlurGivesTheReferenceBytesExactly) {
  const Size2 sizes[] = {{1, 1}, {1, 9}, {9, 1}, {3, 2}, {4, 4}, {5, 17}, {17, 5}, {33, 31}, {64, 3}, {130, 70}};
  for (const Size2 s : sizes) {
    for (int radius : {1, 2, 3, 4, 8, 20, 300}) {
      for (bool sparse : {false, true}) {
        std::vector<uint8_t> expected = Noise(static_cast<size_t>(s.w * s.h * 4), s.w * 131 + s.h + radius, sparse);
        auto dib = host::Dib::Create(s.w, s.h, host::kDibArgb32);
        std::memcpy(dib->GetBuffer(), expected.data(), expected.size());
        std::vector<double> taps(static_cast<size_t>(2 * radius + 1), 1.0 / (2 * radius + 1));
        ReferenceConvolve(expected.data(), s.w, s.h, taps.data(), radius);
        BlurSealImage(*dib, radius);
        ASSERT_EQ(std::memcmp(dib->GetBuffer(), expected.data(), expected.size()), 0)
            << s.w << "x" << s.h << " radius " << radius << (sparse ? " sparse" : "");
      }
    }
  }
  // Radii past the row buffers take the pixel-at-a-time way.
  std::vector<uint8_t> expected = Noise(3 * 2 * 4, 7, false);
  auto dib = host::Dib::Create(3, 2, host::kDibArgb32);
  std::memcpy(dib->GetBuffer(), expected.data(), expected.size());
  std::vector<double> taps(2 * 5000 + 1, 1.0 / (2 * 5000 + 1));
  ReferenceConvolve(expected.data(), 3, 2, taps.data(), 5000);
  BlurSealImage(*dib, 5000);
  EXPECT_EQ(std::memcmp(dib->GetBuffer(), expected.data(), expected.size()), 0);
}

// Any kernel: uneven, negative and over-one taps give the reference bytes,
// wrapping and capping included.
TEST(BoxFilter_Reference, AnyKernelGivesTheReferenceBytes) {
  const int w = 37, h = 23;
  const std::vector<std::vector<double>> kernels = {
      {0.25, 0.5, 0.25}, {-0.5, 2.0, -0.5}, {0.1, 0.2, 0.3, 0.2, 0.1}, {1.5, -0.25, 0.75}};
  for (const auto& taps : kernels) {
    std::vector<uint8_t> expected = Noise(w * h * 4, static_cast<uint32_t>(taps.size()), false);
    filter::bitmap_t view;
    std::vector<uint8_t> pixels = expected;
    view.pixels = pixels.data();
    view.width = w;
    view.height = h;
    filter::filter_t kernel;
    const long r = static_cast<long>(taps.size() / 2);
    filter::box_kernel(&kernel, r);
    std::copy(taps.begin(), taps.end(), kernel.data);
    filter::normalize(kernel);
    ReferenceConvolve(expected.data(), w, h, kernel.data, r);
    filter::convolve(view, kernel);
    EXPECT_EQ(pixels, expected) << taps.size() << " taps from " << taps[0];
  }
}

}  // namespace
}  // namespace tarvik
