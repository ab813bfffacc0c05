// What the painters of the page renderer share: the device, caches and the
// seal picture parser. Internal to the renderer.
#pragma once

#include <cstdint>

#include "host/base/device.h"
#include "host/base/matrix.h"
#include "host/render/ofd_progressive_render.h"

namespace host {

class FontCache;
class ImageCache;
class OfdPageObject;

struct PaintContext {
  Device* device = nullptr;
  FontCache* fonts = nullptr;
  ImageCache* images = nullptr;
  SealImageParser sealParser = nullptr;
  void* sealRequest = nullptr;
  RenderDeviceCreator deviceCreator = nullptr;
  void* deviceCreatorData = nullptr;
  /// Pattern cells being drawn: a pattern within a cell is drawn flat.
  int patternDepth = 0;
};

/// The matrix from an object's own coordinates to the device: its CTM, then
/// its boundary's top-left corner, then `parent` (the parent's coordinates
/// to the device).
Matrix ObjectMatrix(const OfdPageObject& object, const Matrix& parent);
/// The matrix from an object's boundary coordinates (origin at the
/// boundary's top-left corner, no CTM) to the device.
Matrix BoundaryOriginMatrix(const OfdPageObject& object, const Matrix& parent);
/// `argb` with its alpha scaled by `alpha` (0..255).
uint32_t ScaleAlpha(uint32_t argb, int alpha);
/// The device blend mode for an object's BlendMode attribute.
BlendMode ObjectBlendMode(const OfdPageObject& object);
/// True when every entry of the matrix is finite.
bool IsFiniteMatrix(const Matrix& m);

}  // namespace host
