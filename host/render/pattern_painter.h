// Filling shapes with tiled patterns. Internal to the renderer.
#pragma once

#include "host/base/matrix.h"
#include "host/base/path.h"
#include "host/render/paint_context.h"

namespace host {

struct OfdPattern;

/// Fills `path` (mapped by `matrix`, the filled object's coordinates to the
/// device) with copies of the pattern's cell: one every XStep, YStep (the
/// cell size where a step is 0) in the cell's coordinates, mirrored on
/// alternate columns and/or rows by ReflectMethod, all under the pattern's
/// CTM, clipped to the path. `alpha` (0..255) scales every cell's opacity.
/// False, with nothing drawn, when the tiling is degenerate or would take
/// too many cells or objects; the caller then fills with a flat colour.
bool FillWithPattern(PaintContext& pc, const Path& path, const Matrix& matrix,
                     const OfdPattern& pattern, FillRule rule, int alpha);

}  // namespace host
