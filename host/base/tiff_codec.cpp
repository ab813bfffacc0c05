// TIFF decoding with libtiff, over the bytes in memory, through its RGBA
// interface (which handles every photometric and layout it supports).
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <new>
#include <vector>

#include "host/base/codec_internal.h"

namespace host {

namespace {

// Largest single buffer libtiff may allocate for one file (strips, tiles).
constexpr tmsize_t kMaxTiffAlloc = tmsize_t{256} << 20;

struct TiffSource {
  const uint8_t* data;
  uint64_t size;
  uint64_t offset;
};

TiffSource* SourceOf(thandle_t h) { return static_cast<TiffSource*>(h); }

tmsize_t TiffRead(thandle_t h, void* out, tmsize_t n) {
  TiffSource* src = SourceOf(h);
  if (n <= 0 || src->offset >= src->size) return 0;
  const uint64_t count = std::min<uint64_t>(static_cast<uint64_t>(n), src->size - src->offset);
  std::copy_n(src->data + src->offset, count, static_cast<uint8_t*>(out));
  src->offset += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t TiffWrite(thandle_t, void*, tmsize_t) { return -1; }

toff_t TiffSeek(thandle_t h, toff_t offset, int whence) {
  TiffSource* src = SourceOf(h);
  uint64_t base = 0;
  if (whence == SEEK_CUR) base = src->offset;
  if (whence == SEEK_END) base = src->size;
  if (offset > UINT64_MAX - base) return static_cast<toff_t>(-1);
  src->offset = base + offset;
  return src->offset;
}

int TiffClose(thandle_t) { return 0; }
toff_t TiffSize(thandle_t h) { return SourceOf(h)->size; }

int TiffMap(thandle_t h, void** base, toff_t* size) {
  // libtiff only reads through the mapping of a file opened for reading.
  *base = const_cast<uint8_t*>(SourceOf(h)->data);
  *size = SourceOf(h)->size;
  return 1;
}

void TiffUnmap(thandle_t, void*, toff_t) {}

// Returning 1 keeps libtiff from passing the message on to its process-wide
// handlers, which print.
int TiffSilent(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct TiffOptionsDeleter {
  void operator()(TIFFOpenOptions* o) const { TIFFOpenOptionsFree(o); }
};
struct TiffCloser {
  void operator()(TIFF* t) const { TIFFClose(t); }
};
struct TiffImageEnder {
  void operator()(TIFFRGBAImage* img) const { TIFFRGBAImageEnd(img); }
};

uint8_t Unpremultiply(uint32_t c, uint32_t a) {
  return static_cast<uint8_t>(std::min<uint32_t>(255, (c * 255 + a / 2) / a));
}

// Converts libtiff's packed A B G R raster (premultiplied when it has alpha).
std::unique_ptr<Dib> FromRaster(const std::vector<uint32_t>& raster, int width, int height,
                                const TIFFRGBAImage& img) {
  const bool alpha = img.alpha != 0;
  const bool grey = !alpha && (img.photometric == PHOTOMETRIC_MINISBLACK ||
                               img.photometric == PHOTOMETRIC_MINISWHITE);
  const DibFormat format = alpha ? kDibArgb32 : grey ? kDibIndexed8 : kDibRgb24;
  auto dib = Dib::Create(width, height, format);
  if (!dib) return nullptr;
  if (grey) SetGreyPalette(*dib);
  const int bytes = DibFormatBpp(format) / 8;
  for (int y = 0; y < height; ++y) {
    const uint32_t* in = raster.data() + static_cast<size_t>(y) * width;
    uint8_t* out = dib->GetScanline(y);
    for (int x = 0; x < width; ++x, out += bytes) {
      const uint32_t p = in[x];
      const uint32_t r = TIFFGetR(p), g = TIFFGetG(p), b = TIFFGetB(p), a = TIFFGetA(p);
      if (grey) {
        out[0] = static_cast<uint8_t>(r);
      } else if (!alpha) {
        out[0] = static_cast<uint8_t>(b);
        out[1] = static_cast<uint8_t>(g);
        out[2] = static_cast<uint8_t>(r);
      } else if (a != 0) {
        out[0] = Unpremultiply(b, a);
        out[1] = Unpremultiply(g, a);
        out[2] = Unpremultiply(r, a);
        out[3] = static_cast<uint8_t>(a);
      }
    }
  }
  if (img.photometric == PHOTOMETRIC_PALETTE && !alpha) {
    if (auto indexed = dib->CloneConvert(kDibIndexed8)) return indexed;
  }
  return dib;
}

}  // namespace

std::unique_ptr<Dib> DecodeTiff(const uint8_t* data, size_t size, int frame) {
  if (frame < 0 || size < 8) return nullptr;
  std::unique_ptr<TIFFOpenOptions, TiffOptionsDeleter> options(TIFFOpenOptionsAlloc());
  if (!options) return nullptr;
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TiffSilent, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TiffSilent, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxTiffAlloc);

  TiffSource source{data, size, 0};
  std::unique_ptr<TIFF, TiffCloser> tif(TIFFClientOpenExt("memory", "r", &source, TiffRead, TiffWrite,
                                                          TiffSeek, TiffClose, TiffSize, TiffMap,
                                                          TiffUnmap, options.get()));
  if (!tif) return nullptr;
  if (frame > 0 && !TIFFSetDirectory(tif.get(), static_cast<tdir_t>(frame))) return nullptr;

  uint32_t width = 0;
  uint32_t height = 0;
  if (!TIFFGetField(tif.get(), TIFFTAG_IMAGEWIDTH, &width) ||
      !TIFFGetField(tif.get(), TIFFTAG_IMAGELENGTH, &height) || !IsDibSizeAllowed(width, height)) {
    return nullptr;
  }
  char message[1024];
  TIFFRGBAImage img{};
  // Stop at the first bad strip or tile rather than return a partial picture.
  if (!TIFFRGBAImageOK(tif.get(), message) || !TIFFRGBAImageBegin(&img, tif.get(), 1, message)) {
    return nullptr;
  }
  std::unique_ptr<TIFFRGBAImage, TiffImageEnder> end(&img);
  img.req_orientation = ORIENTATION_TOPLEFT;
  try {
    std::vector<uint32_t> raster(static_cast<size_t>(width) * height);
    if (!TIFFRGBAImageGet(&img, raster.data(), width, height)) return nullptr;
    return FromRaster(raster, static_cast<int>(width), static_cast<int>(height), img);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace host
