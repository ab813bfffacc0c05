#include "image/box_filter.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <cmath>
#include <cstring>
#include <new>
#include <vector>

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

namespace {

// Eight doubles side by side; operations act lane by lane, each lane
// rounding exactly as the same scalar operation would.
typedef double Lanes __attribute__((vector_size(64)));

#define TARVIK_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))

// out[i] = sum over k of sources[k][i] * taps[k], summed from 0.0 in tap
// order for every i: the arithmetic of one pixel channel in the scalar
// convolution, done for many channels at once.
TARVIK_CLONES void WeightedSum(const double* const* sources, const double* taps, int64_t n,
                               int64_t count, double* out) {
  constexpr int64_t kBlock = 32;  // four accumulators of eight lanes
  int64_t i = 0;
  for (; i + kBlock <= count; i += kBlock) {
    Lanes a0 = {}, a1 = {}, a2 = {}, a3 = {};
    for (int64_t k = 0; k < n; ++k) {
      const double* s = sources[k] + i;
      const double tap = taps[k];
      const Lanes t = {tap, tap, tap, tap, tap, tap, tap, tap};
      Lanes x0, x1, x2, x3;
      std::memcpy(&x0, s, sizeof x0);
      std::memcpy(&x1, s + 8, sizeof x1);
      std::memcpy(&x2, s + 16, sizeof x2);
      std::memcpy(&x3, s + 24, sizeof x3);
      a0 += x0 * t;
      a1 += x1 * t;
      a2 += x2 * t;
      a3 += x3 * t;
    }
    std::memcpy(out + i, &a0, sizeof a0);
    std::memcpy(out + i + 8, &a1, sizeof a1);
    std::memcpy(out + i + 16, &a2, sizeof a2);
    std::memcpy(out + i + 24, &a3, sizeof a3);
  }
  for (; i < count; ++i) {
    double sum = 0.0;
    for (int64_t k = 0; k < n; ++k) sum += sources[k][i] * taps[k];
    out[i] = sum;
  }
}

void ToDoublesScalar(const uint8_t* in, int64_t count, double* out) {
  for (int64_t i = 0; i < count; ++i) out[i] = in[i];
}

void ToBytesScalar(const double* in, int64_t count, uint8_t* out) {
  for (int64_t i = 0; i < count; ++i) out[i] = ToByte(in[i]);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void ToDoublesAvx2(const uint8_t* in, int64_t count, double* out) {
  int64_t i = 0;
  for (; i + 4 <= count; i += 4) {
    int32_t four;
    std::memcpy(&four, in + i, sizeof four);
    const __m128i ints = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(four));
    _mm256_storeu_pd(out + i, _mm256_cvtepi32_pd(ints));
  }
  ToDoublesScalar(in + i, count - i, out + i);
}

// ToByte on four lanes: truncated to int (as cvttsd2si does), 255 above 255,
// the low byte kept.
__attribute__((target("avx2"))) void ToBytesAvx2(const double* in, int64_t count, uint8_t* out) {
  int64_t i = 0;
  const __m256d limit = _mm256_set1_pd(255.0);
  const __m128i top = _mm_set1_epi32(255);
  const __m256i evens = _mm256_setr_epi32(0, 2, 4, 6, 0, 0, 0, 0);
  const __m128i lowBytes = _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  for (; i + 4 <= count; i += 4) {
    const __m256d d = _mm256_loadu_pd(in + i);
    const __m128i ints = _mm256_cvttpd_epi32(d);
    const __m256i over64 = _mm256_castpd_si256(_mm256_cmp_pd(d, limit, _CMP_GT_OQ));
    const __m128i over = _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(over64, evens));
    const __m128i capped = _mm_blendv_epi8(ints, top, over);
    const int32_t four = _mm_cvtsi128_si32(_mm_shuffle_epi8(capped, lowBytes));
    std::memcpy(out + i, &four, sizeof four);
  }
  ToBytesScalar(in + i, count - i, out + i);
}

const bool kHaveAvx2 = __builtin_cpu_supports("avx2");
#endif

void ToDoubles(const uint8_t* in, int64_t count, double* out) {
#if defined(__x86_64__)
  if (kHaveAvx2) return ToDoublesAvx2(in, count, out);
#endif
  ToDoublesScalar(in, count, out);
}

void ToBytes(const double* in, int64_t count, uint8_t* out) {
#if defined(__x86_64__)
  if (kHaveAvx2) return ToBytesAvx2(in, count, out);
#endif
  ToBytesScalar(in, count, out);
}

// The scalar convolution, for radii too large for the row buffers below.
void ConvolveScalar(bitmap_t& image, const filter_t& kernel) {
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

// Radii up to this use the row-buffered convolution.
constexpr int64_t kMaxBufferedRadius = 4096;

// The same sums as ConvolveScalar, a row at a time with the rows in cache:
// a row is widened to doubles with its edge pixels repeated r times on each
// side, so that tap k of every channel is the same distance away; the row
// sums go into a ring of the 2r + 1 (at most h) latest rows, from which each
// output row sums its column neighbours. False when memory is refused.
bool ConvolveBuffered(bitmap_t& image, const filter_t& kernel) {
  const int64_t w = image.width, h = image.height, r = kernel.radius, n = 2 * r + 1;
  const int64_t rowDoubles = w * 4, ringRows = n < h ? n : h;
  std::vector<double> padded, ring, sums;
  std::vector<const double*> sources;
  try {
    padded.resize(static_cast<size_t>((w + 2 * r) * 4));
    ring.resize(static_cast<size_t>(ringRows * rowDoubles));
    sums.resize(static_cast<size_t>(rowDoubles));
    sources.resize(static_cast<size_t>(n));
  } catch (const std::bad_alloc&) {
    return false;
  }
  const double* taps = kernel.data;  // taps[k + r] for k in -r .. r
  auto ringRow = [&](int64_t y) { return ring.data() + (y % ringRows) * rowDoubles; };
  // Row sums of image row y into the ring.
  auto sumRow = [&](int64_t y) {
    const uint8_t* row = image.pixels + y * rowDoubles;
    ToDoubles(row, rowDoubles, padded.data() + r * 4);
    for (int64_t e = 0; e < r; ++e) {
      std::memcpy(padded.data() + e * 4, padded.data() + r * 4, 4 * sizeof(double));
      std::memcpy(padded.data() + (r + w + e) * 4, padded.data() + (r + w - 1) * 4, 4 * sizeof(double));
    }
    for (int64_t k = 0; k < n; ++k) sources[static_cast<size_t>(k)] = padded.data() + k * 4;
    WeightedSum(sources.data(), taps, n, rowDoubles, ringRow(y));
  };
  int64_t summed = 0;  // rows 0 .. summed - 1 have their row sums made
  for (int64_t y = 0; y < h; ++y) {
    const int64_t need = y + r < h - 1 ? y + r : h - 1;
    while (summed <= need) sumRow(summed++);
    for (int64_t k = 0; k < n; ++k) sources[static_cast<size_t>(k)] = ringRow(Clamp(y + k - r, h - 1));
    WeightedSum(sources.data(), taps, n, rowDoubles, sums.data());
    ToBytes(sums.data(), rowDoubles, image.pixels + y * rowDoubles);
  }
  return true;
}

}  // namespace

void convolve(bitmap_t& image, filter_t& kernel) {
  if (kernel.count == 0 || !image.pixels || image.width < 1 || image.height < 1) return;
  normalize(kernel);
  if (image.count == 0) image.count = image.width * image.height;
  if (image.count >= kMaxPixels || image.count < image.width * image.height) return;
  if (kernel.radius <= kMaxBufferedRadius && ConvolveBuffered(image, kernel)) return;
  ConvolveScalar(image, kernel);
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
