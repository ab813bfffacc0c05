#include "image/box_filter.h"

#include <cmath>
#include <new>

namespace filter {
namespace {

// Sizes past these overflow the 32-bit byte counts the toolkit works with.
constexpr int64_t kMaxPixels = int64_t{1} << 27;
constexpr int64_t kMaxRadius = int64_t{1} << 28;

inline int64_t Clamp(int64_t v, int64_t last) { return v < 0 ? 0 : (v > last ? last : v); }

inline uint8_t ToByte(double sum) {
  return sum > 255.0 ? uint8_t{255} : static_cast<uint8_t>(static_cast<int>(sum));
}

}  // namespace

void box_kernel(filter_t* storage, long radius) {
  if (radius < 0 || radius >= kMaxRadius) return;
  const int64_t n = 2 * static_cast<int64_t>(radius) + 1;
  if (!storage->reset(n, static_cast<uint32_t>(n * sizeof(double)))) return;
  const double tap = 1.0 / static_cast<double>(n);
  for (int64_t i = 0; i < n; ++i) storage->data[i] = tap;
  storage->radius = radius;
}

void normalize(filter_t& kernel) {
  if (kernel.count == 0) return;
  double sum = 0.0;
  for (int64_t i = 0; i < kernel.count; ++i) sum += kernel.data[i];
  if (std::fabs(sum - 1.0) < 1e-6) return;
  for (int64_t i = 0; i < kernel.count; ++i) kernel.data[i] /= sum;
}

void convolve(bitmap_t& image, filter_t& kernel) {
  if (kernel.count == 0 || !image.pixels || image.width < 1 || image.height < 1) return;
  normalize(kernel);
  if (image.count == 0) image.count = image.width * image.height;
  if (image.count >= kMaxPixels || image.count < image.width * image.height) return;
  auto_t<bitmap_t::buff_t, alloc_t> scratch;
  if (!scratch.reset(image.count, static_cast<uint32_t>(image.count * sizeof(bitmap_t::buff_t)))) {
    return;
  }
  const int64_t w = image.width, h = image.height, r = kernel.radius;
  const double* taps = kernel.data + r;  // taps[k] for k in -r .. r

  // Rows: image -> scratch.
  for (int64_t y = 0; y < h; ++y) {
    const uint8_t* row = image.pixels + y * w * 4;
    bitmap_t::buff_t* out = scratch.data + y * w;
    for (int64_t x = 0; x < w; ++x) {
      double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
      for (int64_t k = -r; k <= r; ++k) {
        const uint8_t* p = row + Clamp(x + k, w - 1) * 4;
        const double t = taps[k];
        s0 += p[0] * t;
        s1 += p[1] * t;
        s2 += p[2] * t;
        s3 += p[3] * t;
      }
      out[x].ch[0] = s0;
      out[x].ch[1] = s1;
      out[x].ch[2] = s2;
      out[x].ch[3] = s3;
    }
  }
  // Columns: scratch -> image.
  for (int64_t y = 0; y < h; ++y) {
    uint8_t* row = image.pixels + y * w * 4;
    for (int64_t x = 0; x < w; ++x) {
      double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
      for (int64_t k = -r; k <= r; ++k) {
        const bitmap_t::buff_t& p = scratch.data[Clamp(y + k, h - 1) * w + x];
        const double t = taps[k];
        s0 += p.ch[0] * t;
        s1 += p.ch[1] * t;
        s2 += p.ch[2] * t;
        s3 += p.ch[3] * t;
      }
      row[x * 4 + 0] = ToByte(s0);
      row[x * 4 + 1] = ToByte(s1);
      row[x * 4 + 2] = ToByte(s2);
      row[x * 4 + 3] = ToByte(s3);
    }
  }
}

bool run(builder_fn builder, apply_fn apply, bitmap_t& image, long radius) {
  if (radius < 1) return false;
  filter_t kernel;  // its destructor frees the taps on every way out
  builder(&kernel, radius);
  apply(image, kernel);
  return true;
}

}  // namespace filter

namespace tarvik {

void BlurSealImage(host::Dib& dib, int radius) {
  if (dib.GetFormat() != host::kDibArgb32 || dib.GetPitch() != dib.GetWidth() * 4) return;
  filter::bitmap_t view;
  view.pixels = dib.GetBuffer();
  view.width = dib.GetWidth();
  view.height = dib.GetHeight();
  view.count = 0;
  filter::run(filter::box_kernel, filter::convolve, view, static_cast<long>(radius));
}

}  // namespace tarvik
