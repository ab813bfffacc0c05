// Filling and stroking path objects. Internal to the renderer.
#pragma once

#include "host/base/matrix.h"
#include "host/base/path.h"
#include "host/render/paint_context.h"

namespace host {

class OfdPathObject;
struct OfdColor;
struct OfdPattern;

/// Fills and/or strokes `object`; `parent` maps its parent's coordinates to
/// the device and `alpha` (0..255) is the opacity inherited from its blocks.
void PaintPath(PaintContext& pc, const OfdPathObject& object, const Matrix& parent, int alpha);

/// Fills `path` (mapped by `matrix`) with an OFD colour: solid, an axial or
/// radial shading (whose geometry is in the path's coordinates), or a tiled
/// pattern (drawn as the colour of its cell where tiling is refused).
void FillWithColor(PaintContext& pc, const Path& path, const Matrix& matrix, const OfdColor& color,
                   FillRule rule, int alpha, BlendMode blend);

/// The solid colour that stands for `color` where only one colour can be
/// drawn: a shading's first stop, a pattern's cell colour. 0xAARRGGBB.
uint32_t SolidColor(const OfdColor& color);

/// The colour a pattern cell is mostly drawn with: the colour of its first
/// filled or stroked object; transparent when the cell draws nothing.
uint32_t PatternColor(const OfdPattern& pattern);

}  // namespace host
