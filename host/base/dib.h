// Device-independent bitmaps.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/memory.h"

namespace host {

class DibDeviceCache;

/// Pixel formats. Values 2 and 7 are fixed by the seal library's contract.
enum DibFormat : int {
  kDibInvalid = 0,
  /// 8 bits per pixel, an index into a palette of up to 256 colours.
  kDibIndexed8 = 2,
  /// 24 bits per pixel, bytes B, G, R; rows padded to 4 bytes.
  kDibRgb24 = 4,
  /// 32 bits per pixel, one 0xAARRGGBB value stored little-endian
  /// (bytes B, G, R, A), straight (not premultiplied) alpha; pitch = 4 x width.
  kDibArgb32 = 7,
};

/// Largest side and pixel count a Dib may have. Decoders refuse larger
/// pictures before they allocate anything.
inline constexpr int kMaxDibSide = 16384;
inline constexpr int64_t kMaxDibPixels = int64_t{1} << 26;  // 64 Mpx (256 MiB at 32 bpp)

/// True when a bitmap of this size is allowed (both sides in 1..kMaxDibSide
/// and the product within kMaxDibPixels).
HOST_API bool IsDibSizeAllowed(int64_t width, int64_t height);

/// A bitmap that owns its pixels and palette. Not thread-safe for writes;
/// concurrent reads are safe.
class HOST_API Dib {
 public:
  /// A new bitmap filled with zero bytes (palette entries 0), or null when the
  /// size is not allowed, the format is unknown or memory runs out.
  static std::unique_ptr<Dib> Create(int width, int height, DibFormat format);
  /// As Create, but the pixel bytes are left unwritten, for a caller that
  /// writes every one of them next (a decoder, a copy).
  static std::unique_ptr<Dib> CreateUnfilled(int width, int height, DibFormat format) {
    return Allocate(width, height, format);
  }
  virtual ~Dib();
  Dib(const Dib&) = delete;
  Dib& operator=(const Dib&) = delete;

  int GetWidth() const { return width_; }
  int GetHeight() const { return height_; }
  /// Bytes per row.
  int GetPitch() const { return pitch_; }
  int GetBPP() const { return bpp_; }
  DibFormat GetFormat() const { return format_; }
  uint8_t* GetBuffer() {
    DropDeviceData();
    return pixels_.get();
  }
  const uint8_t* GetBuffer() const { return pixels_.get(); }
  uint8_t* GetScanline(int y) {
    DropDeviceData();
    return pixels_.get() + static_cast<size_t>(y) * pitch_;
  }
  const uint8_t* GetScanline(int y) const { return pixels_.get() + static_cast<size_t>(y) * pitch_; }

  /// Lets devices keep what they derive from these pixels (a converted copy)
  /// with the bitmap and its whole clones, until either is changed: any
  /// non-const access to pixels or palette drops it. For bitmaps drawn many
  /// times unchanged, such as cached seal pictures.
  void KeepDeviceData();
  /// The store of device data; null unless kept.
  const std::shared_ptr<DibDeviceCache>& GetDeviceCache() const { return deviceCache_; }

  /// A copy of the whole bitmap, or of `rect` clipped to it; null when the
  /// clipped area is empty or memory runs out. Caller owns the result.
  std::unique_ptr<Dib> Clone(const Rect* rect = nullptr) const;
  /// A copy converted to `format` (of the whole bitmap or of `rect`); null on
  /// failure. Converting to kDibIndexed8 keeps an indexed bitmap's palette
  /// and otherwise builds a palette of the distinct colours (null when there
  /// are more than 256).
  std::unique_ptr<Dib> CloneConvert(DibFormat format, const Rect* rect = nullptr) const;

  /// The colour at `p` as 0xAARRGGBB (24-bit pixels read as opaque); 0 outside.
  uint32_t GetPixel(Point p) const;
  /// Stores 0xAARRGGBB at `p`; ignored outside. An indexed bitmap stores the
  /// index of the nearest palette colour.
  void SetPixel(Point p, uint32_t argb);

  /// Number of palette entries (0 unless indexed).
  int GetPaletteSize() const { return static_cast<int>(palette_.size()); }
  uint32_t GetPaletteEntry(int i) const;
  void SetPaletteEntry(int i, uint32_t argb);
  /// Replaces the palette (indexed bitmaps only; at most 256 entries).
  bool SetPalette(const uint32_t* entries, int count);
  const uint32_t* GetPalette() const { return palette_.data(); }

  /// Fills every pixel with `argb` (indexed: with the nearest palette index).
  void Fill(uint32_t argb);

 private:
  Dib() = default;
  // A bitmap whose pixel bytes are not yet written; null when refused.
  static std::unique_ptr<Dib> Allocate(int width, int height, DibFormat format);
  size_t ByteCount() const { return static_cast<size_t>(pitch_) * height_; }
  void DropDeviceData() {
    if (deviceCache_) deviceCache_.reset();
  }

  int width_ = 0;
  int height_ = 0;
  int pitch_ = 0;
  int bpp_ = 0;
  DibFormat format_ = kDibInvalid;
  std::unique_ptr<uint8_t, FreeMemoryDeleter> pixels_;  // from AllocMemory
  std::vector<uint32_t> palette_;
  std::shared_ptr<DibDeviceCache> deviceCache_;
};

/// Bits per pixel of a format, or 0 for an unknown one.
HOST_API int DibFormatBpp(DibFormat format);

}  // namespace host
