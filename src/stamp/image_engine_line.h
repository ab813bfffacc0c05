// The straight-line stamp: the whole text in one device call, sized so that
// it spans a share of the device width, placed by the alignment keywords and
// offsets and turned about its origin.
#pragma once

#include "stamp/image_engine.h"

namespace tarvik {

/// Draws the stamp text as one straight, optionally rotated line. The font
/// size is computed, not taken from the settings: the text, counted as n
/// characters of one em each, spans `widthPercent` percent of the device
/// width.
class ImageEngine_Line : public ImageEngine {
 public:
  using ImageEngine::ImageEngine;

  /// Stores the computed size in `fontSize` and draws the whole text with one
  /// device call. False, drawing nothing, for an absent or empty text; false
  /// (reported as "Draw Line Error" when a reporter is set) when the device
  /// refuses the text; true otherwise.
  bool Draw(host::Device* device) override;
};

}  // namespace tarvik
