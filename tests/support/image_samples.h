// Small pictures in every raster format, made in memory with the encoders
// directly, for codec tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace testing_support {

/// `v` as `bytes` bytes, least (Le) or most (Be) significant first.
std::string Le(uint32_t v, int bytes);
std::string Be(uint32_t v, int bytes);

/// Pixels as 0xAARRGGBB, row by row.
struct SampleImage {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> argb;
  uint32_t At(int x, int y) const { return argb[static_cast<size_t>(y) * width + x]; }
};

/// A colour gradient; with `alpha` the alpha varies across the columns
/// (including 0 and 255), otherwise it is opaque.
SampleImage GradientImage(int width, int height, bool alpha);
/// Pixels taken from a palette: entry (x + 3y) % size.
SampleImage PaletteImage(int width, int height, const std::vector<uint32_t>& palette);

/// Colour types of MakePng.
enum class PngKind { kRgb, kRgba, kGrey, kIndexed };
/// 8-bit PNG of `image`: colour, colour with alpha, the green channel as
/// grey, or indices into `palette` (an image whose pixels are all in
/// `palette`; a tRNS chunk is written when an entry is not opaque). Empty
/// when writing fails.
std::string MakePng(const SampleImage& image, PngKind kind, const std::vector<uint32_t>& palette = {});
/// The same PNG with the header's size replaced (checksum fixed up).
std::string WithPngSize(std::string png, uint32_t width, uint32_t height);

/// Baseline JPEG at quality 95, in colour or greyscale (the green channel).
std::string MakeJpeg(const SampleImage& image, bool grey);

/// One image of a GIF: indices into the global palette at the given place.
struct GifFrame {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  std::vector<uint8_t> indices;
  int transparent = -1;  // a transparent index, or -1
  bool interlaced = false;
};
/// GIF89a with a global palette (padded to a power of two) and the frames.
std::string MakeGif(int width, int height, const std::vector<uint32_t>& palette,
                    const std::vector<GifFrame>& frames);

/// BMP with an info header: 24 or 32 bits (bytes B G R x, alpha dropped) of
/// any image, or 8 bits of an image made by PaletteImage with `palette`.
std::string MakeBmp(const SampleImage& image, int bpp, bool topDown,
                    const std::vector<uint32_t>& palette = {});

/// TIFF, RGB or RGBA (unassociated alpha), deflated.
std::string MakeTiff(const SampleImage& image, bool alpha);

}  // namespace testing_support
