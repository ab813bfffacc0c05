#include "support/image_samples.h"

#include <cstdio>  // jpeglib.h needs FILE first

#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <tuple>
#include <utility>

namespace testing_support {

namespace {

uint8_t R(uint32_t c) { return static_cast<uint8_t>(c >> 16); }
uint8_t G(uint32_t c) { return static_cast<uint8_t>(c >> 8); }
uint8_t B(uint32_t c) { return static_cast<uint8_t>(c); }
uint8_t A(uint32_t c) { return static_cast<uint8_t>(c >> 24); }

int GifAppend(GifFileType* gif, const GifByteType* data, int n) {
  static_cast<std::string*>(gif->UserData)->append(reinterpret_cast<const char*>(data), n);
  return n;
}

}  // namespace

std::string Le(uint32_t v, int bytes) {
  std::string s;
  for (int i = 0; i < bytes; ++i) s += static_cast<char>(v >> 8 * i);
  return s;
}

std::string Be(uint32_t v, int bytes) {
  const std::string le = Le(v, bytes);
  return {le.rbegin(), le.rend()};
}

SampleImage GradientImage(int width, int height, bool alpha) {
  SampleImage image{width, height, {}};
  for (int i = 0; i < width * height; ++i) {
    const uint32_t x = i % width, y = i / width, r = x * 255 / (width - 1), g = y * 255 / (height - 1);
    const uint32_t b = (x + y) * 255 / (width + height - 2), a = alpha ? r : 255;
    image.argb.push_back(a << 24 | r << 16 | g << 8 | b);
  }
  return image;
}

SampleImage PaletteImage(int width, int height, const std::vector<uint32_t>& palette) {
  SampleImage image{width, height, {}};
  for (int i = 0; i < width * height; ++i) image.argb.push_back(palette[(i % width + 3 * (i / width)) % palette.size()]);
  return image;
}

std::string MakePng(const SampleImage& image, PngKind kind, const std::vector<uint32_t>& palette) {
  static const png_uint_32 kFormats[] = {PNG_FORMAT_RGB, PNG_FORMAT_RGBA, PNG_FORMAT_GRAY, PNG_FORMAT_RGBA_COLORMAP};
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  std::tie(png.width, png.height, png.format, png.colormap_entries) =
      std::tuple(image.width, image.height, kFormats[static_cast<int>(kind)], palette.size());
  // Indices, or the channels R G B A from the first (G for grey) on; the
  // palette as R G B A (a tRNS chunk is written only when one is not opaque).
  const int first = kind == PngKind::kGrey ? 1 : 0;
  const int count = kind == PngKind::kGrey ? 1 : kind == PngKind::kRgb ? 3 : 4;
  std::vector<uint8_t> bytes, colormap;
  for (uint32_t c : palette) colormap.insert(colormap.end(), {R(c), G(c), B(c), A(c)});
  for (uint32_t c : image.argb) {
    const uint8_t channels[4] = {R(c), G(c), B(c), A(c)};
    const uint8_t index = static_cast<uint8_t>(std::find(palette.begin(), palette.end(), c) - palette.begin());
    if (kind == PngKind::kIndexed) bytes.push_back(index);
    else bytes.insert(bytes.end(), channels + first, channels + first + count);
  }
  size_t size = 0;
  if (!png_image_write_get_memory_size(png, size, 0, bytes.data(), 0, colormap.data())) return {};
  std::string out(size, '\0');
  return png_image_write_to_memory(&png, out.data(), &size, 0, bytes.data(), 0, colormap.data()) ? out.substr(0, size)
                                                                                                 : "";
}

std::string WithPngSize(std::string png, uint32_t width, uint32_t height) {
  png.replace(16, 8, Be(width, 4) + Be(height, 4));
  const uLong crc = crc32(0, reinterpret_cast<const Bytef*>(png.data()) + 12, 29 - 12);
  return png.replace(29, 4, Be(static_cast<uint32_t>(crc), 4));
}

std::string MakeJpeg(const SampleImage& image, bool grey) {
  jpeg_compress_struct cinfo;
  jpeg_error_mgr err;
  cinfo.err = jpeg_std_error(&err);
  jpeg_create_compress(&cinfo);
  unsigned char* buffer = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&cinfo, &buffer, &size);
  std::tie(cinfo.image_width, cinfo.image_height, cinfo.input_components, cinfo.in_color_space) =
      std::tuple(image.width, image.height, grey ? 1 : 3, grey ? JCS_GRAYSCALE : JCS_RGB);
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, 95, TRUE);
  jpeg_start_compress(&cinfo, TRUE);
  std::vector<JSAMPLE> row;
  for (int y = 0; y < image.height; ++y) {
    row.clear();
    for (int x = 0; x < image.width; ++x) {
      const uint32_t c = image.At(x, y);
      if (grey) row.push_back(G(c));
      else row.insert(row.end(), {R(c), G(c), B(c)});
    }
    JSAMPROW p = row.data();
    jpeg_write_scanlines(&cinfo, &p, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  std::string out(reinterpret_cast<const char*>(buffer), size);
  std::free(buffer);
  return out;
}

std::string MakeGif(int width, int height, const std::vector<uint32_t>& palette,
                    const std::vector<GifFrame>& frames) {
  std::string out;
  int error = 0;
  GifFileType* gif = EGifOpen(&out, GifAppend, &error);
  if (!gif) return {};
  int count = 2;
  while (count < static_cast<int>(palette.size())) count *= 2;
  std::vector<GifColorType> colours(count, GifColorType{0, 0, 0});
  for (size_t i = 0; i < palette.size(); ++i) colours[i] = GifColorType{R(palette[i]), G(palette[i]), B(palette[i])};
  ColorMapObject* map = GifMakeMapObject(count, colours.data());
  EGifSetGifVersion(gif, true);
  bool ok = EGifPutScreenDesc(gif, width, height, 8, 0, map) == GIF_OK;
  for (const GifFrame& f : frames) {
    if (f.transparent >= 0) {
      GraphicsControlBlock gcb{DISPOSAL_UNSPECIFIED, false, 0, f.transparent};
      GifByteType ext[4];
      EGifGCBToExtension(&gcb, ext);
      ok = ok && EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, ext) == GIF_OK;
    }
    ok = ok && EGifPutImageDesc(gif, f.left, f.top, f.width, f.height, f.interlaced, nullptr) == GIF_OK;
    // Interlaced rows are stored pass by pass.
    std::vector<int> order;
    for (auto [start, step] : f.interlaced ? std::vector<std::pair<int, int>>{{0, 8}, {4, 8}, {2, 4}, {1, 2}}
                                           : std::vector<std::pair<int, int>>{{0, 1}})
      for (int y = start; y < f.height; y += step) order.push_back(y);
    std::vector<GifPixelType> line(f.width);
    for (int y : order) {
      std::copy_n(f.indices.begin() + static_cast<size_t>(y) * f.width, f.width, line.begin());
      ok = ok && EGifPutLine(gif, line.data(), f.width) == GIF_OK;
    }
  }
  ok = EGifCloseFile(gif, &error) == GIF_OK && ok;
  GifFreeMapObject(map);
  return ok ? out : std::string();
}

std::string MakeBmp(const SampleImage& image, int bpp, bool topDown, const std::vector<uint32_t>& palette) {
  const int colours = bpp == 8 ? static_cast<int>(palette.size()) : 0;
  const uint32_t stride = (image.width * bpp + 31) / 32 * 4;
  const uint32_t offset = 14 + 40 + 4 * colours;
  std::string out = "BM";
  const int height = topDown ? -image.height : image.height;
  for (uint32_t v : {offset + stride * image.height, 0u, offset, 40u, static_cast<uint32_t>(image.width),
                     static_cast<uint32_t>(height)})
    out += Le(v, 4);
  out += Le(1 | static_cast<uint32_t>(bpp) << 16, 4);  // planes, bits per pixel
  for (uint32_t v : {0u, stride * image.height, 2835u, 2835u, static_cast<uint32_t>(colours), 0u}) out += Le(v, 4);
  for (uint32_t c : palette) out += Le(c & 0xFFFFFF, 4);
  for (int row = 0; row < image.height; ++row) {
    const int y = topDown ? row : image.height - 1 - row;
    std::string line;
    for (int x = 0; x < image.width; ++x) {
      const uint32_t c = image.At(x, y);
      if (bpp == 8) line += static_cast<char>(std::find(palette.begin(), palette.end(), c) - palette.begin());
      else line += {static_cast<char>(B(c)), static_cast<char>(G(c)), static_cast<char>(R(c))};
      if (bpp == 32) line += '\x7f';  // ignored by plain 32-bit BMPs
    }
    line.resize(stride, '\0');
    out += line;
  }
  return out;
}

std::string MakeTiff(const SampleImage& image, bool alpha) {
  char path[] = "/tmp/tarvik_sample_XXXXXX";
  const int fd = mkstemp(path);
  if (fd < 0) return {};
  TIFF* tif = TIFFFdOpen(fd, path, "w");
  const std::pair<uint32_t, int> fields[] = {
      {TIFFTAG_IMAGEWIDTH, image.width}, {TIFFTAG_IMAGELENGTH, image.height}, {TIFFTAG_SAMPLESPERPIXEL, alpha ? 4 : 3},
      {TIFFTAG_BITSPERSAMPLE, 8}, {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB}, {TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG},
      {TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE}, {TIFFTAG_ROWSPERSTRIP, 4}};
  for (auto [tag, value] : fields) TIFFSetField(tif, tag, value);
  const uint16_t extra = EXTRASAMPLE_UNASSALPHA;
  if (alpha) TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, &extra);
  std::vector<uint8_t> row;
  for (int y = 0; y < image.height; ++y) {
    row.clear();
    for (int x = 0; x < image.width; ++x) {
      const uint32_t c = image.At(x, y);
      row.insert(row.end(), {R(c), G(c), B(c)});
      if (alpha) row.push_back(A(c));
    }
    TIFFWriteScanline(tif, row.data(), y, 0);
  }
  TIFFClose(tif);
  std::ifstream in(path, std::ios::binary);
  std::string out{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  unlink(path);
  return out;
}

}  // namespace testing_support
