// JPEG decoding with libjpeg-turbo.
#include <cstdio>  // jpeglib.h needs FILE and size_t first

#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>
#include <new>
#include <vector>

#include "host/base/codec_internal.h"

namespace host {

namespace {

// Bounds on the work a crafted file can cause: the decoder's own memory
// (progressive coefficient buffers) and the number of progressive scans.
constexpr long kMaxJpegMemory = 512L << 20;
constexpr int kMaxJpegScans = 500;

struct JpegErrorManager {
  jpeg_error_mgr pub;  // first, so that the library's pointer converts back
  jmp_buf jump;
  bool truncated = false;
};

struct JpegReadState {
  JpegErrorManager err;
  jpeg_decompress_struct cinfo{};
  jpeg_progress_mgr progress{};
  const uint8_t* data = nullptr;
  size_t size = 0;
  std::unique_ptr<Dib> dib;
  std::vector<JSAMPLE> row;
  // Safe whether or not creation completed: the structure starts zeroed.
  ~JpegReadState() { jpeg_destroy_decompress(&cinfo); }
};

JpegErrorManager* ErrorsOf(j_common_ptr cinfo) {
  return reinterpret_cast<JpegErrorManager*>(cinfo->err);
}

[[noreturn]] void JpegErrorExit(j_common_ptr cinfo) { longjmp(ErrorsOf(cinfo)->jump, 1); }

// Warnings are dropped, except that running out of data marks the picture
// truncated: the library would otherwise pad it with grey.
void JpegEmitMessage(j_common_ptr cinfo, int level) {
  if (level < 0 && cinfo->err->msg_code == JWRN_JPEG_EOF) ErrorsOf(cinfo)->truncated = true;
}

void JpegOutputMessage(j_common_ptr) {}

void JpegProgress(j_common_ptr cinfo) {
  auto* d = reinterpret_cast<j_decompress_ptr>(cinfo);
  if (d->input_scan_number > kMaxJpegScans) JpegErrorExit(cinfo);
}

// Converts a CMYK row to B, G, R. Files with an Adobe marker store the inks
// inverted (0 = full ink), which is also what YCCK converts to.
void CmykToBgr(const JSAMPLE* in, uint8_t* out, int width, bool inverted) {
  for (int x = 0; x < width; ++x, in += 4, out += 3) {
    const int k = inverted ? in[3] : 255 - in[3];
    for (int c = 0; c < 3; ++c) {
      const int ink = inverted ? in[c] : 255 - in[c];
      out[2 - c] = static_cast<uint8_t>((ink * k + 127) / 255);
    }
  }
}

// The largest reduction (8, 4 or 2) whose picture still has `minSize` pixels
// each way; 1 when none has, or when no size is asked for.
unsigned ReductionFor(JDIMENSION width, JDIMENSION height, Size minSize) {
  if (minSize.width <= 0 || minSize.height <= 0) return 1;
  for (unsigned d : {8u, 4u, 2u}) {
    if ((width + d - 1) / d >= static_cast<unsigned>(minSize.width) &&
        (height + d - 1) / d >= static_cast<unsigned>(minSize.height)) {
      return d;
    }
  }
  return 1;
}

// Decodes once the error handler is armed. An error longjmps out of here, so
// nothing in this frame may need destroying: the state owns it all.
bool ReadJpegBody(JpegReadState* s, Size minSize) {
  jpeg_decompress_struct& c = s->cinfo;
  jpeg_create_decompress(&c);
  c.mem->max_memory_to_use = kMaxJpegMemory;
  s->progress.progress_monitor = JpegProgress;
  c.progress = &s->progress;
  jpeg_mem_src(&c, s->data, static_cast<unsigned long>(s->size));
  if (jpeg_read_header(&c, TRUE) != JPEG_HEADER_OK) return false;
  if (!IsDibSizeAllowed(c.image_width, c.image_height)) return false;

  DibFormat format = kDibRgb24;
  int components = 3;
  bool cmyk = false;
  switch (c.jpeg_color_space) {
    case JCS_GRAYSCALE:
      c.out_color_space = JCS_GRAYSCALE;
      format = kDibIndexed8;
      components = 1;
      break;
    case JCS_CMYK:
    case JCS_YCCK:
      c.out_color_space = JCS_CMYK;
      cmyk = true;
      components = 4;
      break;
    default:
      c.out_color_space = JCS_EXT_BGR;
      break;
  }
  // Reduced pictures come from the DCT coefficients directly, with smaller
  // inverse transforms, rather than from every pixel scaled down afterwards.
  const unsigned reduction = ReductionFor(c.image_width, c.image_height, minSize);
  c.scale_num = 1;
  c.scale_denom = reduction;
  jpeg_start_decompress(&c);
  if (s->err.truncated || c.output_components != components ||
      c.output_width != (c.image_width + reduction - 1) / reduction ||
      c.output_height != (c.image_height + reduction - 1) / reduction) {
    return false;
  }
  const int width = static_cast<int>(c.output_width);
  s->dib = Dib::Create(width, static_cast<int>(c.output_height), format);
  if (!s->dib) return false;
  if (format == kDibIndexed8) SetGreyPalette(*s->dib);
  if (cmyk) s->row.resize(static_cast<size_t>(width) * 4);

  while (c.output_scanline < c.output_height) {
    const int y = static_cast<int>(c.output_scanline);
    JSAMPROW row = cmyk ? s->row.data() : s->dib->GetScanline(y);
    if (jpeg_read_scanlines(&c, &row, 1) != 1 || s->err.truncated) return false;
    if (cmyk) CmykToBgr(row, s->dib->GetScanline(y), width, c.saw_Adobe_marker);
  }
  return true;
}

bool ReadJpeg(JpegReadState* s, Size minSize) {
  if (setjmp(s->err.jump)) return false;
  try {
    return ReadJpegBody(s, minSize);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

std::unique_ptr<Dib> DecodeJpeg(const uint8_t* data, size_t size, Size minSize, bool* reduced) {
  if (size < 3 || data[0] != 0xFF || data[1] != 0xD8) return nullptr;
  auto state = std::make_unique<JpegReadState>();
  JpegReadState& s = *state;
  s.data = data;
  s.size = size;
  s.cinfo.err = jpeg_std_error(&s.err.pub);
  s.err.pub.error_exit = JpegErrorExit;
  s.err.pub.emit_message = JpegEmitMessage;
  s.err.pub.output_message = JpegOutputMessage;
  if (!ReadJpeg(&s, minSize)) return nullptr;
  if (reduced) *reduced = s.cinfo.scale_denom > 1;
  return std::move(s.dib);
}

}  // namespace host
