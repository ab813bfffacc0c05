// Affine matrix (a, b, c, d, e, f) over row vectors: a point (x, y) maps to
// (a x + c y + e, b x + d y + f).
#pragma once

#include "host/base/geometry.h"
#include "host/base/host_export.h"

namespace host {

class HOST_API Matrix {
 public:
  float a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;

  /// The identity.
  constexpr Matrix() = default;
  constexpr Matrix(float ma, float mb, float mc, float md, float me, float mf)
      : a(ma), b(mb), c(mc), d(md), e(me), f(mf) {}

  /// Concatenates `m` after this matrix: afterwards this matrix first applies
  /// its old self, then `m`.
  void Contact(const Matrix& m);
  /// Returns this matrix followed by `m` (this unchanged).
  Matrix Then(const Matrix& m) const;
  /// The inverse; the identity when the matrix is singular.
  Matrix Inverse() const;
  bool IsIdentity() const { return a == 1 && b == 0 && c == 0 && d == 1 && e == 0 && f == 0; }

  void Translate(float x, float y);  // appends a translation
  void Scale(float sx, float sy);    // appends a scale

  void TransformPoint(float& x, float& y) const;
  /// Replaces `rect` with the bounding box of its four transformed corners
  /// (normalised: left <= right, top <= bottom).
  void TransformRect(GRect& rect) const;
  /// Length scale along x, |(a, b)|.
  float XUnit() const;
  /// Length scale along y, |(c, d)|.
  float YUnit() const;

  bool operator==(const Matrix&) const = default;
};

}  // namespace host
