// Drawing text objects. Internal to the renderer.
#pragma once

#include "host/base/matrix.h"
#include "host/render/paint_context.h"

namespace host {

class OfdTextObject;

/// Draws the characters of `object` at their positions (X, Y, DeltaX,
/// DeltaY; the font's advances where the deltas run out), with glyph indices
/// from CGTransform where given, in its fill colour (its stroke colour when it
/// is only stroked). Characters an embedded font lacks come from the family
/// it names. `parent` maps the parent's coordinates to the device; `alpha`
/// is the inherited opacity.
void PaintText(PaintContext& pc, const OfdTextObject& object, const Matrix& parent, int alpha);

}  // namespace host
