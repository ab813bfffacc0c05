// Raster picture codecs: format sniffing and decoding into Dibs.
#pragma once

#include <memory>
#include <string>

#include "host/base/dib.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/stream_reader.h"

namespace host {

enum ImageFormat : int {
  kImageUnknown = 0,
  kImageBmp = 1,
  kImageJpeg = 2,
  kImagePng = 3,
  kImageGif = 4,
  kImageTiff = 5,
  kImageJbig2 = 6,
};

/// The format recognised from the stream's magic bytes, or kImageUnknown.
/// Reads from offset 0; leaves the position unchanged. Thread-safe.
HOST_API ImageFormat GetImageFormat(StreamReader* reader);

/// Decodes the picture in `reader`, sniffing the format when `format` is
/// kImageUnknown. Optional arguments (each may be null):
///  - `imageSize` receives the picture's own pixel size when it decodes;
///  - `clip` keeps only that rectangle of the picture;
///  - `frame` selects a frame (GIF, TIFF); 0 when null.
/// Returns a new Dib owned by the caller, or null for truncated, corrupt or
/// oversized data (see kMaxDibSide, kMaxDibPixels). Pictures with alpha or
/// transparency decode to kDibArgb32, opaque true colour to kDibRgb24,
/// paletted ones without alpha to kDibIndexed8, greyscale to kDibIndexed8 with
/// a grey ramp. Never prints, never exits. Thread-safe.
HOST_API Dib* LoadBitmapFromStream(StreamReader* reader, ImageFormat format, Size* imageSize,
                                   const Rect* clip, int* frame);

/// The same, owning.
inline std::unique_ptr<Dib> DecodeImage(StreamReader* reader, ImageFormat format = kImageUnknown) {
  return std::unique_ptr<Dib>(LoadBitmapFromStream(reader, format, nullptr, nullptr, nullptr));
}

/// As DecodeImage, for a picture shown at `shownSize` device pixels (each
/// way along its own axes): a JPEG is decoded reduced by 2, 4 or 8, straight
/// from its DCT coefficients, when it would still have at least that many
/// pixels each way: smaller inverse transforms, and a quarter or less of the
/// pixels to convert and draw, for a scan drawn smaller than its pixels. For
/// vector output, ask with an empty size (whole picture). `reduced`
/// (optional) tells whether it was. Thread-safe.
HOST_API std::unique_ptr<Dib> DecodeImageToShow(StreamReader* reader, Size shownSize,
                                                bool* reduced);

/// Encodes a bitmap as PNG (32-bit with alpha, 24-bit RGB, or paletted);
/// false on failure. Written for speed (zlib level 1, the Up filter); a
/// file of a fully opaque 32-bit bitmap is written as 24-bit RGB.
HOST_API bool WritePng(const Dib& dib, const char* path);
/// As WritePng, into `out`. A fully opaque 32-bit bitmap keeps its alpha
/// channel unless `dropOpaqueAlpha` (then the bytes equal WritePng's file).
HOST_API bool EncodePng(const Dib& dib, std::string& out, bool dropOpaqueAlpha = false);

/// Encodes a bitmap (formats kDibIndexed8, kDibRgb24, kDibArgb32) as a
/// baseline JPEG of `quality` 1..100 (clamped), transparent pixels composed
/// over white; false on failure.
HOST_API bool EncodeJpeg(const Dib& dib, int quality, std::string& out);

}  // namespace host
