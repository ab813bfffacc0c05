// Per-format decoders behind LoadBitmapFromStream. Internal to the host
// platform: not exported, not installed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/base/dib.h"
#include "host/base/geometry.h"

namespace host {

// Each decoder takes the whole encoded picture in memory and returns a new Dib
// in the formats codec.h documents, or null for truncated, corrupt or
// oversized data, or a frame that does not exist. None prints, throws or
// keeps state between calls; all are thread-safe.
std::unique_ptr<Dib> DecodeBmp(const uint8_t* data, size_t size);
/// Reduced by 2, 4 or 8 when the smaller picture still has `minSize` pixels
/// each way (the largest such reduction; `reduced`, when given, is set then);
/// whole when `minSize` is empty.
std::unique_ptr<Dib> DecodeJpeg(const uint8_t* data, size_t size, Size minSize = {},
                                bool* reduced = nullptr);
std::unique_ptr<Dib> DecodePng(const uint8_t* data, size_t size);
/// `frame` counts from 0; later frames are composed over the earlier ones.
std::unique_ptr<Dib> DecodeGif(const uint8_t* data, size_t size, int frame);
/// `frame` is the image file directory, counting from 0.
std::unique_ptr<Dib> DecodeTiff(const uint8_t* data, size_t size, int frame);
/// A JBIG2 file (with its file header); decodes the first page.
std::unique_ptr<Dib> DecodeJbig2(const uint8_t* data, size_t size);

/// A palette of `count` entries (at most 256) padded with opaque black up to
/// 256, so that indices past the picture's own palette read as black rather
/// than transparent. False when the Dib refuses it.
bool SetPaddedPalette(Dib& dib, const uint32_t* entries, int count);

/// Sets the 256-entry grey ramp of 8-bit greyscale pictures.
void SetGreyPalette(Dib& dib);

}  // namespace host
