// GIF decoding with giflib, record by record so that every size is checked
// before anything is allocated for it.
#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "host/base/codec_internal.h"

namespace host {

namespace {

// Pixels decoded over all frames up to the requested one; bounds the work a
// small file of many huge frames can cause.
constexpr int64_t kMaxGifWork = 4 * kMaxDibPixels;

struct GifSource {
  const uint8_t* data;
  size_t size;
  size_t offset;
};

int GifRead(GifFileType* gif, GifByteType* out, int n) {
  auto* src = static_cast<GifSource*>(gif->UserData);
  const size_t count = std::min(static_cast<size_t>(std::max(n, 0)), src->size - src->offset);
  std::memcpy(out, src->data + src->offset, count);
  src->offset += count;
  return static_cast<int>(count);
}

struct GifCloser {
  void operator()(GifFileType* gif) const {
    int error = 0;
    DGifCloseFile(gif, &error);
  }
};

uint32_t ColourOf(const ColorMapObject& map, int index) {
  if (index >= map.ColorCount) return 0xFF000000u;  // out-of-range indices show black
  const GifColorType& c = map.Colors[index];
  return 0xFF000000u | static_cast<uint32_t>(c.Red) << 16 | static_cast<uint32_t>(c.Green) << 8 |
         c.Blue;
}

// The picture row that the `line`-th stored row of an interlaced image of
// `height` rows belongs to (four passes: every 8th row from 0, every 8th from
// 4, every 4th from 2, every 2nd from 1).
int InterlacedRow(int line, int height) {
  static constexpr int kStart[4] = {0, 4, 2, 1};
  static constexpr int kStep[4] = {8, 8, 4, 2};
  for (int pass = 0; pass < 4; ++pass) {
    const int rows = height > kStart[pass] ? (height - kStart[pass] + kStep[pass] - 1) / kStep[pass] : 0;
    if (line < rows) return kStart[pass] + line * kStep[pass];
    line -= rows;
  }
  return height;
}

void ClearRect(Dib& canvas, const Rect& r) {
  const int left = std::max(r.left, 0);
  const int right = std::min(r.right, canvas.GetWidth());
  if (left >= right) return;
  for (int y = std::max(r.top, 0); y < std::min(r.bottom, canvas.GetHeight()); ++y) {
    std::memset(canvas.GetScanline(y) + 4 * left, 0, 4 * static_cast<size_t>(right - left));
  }
}

bool HasTransparency(const Dib& argb) {
  for (int y = 0; y < argb.GetHeight(); ++y) {
    const uint8_t* row = argb.GetScanline(y);
    for (int x = 0; x < argb.GetWidth(); ++x) {
      if (row[4 * x + 3] != 0xFF) return true;
    }
  }
  return false;
}

// Decodes the current image's rows, handing each with its picture row to `put`.
template <typename Put>
bool ReadRows(GifFileType* gif, std::vector<GifByteType>& line, Put put) {
  const GifImageDesc& desc = gif->Image;
  line.resize(static_cast<size_t>(desc.Width));
  for (int i = 0; i < desc.Height; ++i) {
    if (DGifGetLine(gif, line.data(), desc.Width) == GIF_ERROR) return false;
    put(desc.Interlace ? InterlacedRow(i, desc.Height) : i, line.data());
  }
  return true;
}

std::unique_ptr<Dib> DecodeGifImpl(GifFileType* gif, int frame) {
  GraphicsControlBlock gcb{DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
  std::unique_ptr<Dib> canvas;  // composition of the frames so far, kDibArgb32
  std::unique_ptr<Dib> saved;   // canvas before a frame to be disposed to previous
  int previousDisposal = DISPOSAL_UNSPECIFIED;
  Rect previousRect;
  std::vector<GifByteType> line;
  int64_t work = 0;

  for (int index = 0;;) {
    GifRecordType type;
    if (DGifGetRecordType(gif, &type) == GIF_ERROR) return nullptr;
    if (type == TERMINATE_RECORD_TYPE) return nullptr;  // no such frame
    if (type == EXTENSION_RECORD_TYPE) {
      int code = 0;
      GifByteType* block = nullptr;
      if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return nullptr;
      if (code == GRAPHICS_EXT_FUNC_CODE && block && block[0] == 4) {
        DGifExtensionToGCB(block[0], block + 1, &gcb);
      }
      while (block) {
        if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return nullptr;
      }
      continue;
    }
    if (type != IMAGE_DESC_RECORD_TYPE) return nullptr;
    if (DGifGetImageDesc(gif) == GIF_ERROR) return nullptr;

    const GifImageDesc& desc = gif->Image;
    if (!IsDibSizeAllowed(desc.Width, desc.Height)) return nullptr;
    work += int64_t{desc.Width} * desc.Height;
    if (work > kMaxGifWork) return nullptr;
    const ColorMapObject* map = desc.ColorMap ? desc.ColorMap : gif->SColorMap;
    if (!map || map->ColorCount <= 0) return nullptr;
    const int transparent = gcb.TransparentColor;
    const Rect rect(desc.Left, desc.Top, desc.Left + desc.Width, desc.Top + desc.Height);

    if (index == 0) {
      // Some writers give a screen smaller than the first frame: grow it.
      const int width = std::max(gif->SWidth, rect.right);
      const int height = std::max(gif->SHeight, rect.bottom);
      if (!IsDibSizeAllowed(width, height)) return nullptr;
      if (frame == 0 && transparent == NO_TRANSPARENT_COLOR && rect.left == 0 && rect.top == 0 &&
          rect.right == width && rect.bottom == height) {
        // A single opaque frame covering the screen keeps its palette.
        auto dib = Dib::Create(width, height, kDibIndexed8);
        if (!dib) return nullptr;
        uint32_t palette[256];
        const int count = std::min(map->ColorCount, 256);
        for (int i = 0; i < count; ++i) palette[i] = ColourOf(*map, i);
        SetPaddedPalette(*dib, palette, count);
        if (!ReadRows(gif, line, [&](int y, const GifByteType* px) {
              std::memcpy(dib->GetScanline(y), px, static_cast<size_t>(width));
            })) {
          return nullptr;
        }
        return dib;
      }
      canvas = Dib::Create(width, height, kDibArgb32);  // starts transparent
      if (!canvas) return nullptr;
    }

    if (previousDisposal == DISPOSE_BACKGROUND) {
      ClearRect(*canvas, previousRect);
    } else if (previousDisposal == DISPOSE_PREVIOUS && saved) {
      canvas = std::move(saved);
    }
    if (gcb.DisposalMode == DISPOSE_PREVIOUS && index < frame) {
      saved = canvas->Clone();
      if (!saved) return nullptr;
    }

    Dib& target = *canvas;
    const bool ok = ReadRows(gif, line, [&](int row, const GifByteType* px) {
      const int y = rect.top + row;
      if (y >= target.GetHeight()) return;
      uint8_t* out = target.GetScanline(y);
      const int right = std::min(rect.right, target.GetWidth());
      for (int x = rect.left; x < right; ++x) {
        const int i = px[x - rect.left];
        if (i == transparent) continue;
        const uint32_t argb = ColourOf(*map, i);
        out[4 * x] = static_cast<uint8_t>(argb);
        out[4 * x + 1] = static_cast<uint8_t>(argb >> 8);
        out[4 * x + 2] = static_cast<uint8_t>(argb >> 16);
        out[4 * x + 3] = 0xFF;
      }
    });
    if (!ok) return nullptr;

    if (index == frame) {
      if (HasTransparency(*canvas)) return canvas;
      // An opaque composition of several palettes may still fit in one.
      if (auto indexed = canvas->CloneConvert(kDibIndexed8)) return indexed;
      return canvas->CloneConvert(kDibRgb24);
    }
    previousDisposal = gcb.DisposalMode;
    previousRect = rect;
    gcb = GraphicsControlBlock{DISPOSAL_UNSPECIFIED, false, 0, NO_TRANSPARENT_COLOR};
    ++index;
  }
}

}  // namespace

std::unique_ptr<Dib> DecodeGif(const uint8_t* data, size_t size, int frame) {
  if (frame < 0 || size < 6 || (std::memcmp(data, "GIF87a", 6) != 0 && std::memcmp(data, "GIF89a", 6) != 0)) {
    return nullptr;
  }
  GifSource source{data, size, 0};
  int error = 0;
  std::unique_ptr<GifFileType, GifCloser> gif(DGifOpen(&source, GifRead, &error));
  if (!gif) return nullptr;
  try {
    return DecodeGifImpl(gif.get(), frame);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace host
