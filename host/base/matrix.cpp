#include "host/base/matrix.h"

#include <algorithm>
#include <cmath>

namespace host {

Matrix Matrix::Then(const Matrix& m) const {
  return Matrix(a * m.a + b * m.c, a * m.b + b * m.d, c * m.a + d * m.c, c * m.b + d * m.d,
                e * m.a + f * m.c + m.e, e * m.b + f * m.d + m.f);
}

void Matrix::Contact(const Matrix& m) { *this = Then(m); }

Matrix Matrix::Inverse() const {
  const double det = static_cast<double>(a) * d - static_cast<double>(b) * c;
  if (det == 0 || !std::isfinite(det)) return Matrix();
  const double ia = d / det, ib = -b / det, ic = -c / det, id = a / det;
  const double ie = -(e * ia + f * ic), jf = -(e * ib + f * id);
  return Matrix(static_cast<float>(ia), static_cast<float>(ib), static_cast<float>(ic),
                static_cast<float>(id), static_cast<float>(ie), static_cast<float>(jf));
}

void Matrix::Translate(float x, float y) { Contact(Matrix(1, 0, 0, 1, x, y)); }

void Matrix::Scale(float sx, float sy) { Contact(Matrix(sx, 0, 0, sy, 0, 0)); }

void Matrix::TransformPoint(float& x, float& y) const {
  const float nx = a * x + c * y + e;
  const float ny = b * x + d * y + f;
  x = nx;
  y = ny;
}

void Matrix::TransformRect(GRect& rect) const {
  float xs[4] = {rect.left, rect.right, rect.left, rect.right};
  float ys[4] = {rect.top, rect.top, rect.bottom, rect.bottom};
  for (int i = 0; i < 4; ++i) TransformPoint(xs[i], ys[i]);
  rect.left = *std::min_element(xs, xs + 4);
  rect.right = *std::max_element(xs, xs + 4);
  rect.top = *std::min_element(ys, ys + 4);
  rect.bottom = *std::max_element(ys, ys + 4);
}

float Matrix::XUnit() const { return std::hypot(a, b); }

float Matrix::YUnit() const { return std::hypot(c, d); }

}  // namespace host
