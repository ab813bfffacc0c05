// Drawing image objects, seal pictures among them. Internal to the renderer.
#pragma once

#include "host/base/matrix.h"
#include "host/render/paint_context.h"

namespace host {

class OfdImageObject;

/// Draws the picture of `object` over its unit square (mapped by its CTM,
/// its boundary's origin and `parent`), with its mask and opacity. For a
/// seal (a resource that IsSeal()) the installed seal image parser is asked
/// for a picture of the pixel size the object covers; that picture is drawn
/// multiplied onto the page when it is opaque (white paper shows through),
/// normally when it has transparency, and then deleted. Without a parser, or
/// when it answers null, nothing is drawn for a seal.
void PaintImage(PaintContext& pc, const OfdImageObject& object, const Matrix& parent, int alpha);

}  // namespace host
