// Colour operations on seal bitmaps: a red cross over the whole seal, and
// turning a seal grey or black. All work in place on a bitmap the caller owns
// (a copy, never a cached bitmap) and report nothing: each either does its
// work or leaves the bitmap as it was.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/dib.h"

namespace tarvik {

/// Draws a thick opaque red cross corner to corner over `dib`: one stroke from
/// (0, 0) towards (width, height), one from (width, 0) towards (0, height).
/// Does nothing to a bitmap of fewer than 24 bits per pixel (paletted). Writes
/// the pixel bytes directly (see DrawThickLine). Not thread-safe for one `dib`.
void DrawCrossMark(host::Dib& dib);

/// Draws a stroke three pixels thick from (x0, y0) towards (x1, y1) by integer
/// line stepping: a 3 x 3 block is painted around every step point except the
/// end point itself; pixels outside the bitmap are skipped. A painted pixel's
/// N bytes (N = bits per pixel / 8) become the last N of 00 00 FF FF, so a
/// 32-bit pixel becomes 0xFFFF0000 (opaque red) and a 24-bit pixel B, G, R =
/// 00, FF, FF, whatever the format. Bitmaps of more than 32 bits per pixel or
/// fewer than 8 are left unchanged. Takes max(|x1 - x0|, |y1 - y0|) steps.
/// Not thread-safe for one `dib`.
void DrawThickLine(host::Dib& dib, int x0, int y0, int x1, int y1);

/// The grey of a 0xAARRGGBB colour: Y = (11 R + 16 G + 5 B) >> 5 in all three
/// colour bytes, alpha unchanged.
uint32_t GrayOf(uint32_t colour);

/// Turns `dib` grey. A paletted bitmap (format 2) keeps its pixels and format
/// and has each non-zero palette entry replaced by its GrayOf. Any other
/// format not already 7 is first converted to format 7 (32-bit 0xAARRGGBB);
/// the old bitmap is deleted and `dib` then points at the converted one, which
/// the caller owns. Every non-zero pixel then becomes its GrayOf. If the
/// conversion fails, or `dib` is null, nothing changes. Not thread-safe for
/// one bitmap.
void ConvertToGray(host::Dib*& dib);
/// As above, for a bitmap held in a unique_ptr.
void ConvertToGray(std::unique_ptr<host::Dib>& dib);

/// Turns `dib` black: as ConvertToGray, except that a non-zero palette entry
/// becomes entry & 0xFF000000, and a pixel that is neither 0 nor 0xFFFFFFFF
/// becomes pixel & 0xFF000000 (alpha kept, colour black). Opaque white pixels
/// stay white; an opaque white palette entry turns black. Same ownership and
/// failure rules as ConvertToGray.
void ConvertToBlack(host::Dib*& dib);
/// As above, for a bitmap held in a unique_ptr.
void ConvertToBlack(std::unique_ptr<host::Dib>& dib);

}  // namespace tarvik
