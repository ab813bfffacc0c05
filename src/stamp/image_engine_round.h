// The round stamp: the text once around an ellipse inscribed in the device,
// clockwise, one device call per character.
#pragma once

#include "stamp/image_engine.h"

namespace tarvik {

/// Draws each character of the stamp text by itself at `fontSize`, spaced by
/// equal angles as seen from the device's centre, its advance centred on its
/// point of the ellipse and its baseline along the ellipse's tangent (glyph
/// tops outward). The first character stands at the left end of the
/// horizontal axis, or at the top ("Center"/"Top"), the right end
/// ("Left"/"Center") or the bottom ("Center"/"Bottom"). The ellipse's
/// semi-axes lie twice a third of the font size inside the device's edges
/// moved in by `offsetX` (sides) and `offsetY` (top and bottom).
class ImageEngine_Round : public ImageEngine {
 public:
  using ImageEngine::ImageEngine;

  /// Draws the characters in text order; the device's results are not
  /// examined. When a semi-axis is 0, or the product of the squared
  /// semi-axes is not finite, there is no curve to follow: each character is
  /// set upright with its advance centred on the device's centre. Always
  /// true.
  bool Draw(host::Device* device) override;
};

}  // namespace tarvik
