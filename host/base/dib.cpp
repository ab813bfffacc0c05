#include "host/base/dib.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <unordered_map>

#include "host/base/dib_device_cache.h"

namespace host {

namespace {

constexpr uint32_t kOpaque = 0xFF000000u;

int PitchFor(int width, int bpp) {
  // Rows are padded to 4 bytes; 32-bit rows are 4 x width by construction.
  return static_cast<int>((static_cast<int64_t>(width) * bpp + 31) / 32 * 4);
}

uint32_t ReadArgb32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
         static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

void WriteArgb32(uint8_t* p, uint32_t argb) {
  p[0] = static_cast<uint8_t>(argb);
  p[1] = static_cast<uint8_t>(argb >> 8);
  p[2] = static_cast<uint8_t>(argb >> 16);
  p[3] = static_cast<uint8_t>(argb >> 24);
}

uint32_t ReadRgb24(const uint8_t* p) {
  return kOpaque | static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
         static_cast<uint32_t>(p[2]) << 16;
}

void WriteRgb24(uint8_t* p, uint32_t argb) {
  p[0] = static_cast<uint8_t>(argb);
  p[1] = static_cast<uint8_t>(argb >> 8);
  p[2] = static_cast<uint8_t>(argb >> 16);
}

// Index of the palette colour closest to `argb` (squared distance over the
// four channels); 0 for an empty palette.
int NearestIndex(const std::vector<uint32_t>& palette, uint32_t argb) {
  int best = 0;
  int64_t bestDistance = INT64_MAX;
  for (size_t i = 0; i < palette.size(); ++i) {
    int64_t d = 0;
    for (int shift = 0; shift < 32; shift += 8) {
      const int c = static_cast<int>((palette[i] >> shift) & 0xFF) -
                    static_cast<int>((argb >> shift) & 0xFF);
      d += static_cast<int64_t>(c) * c;
    }
    if (d < bestDistance) {
      bestDistance = d;
      best = static_cast<int>(i);
      if (d == 0) break;
    }
  }
  return best;
}

// The area `rect` selects from a width x height bitmap (the whole bitmap when
// null), clipped; empty when nothing is left.
Rect ClippedArea(const Rect* rect, int width, int height) {
  if (!rect) return Rect(0, 0, width, height);
  Rect r(std::max(rect->left, 0), std::max(rect->top, 0), std::min(rect->right, width),
         std::min(rect->bottom, height));
  if (r.IsEmpty()) return Rect();
  return r;
}

}  // namespace

int DibFormatBpp(DibFormat format) {
  switch (format) {
    case kDibIndexed8:
      return 8;
    case kDibRgb24:
      return 24;
    case kDibArgb32:
      return 32;
    default:
      return 0;
  }
}

bool IsDibSizeAllowed(int64_t width, int64_t height) {
  return width >= 1 && height >= 1 && width <= kMaxDibSide && height <= kMaxDibSide &&
         width * height <= kMaxDibPixels;
}

Dib::~Dib() = default;

std::unique_ptr<Dib> Dib::Allocate(int width, int height, DibFormat format) {
  const int bpp = DibFormatBpp(format);
  if (bpp == 0 || !IsDibSizeAllowed(width, height)) return nullptr;
  std::unique_ptr<Dib> dib(new (std::nothrow) Dib());
  if (!dib) return nullptr;
  dib->width_ = width;
  dib->height_ = height;
  dib->bpp_ = bpp;
  dib->pitch_ = PitchFor(width, bpp);
  dib->format_ = format;
  // Left uninitialised: a copy overwrites every byte at once.
  dib->pixels_.reset(static_cast<uint8_t*>(AllocMemory(dib->ByteCount())));
  if (!dib->pixels_) return nullptr;
  try {
    if (format == kDibIndexed8) dib->palette_.assign(256, 0);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return dib;
}

std::unique_ptr<Dib> Dib::Create(int width, int height, DibFormat format) {
  std::unique_ptr<Dib> dib = Allocate(width, height, format);
  if (dib) std::memset(dib->pixels_.get(), 0, dib->ByteCount());
  return dib;
}

std::unique_ptr<Dib> Dib::Clone(const Rect* rect) const {
  const Rect area = ClippedArea(rect, width_, height_);
  if (area.IsEmpty()) return nullptr;
  if (area.Width() == width_ && area.Height() == height_) {
    // The whole bitmap: one block copy, pitch included.
    auto copy = Allocate(width_, height_, format_);
    if (!copy) return nullptr;
    copy->palette_ = palette_;
    std::memcpy(copy->pixels_.get(), pixels_.get(), ByteCount());
    copy->deviceCache_ = deviceCache_;  // the same pixels
    return copy;
  }
  auto copy = Create(area.Width(), area.Height(), format_);
  if (!copy) return nullptr;
  copy->palette_ = palette_;
  const size_t bytesPerPixel = static_cast<size_t>(bpp_ / 8);
  const size_t rowBytes = bytesPerPixel * area.Width();
  for (int y = 0; y < area.Height(); ++y) {
    std::copy_n(GetScanline(area.top + y) + bytesPerPixel * area.left, rowBytes,
                copy->GetScanline(y));
  }
  return copy;
}

std::unique_ptr<Dib> Dib::CloneConvert(DibFormat format, const Rect* rect) const {
  if (format == format_) return Clone(rect);
  if (DibFormatBpp(format) == 0) return nullptr;
  const Rect area = ClippedArea(rect, width_, height_);
  if (area.IsEmpty()) return nullptr;
  auto copy = Create(area.Width(), area.Height(), format);
  if (!copy) return nullptr;

  if (format == kDibIndexed8) {
    // Build a palette of the distinct colours, in order of first appearance.
    std::unordered_map<uint32_t, uint8_t> indexOf;
    std::vector<uint32_t> palette;
    for (int y = 0; y < area.Height(); ++y) {
      uint8_t* out = copy->GetScanline(y);
      for (int x = 0; x < area.Width(); ++x) {
        const uint32_t argb = GetPixel(Point(area.left + x, area.top + y));
        auto it = indexOf.find(argb);
        if (it == indexOf.end()) {
          if (palette.size() == 256) return nullptr;
          it = indexOf.emplace(argb, static_cast<uint8_t>(palette.size())).first;
          palette.push_back(argb);
        }
        out[x] = it->second;
      }
    }
    copy->palette_.assign(256, 0);
    std::copy(palette.begin(), palette.end(), copy->palette_.begin());
    return copy;
  }

  for (int y = 0; y < area.Height(); ++y) {
    const uint8_t* in = GetScanline(area.top + y);
    uint8_t* out = copy->GetScanline(y);
    for (int x = 0; x < area.Width(); ++x) {
      const int sx = area.left + x;
      uint32_t argb;
      switch (format_) {
        case kDibIndexed8:
          argb = palette_[in[sx]];
          break;
        case kDibRgb24:
          argb = ReadRgb24(in + 3 * sx);
          break;
        default:
          argb = ReadArgb32(in + 4 * sx);
          break;
      }
      if (format == kDibRgb24) {
        WriteRgb24(out + 3 * x, argb);
      } else {
        WriteArgb32(out + 4 * x, argb);
      }
    }
  }
  return copy;
}

uint32_t Dib::GetPixel(Point p) const {
  if (p.x < 0 || p.y < 0 || p.x >= width_ || p.y >= height_) return 0;
  const uint8_t* row = GetScanline(p.y);
  switch (format_) {
    case kDibIndexed8:
      return palette_[row[p.x]];
    case kDibRgb24:
      return ReadRgb24(row + 3 * p.x);
    case kDibArgb32:
      return ReadArgb32(row + 4 * p.x);
    default:
      return 0;
  }
}

void Dib::SetPixel(Point p, uint32_t argb) {
  if (p.x < 0 || p.y < 0 || p.x >= width_ || p.y >= height_) return;
  uint8_t* row = GetScanline(p.y);
  switch (format_) {
    case kDibIndexed8:
      row[p.x] = static_cast<uint8_t>(NearestIndex(palette_, argb));
      break;
    case kDibRgb24:
      WriteRgb24(row + 3 * p.x, argb);
      break;
    case kDibArgb32:
      WriteArgb32(row + 4 * p.x, argb);
      break;
    default:
      break;
  }
}

uint32_t Dib::GetPaletteEntry(int i) const {
  if (i < 0 || i >= GetPaletteSize()) return 0;
  return palette_[static_cast<size_t>(i)];
}

void Dib::KeepDeviceData() {
  if (!deviceCache_) deviceCache_ = std::make_shared<DibDeviceCache>();
}

void Dib::SetPaletteEntry(int i, uint32_t argb) {
  if (i < 0 || i >= GetPaletteSize()) return;
  DropDeviceData();
  palette_[static_cast<size_t>(i)] = argb;
}

bool Dib::SetPalette(const uint32_t* entries, int count) {
  if (format_ != kDibIndexed8 || count < 0 || count > 256 || (count > 0 && !entries)) return false;
  DropDeviceData();
  // The palette always has 256 slots so that every index byte is valid.
  std::fill(palette_.begin(), palette_.end(), 0u);
  std::copy_n(entries, count, palette_.begin());
  return true;
}

void Dib::Fill(uint32_t argb) {
  if (format_ == kDibIndexed8) {
    std::memset(pixels_.get(), NearestIndex(palette_, argb), ByteCount());
    return;
  }
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) SetPixel(Point(x, y), argb);
  }
}

}  // namespace host
