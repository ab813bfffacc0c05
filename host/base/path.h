// Vector paths and the parameters to fill and stroke them.
#pragma once

#include <cstdint>
#include <vector>

#include "host/base/host_export.h"
#include "host/base/matrix.h"

namespace host {

/// A path of straight and cubic segments in user units.
class HOST_API Path {
 public:
  enum class Op : uint8_t { kMove, kLine, kCubic, kClose };
  struct Segment {
    Op op;
    float pts[6];  // kMove/kLine use pts[0..1]; kCubic uses all six
  };

  void MoveTo(float x, float y);
  void LineTo(float x, float y);
  void QuadTo(float x1, float y1, float x2, float y2);  // stored as a cubic
  void CubicTo(float x1, float y1, float x2, float y2, float x3, float y3);
  void Close();
  /// Appends an axis-aligned rectangle as a closed sub-path.
  void AddRect(float x, float y, float w, float h);
  /// Appends an ellipse inscribed in the rectangle, as four cubics.
  void AddEllipse(float cx, float cy, float rx, float ry);

  bool IsEmpty() const { return segments_.empty(); }
  const std::vector<Segment>& segments() const { return segments_; }
  /// The current point (0, 0 before any segment).
  float CurrentX() const { return curX_; }
  float CurrentY() const { return curY_; }

 private:
  std::vector<Segment> segments_;
  float curX_ = 0, curY_ = 0, startX_ = 0, startY_ = 0;
};

enum class FillRule : uint8_t { kNonZero, kEvenOdd };
enum class LineCap : uint8_t { kButt, kRound, kSquare };
enum class LineJoin : uint8_t { kMiter, kRound, kBevel };

struct StrokeStyle {
  float width = 0.353f;  // in user units; 0 draws the thinnest visible line
  LineCap cap = LineCap::kButt;
  LineJoin join = LineJoin::kMiter;
  float miterLimit = 3.528f;
  std::vector<float> dashes;  // empty: solid
  float dashOffset = 0;
};

/// How a drawn colour or bitmap combines with what is already there.
enum class BlendMode : uint8_t { kNormal, kMultiply };

}  // namespace host
