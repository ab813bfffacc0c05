// Axial and radial shadings as device gradients. Internal to the renderer.
#pragma once

#include "host/base/gradient.h"

namespace host {

struct OfdShading;

/// Converts a shading into a device gradient in the same coordinates:
/// stops without a position are spread evenly, MapType Repeat and Reflect
/// repeat the ramp every MapUnit, and Extend decides what lies beyond the
/// ends (a one-sided Extend of a radial shading pads both ends). False when
/// the shading has no stop or a non-finite point.
bool MakeGradient(const OfdShading& shading, Gradient& out);

}  // namespace host
