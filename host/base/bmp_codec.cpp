// BMP decoding: core, info and V4/V5 headers; 1, 4 and 8 bits per pixel
// paletted (uncompressed or run-length encoded), 16 and 32 bits with default
// or explicit channel masks, 24 bits.
#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "host/base/codec_internal.h"

namespace host {

namespace {

enum : uint32_t { kBiRgb = 0, kBiRle8 = 1, kBiRle4 = 2, kBiBitfields = 3, kBiAlphaBitfields = 6 };

constexpr size_t kFileHeaderSize = 14;

uint32_t U16(const uint8_t* p) { return p[0] | static_cast<uint32_t>(p[1]) << 8; }
uint32_t U32(const uint8_t* p) { return U16(p) | U16(p + 2) << 16; }

// One channel of a 16- or 32-bit pixel, widened to 8 bits.
struct Channel {
  uint32_t mask = 0;
  int shift = 0;
  uint32_t max = 0;

  explicit Channel(uint32_t m) : mask(m) {
    if (!m) return;
    shift = std::countr_zero(m);
    max = m >> shift;
  }
  uint8_t Get(uint32_t pixel) const {
    if (!mask) return 0;
    const uint64_t v = (pixel & mask) >> shift;
    return static_cast<uint8_t>((v * 255 + max / 2) / max);
  }
};

struct BmpInfo {
  int64_t width = 0;
  int64_t height = 0;
  bool topDown = false;
  int bpp = 0;
  uint32_t compression = kBiRgb;
  uint32_t colorsUsed = 0;
  size_t paletteOffset = 0;
  int paletteEntrySize = 4;
  uint32_t masks[4] = {};  // red, green, blue, alpha
};

bool ParseHeader(const uint8_t* data, size_t size, BmpInfo& info) {
  if (size < kFileHeaderSize + 12 || data[0] != 'B' || data[1] != 'M') return false;
  const uint8_t* h = data + kFileHeaderSize;
  const uint32_t headerSize = U32(h);
  if (headerSize > size - kFileHeaderSize) return false;
  info.paletteOffset = kFileHeaderSize + headerSize;
  if (headerSize == 12) {  // core header: 16-bit sizes, 3-byte palette entries
    info.width = U16(h + 4);
    info.height = U16(h + 6);
    info.bpp = static_cast<int>(U16(h + 10));
    info.paletteEntrySize = 3;
    return true;
  }
  if (headerSize < 40) return false;
  info.width = static_cast<int32_t>(U32(h + 4));
  const int32_t height = static_cast<int32_t>(U32(h + 8));
  info.topDown = height < 0;
  info.height = height < 0 ? -int64_t{height} : height;
  info.bpp = static_cast<int>(U16(h + 14));
  info.compression = U32(h + 16);
  info.colorsUsed = U32(h + 32);
  const bool bitfields = info.compression == kBiBitfields || info.compression == kBiAlphaBitfields;
  // The 64-byte header of the other BMP family numbers its compressions
  // differently from 3 on: refuse rather than misread.
  if (headerSize == 64 && info.compression >= kBiBitfields) return false;
  if (!bitfields) return true;
  if (headerSize >= 52) {
    const int count = headerSize >= 56 ? 4 : 3;
    for (int i = 0; i < count; ++i) info.masks[i] = U32(h + 40 + 4 * i);
    return true;
  }
  // An info header is followed by the masks.
  const int count = info.compression == kBiAlphaBitfields ? 4 : 3;
  if (size - info.paletteOffset < 4 * static_cast<size_t>(count)) return false;
  for (int i = 0; i < count; ++i) info.masks[i] = U32(data + info.paletteOffset + 4 * i);
  info.paletteOffset += 4 * static_cast<size_t>(count);
  return true;
}

// Expands run-length encoded rows (bottom-up) into `dib`; false when the data
// ends before the end-of-bitmap marker.
bool DecodeRle(const uint8_t* p, const uint8_t* end, bool rle8, Dib& dib) {
  const int width = dib.GetWidth();
  const int height = dib.GetHeight();
  int x = 0;
  int y = 0;
  auto put = [&](int index) {
    if (x < width && y < height) dib.GetScanline(height - 1 - y)[x] = static_cast<uint8_t>(index);
    ++x;
  };
  while (end - p >= 2) {
    const int count = p[0];
    const int value = p[1];
    p += 2;
    if (count > 0) {
      for (int i = 0; i < count; ++i) put(rle8 ? value : (i & 1) ? value & 0xF : value >> 4);
    } else if (value == 0) {  // end of line
      x = 0;
      ++y;
    } else if (value == 1) {  // end of bitmap
      return true;
    } else if (value == 2) {  // delta
      if (end - p < 2) return false;
      x += p[0];
      y += p[1];
      p += 2;
    } else {  // literal run, padded to an even byte count
      const size_t bytes = rle8 ? value : (value + 1) / 2;
      if (static_cast<size_t>(end - p) < bytes) return false;
      for (int i = 0; i < value; ++i) put(rle8 ? p[i] : (i & 1) ? p[i / 2] & 0xF : p[i / 2] >> 4);
      p += std::min(static_cast<size_t>(end - p), (bytes + 1) & ~size_t{1});
    }
    if (y >= height) return true;
  }
  return false;
}

}  // namespace

std::unique_ptr<Dib> DecodeBmp(const uint8_t* data, size_t size) {
  BmpInfo info;
  if (!ParseHeader(data, size, info)) return nullptr;
  if (!IsDibSizeAllowed(info.width, info.height)) return nullptr;
  const int width = static_cast<int>(info.width);
  const int height = static_cast<int>(info.height);
  const int bpp = info.bpp;
  const uint32_t compression = info.compression;
  const bool rle = compression == kBiRle8 || compression == kBiRle4;
  switch (bpp) {
    case 1:
    case 4:
    case 8:
      if (compression != kBiRgb && !(bpp == 8 && compression == kBiRle8) &&
          !(bpp == 4 && compression == kBiRle4)) {
        return nullptr;
      }
      if (rle && info.topDown) return nullptr;
      break;
    case 16:
    case 32:
      if (compression != kBiRgb && compression != kBiBitfields && compression != kBiAlphaBitfields) {
        return nullptr;
      }
      break;
    case 24:
      if (compression != kBiRgb) return nullptr;
      break;
    default:
      return nullptr;
  }

  const uint32_t pixelOffset = U32(data + 10);
  if (pixelOffset >= size) return nullptr;
  const uint8_t* end = data + size;
  const size_t stride = (static_cast<size_t>(width) * bpp + 31) / 32 * 4;
  const size_t rowBytes = (static_cast<size_t>(width) * bpp + 7) / 8;
  if (!rle && size - pixelOffset < stride * (height - 1) + rowBytes) return nullptr;
  auto fileRow = [&](int y) { return data + pixelOffset + stride * (info.topDown ? y : height - 1 - y); };

  if (bpp <= 8) {
    const size_t maxColors = size_t{1} << bpp;
    size_t count = info.colorsUsed ? std::min<size_t>(info.colorsUsed, maxColors) : maxColors;
    // Some writers store fewer entries than the depth allows: trust the layout.
    if (pixelOffset > info.paletteOffset) {
      count = std::min<size_t>(count, (pixelOffset - info.paletteOffset) / info.paletteEntrySize);
    }
    if (info.paletteOffset > size || (size - info.paletteOffset) / info.paletteEntrySize < count) return nullptr;
    uint32_t palette[256];
    for (size_t i = 0; i < count; ++i) {
      const uint8_t* e = data + info.paletteOffset + i * info.paletteEntrySize;
      palette[i] = 0xFF000000u | static_cast<uint32_t>(e[2]) << 16 | static_cast<uint32_t>(e[1]) << 8 | e[0];
    }
    auto dib = Dib::Create(width, height, kDibIndexed8);
    if (!dib) return nullptr;
    SetPaddedPalette(*dib, palette, static_cast<int>(count));
    if (rle) {
      if (!DecodeRle(data + pixelOffset, end, compression == kBiRle8, *dib)) return nullptr;
      return dib;
    }
    const int perByte = 8 / bpp;
    const int mask = (1 << bpp) - 1;
    for (int y = 0; y < height; ++y) {
      const uint8_t* in = fileRow(y);
      uint8_t* out = dib->GetScanline(y);
      for (int x = 0; x < width; ++x) {
        const int shift = bpp * (perByte - 1 - x % perByte);
        out[x] = static_cast<uint8_t>((in[x / perByte] >> shift) & mask);
      }
    }
    return dib;
  }

  if (bpp == 24) {
    auto dib = Dib::Create(width, height, kDibRgb24);
    if (!dib) return nullptr;
    for (int y = 0; y < height; ++y) std::memcpy(dib->GetScanline(y), fileRow(y), rowBytes);
    return dib;
  }

  uint32_t* masks = info.masks;
  if (compression == kBiRgb) {
    static constexpr uint32_t k16[4] = {0x7C00, 0x03E0, 0x001F, 0};
    static constexpr uint32_t k32[4] = {0xFF0000, 0xFF00, 0xFF, 0};
    std::copy_n(bpp == 16 ? k16 : k32, 4, masks);
  }
  const Channel red(masks[0]), green(masks[1]), blue(masks[2]), alpha(masks[3]);
  auto dib = Dib::Create(width, height, alpha.mask ? kDibArgb32 : kDibRgb24);
  if (!dib) return nullptr;
  const int outBytes = alpha.mask ? 4 : 3;
  bool anyAlpha = false;
  bool allOpaque = true;
  for (int y = 0; y < height; ++y) {
    const uint8_t* in = fileRow(y);
    uint8_t* out = dib->GetScanline(y);
    for (int x = 0; x < width; ++x, out += outBytes) {
      const uint32_t pixel = bpp == 16 ? U16(in + 2 * x) : U32(in + 4 * x);
      out[0] = blue.Get(pixel);
      out[1] = green.Get(pixel);
      out[2] = red.Get(pixel);
      if (outBytes == 4) {
        out[3] = alpha.Get(pixel);
        anyAlpha |= out[3] != 0;
        allOpaque &= out[3] == 0xFF;
      }
    }
  }
  if (!alpha.mask) return dib;
  // An alpha mask over all-zero or all-opaque samples means an opaque picture.
  if (anyAlpha && !allOpaque) return dib;
  auto opaque = Dib::Create(width, height, kDibRgb24);
  if (!opaque) return nullptr;
  for (int y = 0; y < height; ++y) {
    const uint8_t* in = dib->GetScanline(y);
    uint8_t* out = opaque->GetScanline(y);
    for (int x = 0; x < width; ++x) std::memcpy(out + 3 * x, in + 4 * x, 3);
  }
  return opaque;
}

}  // namespace host
