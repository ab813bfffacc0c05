#include "host/base/codec.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "host/base/codec_internal.h"

namespace host {

namespace {

// Largest encoded picture read into memory.
constexpr uint64_t kMaxEncodedSize = uint64_t{256} << 20;

ImageFormat SniffFormat(const uint8_t* p, size_t n) {
  auto starts = [&](const char* magic, size_t len) {
    return n >= len && std::memcmp(p, magic, len) == 0;
  };
  if (starts("\x89PNG\r\n\x1a\n", 8)) return kImagePng;
  if (starts("\xFF\xD8\xFF", 3)) return kImageJpeg;
  if (starts("GIF87a", 6) || starts("GIF89a", 6)) return kImageGif;
  if (starts("II*\0", 4) || starts("MM\0*", 4)) return kImageTiff;
  if (starts("\x97JB2\r\n\x1a\n", 8)) return kImageJbig2;
  if (starts("BM", 2)) return kImageBmp;
  return kImageUnknown;
}

std::unique_ptr<Dib> Decode(ImageFormat format, const uint8_t* data, size_t size, int frame,
                            Size minSize, bool* reduced) {
  switch (format) {
    case kImageBmp:
      return frame == 0 ? DecodeBmp(data, size) : nullptr;
    case kImageJpeg:
      return frame == 0 ? DecodeJpeg(data, size, minSize, reduced) : nullptr;
    case kImagePng:
      return frame == 0 ? DecodePng(data, size) : nullptr;
    case kImageGif:
      return DecodeGif(data, size, frame);
    case kImageTiff:
      return DecodeTiff(data, size, frame);
    case kImageJbig2:
      return frame == 0 ? DecodeJbig2(data, size) : nullptr;
    default:
      return nullptr;
  }
}

// The picture in `reader`, whole unless a JPEG may be reduced to `minSize`.
std::unique_ptr<Dib> Load(StreamReader* reader, ImageFormat format, int frame, Size minSize,
                          bool* reduced) {
  if (!reader || frame < 0) return nullptr;
  const uint64_t size = reader->GetSize();
  if (size == 0 || size > kMaxEncodedSize) return nullptr;

  const uint8_t* data = reader->GetBuffer();
  std::vector<uint8_t> copy;
  if (!data) {
    try {
      copy.resize(static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    if (reader->ReadBlock(copy.data(), 0, copy.size()) != copy.size()) return nullptr;
    data = copy.data();
  }

  if (format == kImageUnknown) format = SniffFormat(data, static_cast<size_t>(size));
  return Decode(format, data, static_cast<size_t>(size), frame, minSize, reduced);
}

}  // namespace

bool SetPaddedPalette(Dib& dib, const uint32_t* entries, int count) {
  uint32_t palette[256];
  count = std::clamp(count, 0, 256);
  std::fill(std::copy_n(entries, count, palette), palette + 256, 0xFF000000u);
  return dib.SetPalette(palette, 256);
}

void SetGreyPalette(Dib& dib) {
  uint32_t palette[256];
  for (uint32_t i = 0; i < 256; ++i) palette[i] = 0xFF000000u | i << 16 | i << 8 | i;
  dib.SetPalette(palette, 256);
}

ImageFormat GetImageFormat(StreamReader* reader) {
  if (!reader) return kImageUnknown;
  uint8_t head[8];
  const size_t n = reader->ReadBlock(head, 0, sizeof(head));
  return SniffFormat(head, n);
}

Dib* LoadBitmapFromStream(StreamReader* reader, ImageFormat format, Size* imageSize,
                          const Rect* clip, int* frame) {
  std::unique_ptr<Dib> dib = Load(reader, format, frame ? *frame : 0, Size(), nullptr);
  if (!dib) return nullptr;
  const Size full(dib->GetWidth(), dib->GetHeight());
  if (clip) {
    dib = dib->Clone(clip);
    if (!dib) return nullptr;
  }
  if (imageSize) *imageSize = full;
  return dib.release();
}

std::unique_ptr<Dib> DecodeImageToShow(StreamReader* reader, Size shownSize, bool* reduced) {
  if (reduced) *reduced = false;
  return Load(reader, kImageUnknown, 0, shownSize, reduced);
}

}  // namespace host
