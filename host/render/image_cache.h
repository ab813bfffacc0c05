// Decoded images of one render, so that a picture used many times on a page
// is decoded once; pictures of a document also come from, and go to, the
// document's cache shared by its renders. Internal to the renderer.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "host/base/dib.h"
#include "host/base/geometry.h"

namespace host {

class OfdMultiMedia;

class ImageCache {
 public:
  ImageCache();
  ~ImageCache();
  ImageCache(const ImageCache&) = delete;
  ImageCache& operator=(const ImageCache&) = delete;

  /// The picture of `media` (PNG, JPEG, BMP, TIFF, GIF or JBIG2 bytes) with
  /// `mask` applied when given: the mask's brightness becomes the picture's
  /// opacity (white opaque, black transparent), stretched to the picture's
  /// size. Null when the data is missing or does not decode (remembered, so
  /// it is not tried again). Owned by the cache. `shownSize` is the size it
  /// is drawn at on a raster device, in pixels along its own axes: a JPEG may
  /// then come reduced, no smaller than that (see DecodeImageToShow); empty
  /// for the whole picture.
  const Dib* Get(const OfdMultiMedia* media, const OfdMultiMedia* mask, Size shownSize = {});

  /// Bytes of the pictures held.
  uint64_t GetByteCount() const { return bytes_; }

 private:
  struct Entry {
    std::shared_ptr<const Dib> image;  // null: does not decode
    bool reduced = false;
  };
  static bool Serves(const Entry& entry, Size shownSize);

  uint64_t bytes_ = 0;
  std::map<std::pair<const OfdMultiMedia*, const OfdMultiMedia*>, Entry> images_;
};

/// Decodes a multimedia resource's picture; null on failure. With a
/// `shownSize`, as DecodeImageToShow (`reduced` tells whether it was).
std::unique_ptr<Dib> DecodeMultiMedia(const OfdMultiMedia& media, Size shownSize = {},
                                      bool* reduced = nullptr);

/// True when some pixel of `dib` is not fully opaque (32-bit pixels, or the
/// palette entries an indexed bitmap's pixels use).
bool HasTransparency(const Dib& dib);

}  // namespace host
