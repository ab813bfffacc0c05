// Drawing a signature's seal text on a device, after the seal picture.
#pragma once

#include "host/base/device.h"
#include "host/base/geometry.h"
#include "host/base/matrix.h"
#include "tarvik/tarvik.h"

namespace tarvik {

/// Draws the text of `param` laid out against `sealRect` (page millimetres:
/// first corner (left, top), second corner (right, bottom)) on `device`.
/// The placement of the text in page space is followed by `pageToDevice`.
/// The straight layout makes one text call with the whole run; the ellipse
/// layout one call per character, in text order. One font, loaded for the
/// call and released before it returns, and one size in millimetres serve
/// every call. Draws nothing for a null device, a font size of 0, an absent
/// or empty text, a rectangle of zero width or height, or a font that cannot
/// be loaded. The device's results are ignored. Does not save, clip or
/// restore the device. Thread-safe for distinct devices.
void DrawSealText(Device* device, const GRect& sealRect, const Matrix& pageToDevice,
                  const RenderSealParam::TextParam& param);

}  // namespace tarvik
