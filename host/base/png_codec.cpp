// PNG decoding with libpng.
#include <cstring>
#include <vector>

#include "host/base/codec_internal.h"
#include "host/base/png_handles.h"

namespace host {

namespace {

struct PngReadState {
  const uint8_t* data = nullptr;
  size_t size = 0;
  size_t offset = 0;
  std::unique_ptr<Dib> dib;
  std::vector<png_bytep> rows;
};

void PngRead(png_structp png, png_bytep out, size_t n) {
  auto* state = static_cast<PngReadState*>(png_get_io_ptr(png));
  if (n > state->size - state->offset) png_error(png, "truncated");
  std::memcpy(out, state->data + state->offset, n);
  state->offset += n;
}

// Reads the picture once the error handler is armed. An error longjmps out of
// here, so nothing in this frame may need destroying: the state owns it all.
bool ReadPngBody(png_structp png, png_infop info, PngReadState* state) {
  png_set_read_fn(png, state, PngRead);
  // Refuses larger pictures while reading the header, before any allocation.
  png_set_user_limits(png, kMaxDibSide, kMaxDibSide);
  png_read_info(png, info);

  png_uint_32 width = 0;
  png_uint_32 height = 0;
  int depth = 0;
  int colorType = 0;
  png_get_IHDR(png, info, &width, &height, &depth, &colorType, nullptr, nullptr, nullptr);
  if (!IsDibSizeAllowed(width, height)) return false;
  const bool hasTrns = png_get_valid(png, info, PNG_INFO_tRNS) != 0;

  if (depth == 16) png_set_scale_16(png);
  DibFormat format;
  int bytesPerPixel;
  if (colorType == PNG_COLOR_TYPE_PALETTE && !hasTrns) {
    png_set_packing(png);
    format = kDibIndexed8;
    bytesPerPixel = 1;
  } else if (colorType == PNG_COLOR_TYPE_GRAY && !hasTrns) {
    png_set_expand_gray_1_2_4_to_8(png);
    format = kDibIndexed8;
    bytesPerPixel = 1;
  } else if (colorType == PNG_COLOR_TYPE_RGB && !hasTrns) {
    png_set_bgr(png);
    format = kDibRgb24;
    bytesPerPixel = 3;
  } else {
    // Palette, grey or colour with an alpha channel or a transparent colour.
    png_set_expand(png);
    if (!(colorType & PNG_COLOR_MASK_COLOR)) png_set_gray_to_rgb(png);
    png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    png_set_bgr(png);
    format = kDibArgb32;
    bytesPerPixel = 4;
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) != static_cast<size_t>(width) * bytesPerPixel) return false;

  state->dib = Dib::Create(static_cast<int>(width), static_cast<int>(height), format);
  if (!state->dib) return false;
  if (format == kDibIndexed8 && colorType == PNG_COLOR_TYPE_PALETTE) {
    png_colorp colors = nullptr;
    int count = 0;
    if (!png_get_PLTE(png, info, &colors, &count)) return false;
    uint32_t palette[256];
    count = count < 256 ? count : 256;
    for (int i = 0; i < count; ++i) {
      palette[i] = 0xFF000000u | static_cast<uint32_t>(colors[i].red) << 16 |
                   static_cast<uint32_t>(colors[i].green) << 8 | colors[i].blue;
    }
    SetPaddedPalette(*state->dib, palette, count);
  } else if (format == kDibIndexed8) {
    SetGreyPalette(*state->dib);
  }
  state->rows.resize(height);
  for (png_uint_32 y = 0; y < height; ++y) state->rows[y] = state->dib->GetScanline(static_cast<int>(y));
  // Reading stops after the image data: trailing chunks cannot change pixels.
  png_read_image(png, state->rows.data());
  return true;
}

}  // namespace

std::unique_ptr<Dib> DecodePng(const uint8_t* data, size_t size) {
  if (size < 8 || png_sig_cmp(data, 0, 8) != 0) return nullptr;
  PngHandles<false> h;
  if (!h.info) return nullptr;
  PngReadState state;
  state.data = data;
  state.size = size;
  if (!RunPngGuarded(h.png, h.info, &state, ReadPngBody)) return nullptr;
  return std::move(state.dib);
}

}  // namespace host
