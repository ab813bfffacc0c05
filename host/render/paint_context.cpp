#include "host/render/paint_context.h"

#include <algorithm>
#include <cmath>

#include "host/ofd/ofd_page_object.h"

namespace host {

Matrix BoundaryOriginMatrix(const OfdPageObject& object, const Matrix& parent) {
  return Matrix(1, 0, 0, 1, object.boundary.left, object.boundary.top).Then(parent);
}

Matrix ObjectMatrix(const OfdPageObject& object, const Matrix& parent) {
  return object.ctm.Then(BoundaryOriginMatrix(object, parent));
}

uint32_t ScaleAlpha(uint32_t argb, int alpha) {
  const uint32_t a = static_cast<uint32_t>(std::clamp(alpha, 0, 255));
  const uint32_t scaled = ((argb >> 24) * a + 127) / 255;
  return scaled << 24 | (argb & 0x00FFFFFF);
}

BlendMode ObjectBlendMode(const OfdPageObject& object) {
  return object.blendMode == "Multiply" ? BlendMode::kMultiply : BlendMode::kNormal;
}

bool IsFiniteMatrix(const Matrix& m) {
  return std::isfinite(m.a) && std::isfinite(m.b) && std::isfinite(m.c) && std::isfinite(m.d) &&
         std::isfinite(m.e) && std::isfinite(m.f);
}

}  // namespace host
