// How a page is rendered, and what happened to its seals.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/render/render_budget.h"
#include "tarvik/tarvik.h"
#include "tarvik/viewer/status.h"

namespace tarvik::viewer {

/// Options of Document::RenderPage. The text pointer is borrowed for the call.
struct RenderOptions {
  double dpi = 150;                 // resolution of a rendered bitmap; above 0
  uint32_t background = 0xFFFFFFFF;  // 0xAARRGGBB the bitmap starts with
  bool seals = true;                // draw the seals of the document's signatures
  bool cross = false;               // a cross over every seal
  bool crossInvalid = true;         // a cross over the seals of signatures verified invalid
  int colorMode = 0;                // seals: 0 as decoded, 1 grey, 2 black
  int renderMode = 0;               // 0: raster seals cached per document; 1: decoded each time
  /// Text laid out against every seal; null: none.
  const RenderSealParam::TextParam* sealText = nullptr;
  /// Work one page may take (objects, path segments, scan work, picture
  /// memory). A page that reaches a limit stops drawing; what was drawn
  /// stays, and the report's warnings say why ("page 2: too many objects").
  host::RenderLimits limits;
};

/// What happened to one seal annotation of a rendered page.
struct SealResult {
  int signature = -1;   // index into Document::Signatures(); -1 when unknown
  std::string stampId;  // the StampAnnot ID as written
  bool drawn = false;   // false: the seal could not be read; the page is drawn without it
  bool crossed = false;  // drawn with the cross mark
  std::string reason;   // why it was not drawn; empty when drawn
};

/// The outcome of a page render beyond success or failure.
struct RenderReport {
  Error error;                    // the failure, when the page could not be drawn
  int width = 0;                  // bitmap size in pixels (bitmap renders)
  int height = 0;
  std::vector<SealResult> seals;  // one per seal annotation on the page, in drawing order
  std::vector<std::string> warnings;  // page content that was not drawn, and why
};

}  // namespace tarvik::viewer
