// The box blur: exactly the bytes of a straightforward convolution with
// repeated edges, truncated, on all four channels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "image/box_filter.h"

namespace tarvik {
namespace {

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
  // Radii below one leave the picture alone; radii past the row buffers take
  // the pixel-at-a-time way.
  for (int radius : {0, -2}) {
    const std::vector<uint8_t> noise = Noise(5 * 3 * 4, 9, false);
    auto dib = host::Dib::Create(5, 3, host::kDibArgb32);
    std::memcpy(dib->GetBuffer(), noise.data(), noise.size());
    BlurSealImage(*dib, radius);
    EXPECT_EQ(std::memcmp(dib->GetBuffer(), noise.data(), noise.size()), 0) << radius;
  }
  std::vector<uint8_t> expected = Noise(3 * 2 * 4, 7, false);
  auto dib = host::Dib::Create(3, 2, host::kDibArgb32);
  std::memcpy(dib->GetBuffer(), expected.data(), expected.size());
  std::vector<double> taps(2 * 5000 + 1, 1.0 / (2 * 5000 + 1));
  ReferenceConvolve(expected.data(), 3, 2, taps.data(), 5000);
  BlurSealImage(*dib, 5000);
  EXPECT_EQ(std::memcmp(dib->GetBuffer(), expected.data(), expected.size()), 0);
}

}  // namespace
}  // namespace tarvik
