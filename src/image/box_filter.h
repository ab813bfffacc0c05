// A small convolution toolkit: one-dimensional kernels applied to 32-bit
// pixels in two separable passes, with edge pixels repeated beyond the
// borders. Used to soften seal pictures with a mean (box) kernel.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "host/base/dib.h"
#include "host/base/memory.h"

namespace filter {

/// Allocation policy: the host's memory functions, nothing else.
struct alloc_t {
  static void* allocate(size_t bytes) { return host::AllocMemory(bytes); }
  static void release(void* p) { host::FreeMemory(p); }
};

/// An owning array of `count` elements (null data when empty).
template <class T, class Alloc>
class auto_t {
 public:
  auto_t() = default;
  auto_t(const auto_t&) = delete;
  auto_t& operator=(const auto_t&) = delete;
  virtual ~auto_t() {
    if (data) Alloc::release(data);
  }

  /// Makes room for `n` value-initialised elements; false (and empty) when
  /// the memory is refused. `bytes` is the size to ask for.
  bool reset(int64_t n, size_t bytes) {
    if (data) Alloc::release(data);
    data = nullptr;
    count = 0;
    void* p = Alloc::allocate(bytes);
    if (!p) return false;
    data = static_cast<T*>(p);
    for (int64_t i = 0; i < n; ++i) new (&data[i]) T();
    count = n;
    return true;
  }

  T* data = nullptr;
  int64_t count = 0;
};

/// A one-dimensional kernel of 2 x radius + 1 taps; tap k (-radius .. radius)
/// is data[k + radius].
class filter_t : public auto_t<double, alloc_t> {
 public:
  int64_t radius = 0;
};

/// A view of 32-bit pixels (four channels treated alike), rows of exactly
/// 4 x width bytes. Owns nothing.
struct bitmap_t {
  /// One working pixel: an accumulator per channel.
  struct buff_t {
    double ch[4] = {0.0, 0.0, 0.0, 0.0};
  };
  uint8_t* pixels = nullptr;
  int64_t width = 0;
  int64_t height = 0;
  int64_t count = 0;  // pixels; 0 until the convolution stores width x height
};

using builder_fn = void (*)(filter_t* storage, long radius);
using apply_fn = void (*)(bitmap_t& image, filter_t& kernel);

/// The mean kernel: 2r + 1 taps of 1.0 / (2r + 1). Leaves the kernel empty
/// when its memory is refused.
void box_kernel(filter_t* storage, long radius);

/// Scales the taps to add up to 1 unless they already do within 1e-6.
void normalize(filter_t& kernel);

/// Blurs `image` in place: rows, then columns, sums in double precision in
/// tap order, results truncated and capped at 255. Does nothing with an
/// empty kernel, or when the scratch memory (32 bytes per pixel) is refused.
void convolve(bitmap_t& image, filter_t& kernel);

/// Builds a kernel for `radius`, applies it and frees it. False (image
/// untouched) when radius < 1.
bool run(builder_fn builder, apply_fn apply, bitmap_t& image, long radius);

}  // namespace filter

namespace tarvik {

/// Box-blurs a format-7 bitmap in place with the given radius in pixels.
/// A radius below 1, or a bitmap of another format, is left unchanged.
/// Not thread-safe for one bitmap.
void BlurSealImage(host::Dib& dib, int radius);

}  // namespace tarvik
