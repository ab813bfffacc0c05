// Small geometric value types: integer points, sizes and rectangles, and
// float rectangles in page or device units.
#pragma once

#include "host/base/host_export.h"

namespace host {

/// An integer pixel position.
struct Point {
  int x = 0;
  int y = 0;
  constexpr Point() = default;
  constexpr Point(int px, int py) : x(px), y(py) {}
};

/// An integer size in pixels.
struct Size {
  int width = 0;
  int height = 0;
  constexpr Size() = default;
  constexpr Size(int w, int h) : width(w), height(h) {}
};

/// An integer rectangle; `right` and `bottom` are exclusive.
struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  constexpr Rect() = default;
  constexpr Rect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}
  constexpr int Width() const { return right - left; }
  constexpr int Height() const { return bottom - top; }
  constexpr bool IsEmpty() const { return right <= left || bottom <= top; }
};

/// A float rectangle given by two corners: (left, top) is the first corner and
/// (right, bottom) the second. Nothing reorders the corners implicitly.
struct HOST_API GRect {
  float left = 0;
  float top = 0;
  float right = 0;
  float bottom = 0;
  constexpr GRect() = default;
  constexpr GRect(float l, float t, float r, float b) : left(l), top(t), right(r), bottom(b) {}

  float Width() const { return right - left; }
  float Height() const { return bottom - top; }
  /// True when the rectangle encloses no area: zero width or zero height
  /// (an all-zero rectangle, as an absent clip reads, is null).
  bool IsRectNull() const { return left == right || top == bottom; }
  /// Moves both corners by (dx, dy).
  void OffsetRect(float dx, float dy) {
    left += dx;
    right += dx;
    top += dy;
    bottom += dy;
  }
  /// Puts the smaller coordinates first.
  void Normalize();
  bool operator==(const GRect&) const = default;
};

}  // namespace host
