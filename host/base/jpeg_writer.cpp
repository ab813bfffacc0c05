// JPEG encoding with libjpeg-turbo. Transparent pixels are composed over
// white: JPEG has no alpha.
#include <cstddef>
#include <cstdio>

#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <new>
#include <vector>

#include "host/base/codec.h"

namespace host {

namespace {

struct JpegError {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

void JpegExit(j_common_ptr info) { std::longjmp(reinterpret_cast<JpegError*>(info->err)->jump, 1); }
void JpegMessage(j_common_ptr) {}

// Row `y` of `dib` as RGB, composed over white.
void RgbRow(const Dib& dib, int y, uint8_t* out) {
  const uint8_t* in = dib.GetScanline(y);
  auto over = [](uint32_t argb, uint8_t* px) {
    const uint32_t a = argb >> 24;
    for (int c = 0; c < 3; ++c) {
      const uint32_t v = (argb >> (16 - 8 * c)) & 0xFF;
      px[c] = static_cast<uint8_t>((v * a + 255 * (255 - a) + 127) / 255);
    }
  };
  for (int x = 0; x < dib.GetWidth(); ++x) {
    switch (dib.GetFormat()) {
      case kDibIndexed8:
        over(dib.GetPaletteEntry(in[x]), out + 3 * x);
        break;
      case kDibRgb24:
        out[3 * x] = in[3 * x + 2];
        out[3 * x + 1] = in[3 * x + 1];
        out[3 * x + 2] = in[3 * x];
        break;
      default:
        over(uint32_t{in[4 * x + 3]} << 24 | uint32_t{in[4 * x + 2]} << 16 |
                 uint32_t{in[4 * x + 1]} << 8 | in[4 * x],
             out + 3 * x);
        break;
    }
  }
}

// Everything that must be released after a longjmp lives in the caller.
struct JpegWriteState {
  jpeg_compress_struct info{};
  JpegError error{};
  unsigned char* buffer = nullptr;
  unsigned long size = 0;
  std::vector<uint8_t> row;
  bool created = false;
  ~JpegWriteState() {
    if (created) jpeg_destroy_compress(&info);
    std::free(buffer);
  }
};

bool EncodeGuarded(const Dib& dib, int quality, JpegWriteState& s) {
  if (setjmp(s.error.jump)) return false;
  jpeg_create_compress(&s.info);
  s.created = true;
  jpeg_mem_dest(&s.info, &s.buffer, &s.size);
  s.info.image_width = static_cast<JDIMENSION>(dib.GetWidth());
  s.info.image_height = static_cast<JDIMENSION>(dib.GetHeight());
  s.info.input_components = 3;
  s.info.in_color_space = JCS_RGB;
  jpeg_set_defaults(&s.info);
  jpeg_set_quality(&s.info, std::clamp(quality, 1, 100), TRUE);
  jpeg_start_compress(&s.info, TRUE);
  while (s.info.next_scanline < s.info.image_height) {
    RgbRow(dib, static_cast<int>(s.info.next_scanline), s.row.data());
    JSAMPROW rows[1] = {s.row.data()};
    jpeg_write_scanlines(&s.info, rows, 1);
  }
  jpeg_finish_compress(&s.info);
  return true;
}

}  // namespace

bool EncodeJpeg(const Dib& dib, int quality, std::string& out) {
  const DibFormat format = dib.GetFormat();
  if (dib.GetWidth() <= 0 || dib.GetHeight() <= 0 ||
      (format != kDibIndexed8 && format != kDibRgb24 && format != kDibArgb32)) {
    return false;
  }
  try {
    JpegWriteState state;
    state.row.resize(static_cast<size_t>(dib.GetWidth()) * 3);
    state.info.err = jpeg_std_error(&state.error.manager);
    state.error.manager.error_exit = JpegExit;
    state.error.manager.output_message = JpegMessage;
    if (!EncodeGuarded(dib, quality, state)) return false;
    out.assign(reinterpret_cast<const char*>(state.buffer), state.size);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace host
