// PNG encoding with libpng.
#include <algorithm>
#include <cstdio>
#include <new>
#include <vector>

#include "host/base/codec.h"
#include "host/base/png_handles.h"

namespace host {

namespace {

struct PngWriteState {
  const Dib* dib = nullptr;
  bool dropOpaqueAlpha = false;  // write an opaque 32-bit bitmap as RGB
  std::string out;
  bool failed = false;
  std::vector<png_color> palette;
  std::vector<png_byte> alpha;
  std::vector<png_bytep> rows;
};

void PngWrite(png_structp png, png_bytep data, size_t n) {
  auto* state = static_cast<PngWriteState*>(png_get_io_ptr(png));
  if (state->failed) return;
  try {
    state->out.append(reinterpret_cast<const char*>(data), n);
  } catch (const std::bad_alloc&) {
    // Leave the handler normally; the caller sees the flag.
    state->failed = true;
  }
}

void PngFlush(png_structp) {}

// Palette (with transparency) of an indexed bitmap, trimmed to the highest
// index its pixels use.
void BuildPalette(PngWriteState* s) {
  const Dib& dib = *s->dib;
  int count = 1;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    const uint8_t* row = dib.GetScanline(y);
    for (int x = 0; x < dib.GetWidth(); ++x) count = std::max(count, row[x] + 1);
  }
  int alphaCount = 0;
  for (int i = 0; i < count; ++i) {
    const uint32_t argb = dib.GetPaletteEntry(i);
    s->palette.push_back(png_color{static_cast<png_byte>(argb >> 16), static_cast<png_byte>(argb >> 8),
                                   static_cast<png_byte>(argb)});
    s->alpha.push_back(static_cast<png_byte>(argb >> 24));
    if (argb >> 24 != 0xFF) alphaCount = i + 1;
  }
  s->alpha.resize(static_cast<size_t>(alphaCount));
}

bool IsOpaque(const Dib& dib) {
  for (int y = 0; y < dib.GetHeight(); ++y) {
    const uint8_t* row = dib.GetScanline(y);
    for (int x = 0; x < dib.GetWidth(); ++x)
      if (row[4 * x + 3] != 0xFF) return false;
  }
  return true;
}

// Writes once the error handler is armed; an error longjmps out of here, so
// the state owns everything.
bool WritePngBody(png_structp png, png_infop info, PngWriteState* s) {
  const Dib& dib = *s->dib;
  int colorType;
  switch (dib.GetFormat()) {
    case kDibIndexed8:
      colorType = PNG_COLOR_TYPE_PALETTE;
      break;
    case kDibRgb24:
      colorType = PNG_COLOR_TYPE_RGB;
      break;
    case kDibArgb32:
      // An opaque bitmap (a rendered page) written to a file goes without
      // its alpha: a quarter less to filter and compress.
      colorType = s->dropOpaqueAlpha && IsOpaque(dib) ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA;
      break;
    default:
      return false;
  }
  png_set_write_fn(png, s, PngWrite, PngFlush);
  png_set_IHDR(png, info, static_cast<png_uint_32>(dib.GetWidth()), static_cast<png_uint_32>(dib.GetHeight()),
               8, colorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (colorType == PNG_COLOR_TYPE_PALETTE) {
    BuildPalette(s);
    png_set_PLTE(png, info, s->palette.data(), static_cast<int>(s->palette.size()));
    if (!s->alpha.empty()) png_set_tRNS(png, info, s->alpha.data(), static_cast<int>(s->alpha.size()), nullptr);
  }
  // Speed over size, chosen by measuring rendered pages: zlib level 1 and
  // the Up filter on every row encode 5 to 7 times faster than the defaults
  // (level 6, each row trying every filter) for files 10 to 30% larger.
  png_set_compression_level(png, 1);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
  png_write_info(png, info);
  if (colorType != PNG_COLOR_TYPE_PALETTE) png_set_bgr(png);
  if (colorType == PNG_COLOR_TYPE_RGB && dib.GetFormat() == kDibArgb32)
    png_set_filler(png, 0, PNG_FILLER_AFTER);  // drops the alpha byte of each pixel
  s->rows.resize(static_cast<size_t>(dib.GetHeight()));
  for (int y = 0; y < dib.GetHeight(); ++y) s->rows[y] = const_cast<png_bytep>(dib.GetScanline(y));
  png_write_image(png, s->rows.data());
  png_write_end(png, nullptr);
  return !s->failed;
}

bool Encode(const Dib& dib, bool dropOpaqueAlpha, std::string& out) {
  if (dib.GetWidth() <= 0 || dib.GetHeight() <= 0) return false;
  PngHandles<true> h;
  if (!h.info) return false;
  PngWriteState state;
  state.dib = &dib;
  state.dropOpaqueAlpha = dropOpaqueAlpha;
  if (!RunPngGuarded(h.png, h.info, &state, WritePngBody)) return false;
  out = std::move(state.out);
  return true;
}

}  // namespace

bool EncodePng(const Dib& dib, std::string& out, bool dropOpaqueAlpha) {
  return Encode(dib, dropOpaqueAlpha, out);
}

bool WritePng(const Dib& dib, const char* path) {
  std::string bytes;
  if (!path || !Encode(dib, true, bytes)) return false;
  struct Closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
  };
  std::unique_ptr<std::FILE, Closer> f(std::fopen(path, "wb"));
  if (!f) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), f.get()) == bytes.size();
  // Closing flushes: its result decides too.
  return std::fclose(f.release()) == 0 && written;
}

}  // namespace host
