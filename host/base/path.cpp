#include "host/base/path.h"

namespace host {

void Path::MoveTo(float x, float y) {
  segments_.push_back({Op::kMove, {x, y, 0, 0, 0, 0}});
  curX_ = startX_ = x;
  curY_ = startY_ = y;
}

void Path::LineTo(float x, float y) {
  if (segments_.empty()) MoveTo(curX_, curY_);
  segments_.push_back({Op::kLine, {x, y, 0, 0, 0, 0}});
  curX_ = x;
  curY_ = y;
}

void Path::QuadTo(float x1, float y1, float x2, float y2) {
  // Degree elevation: the cubic's controls lie 2/3 of the way to the quad's.
  const float c1x = curX_ + (x1 - curX_) * 2.0f / 3.0f;
  const float c1y = curY_ + (y1 - curY_) * 2.0f / 3.0f;
  const float c2x = x2 + (x1 - x2) * 2.0f / 3.0f;
  const float c2y = y2 + (y1 - y2) * 2.0f / 3.0f;
  CubicTo(c1x, c1y, c2x, c2y, x2, y2);
}

void Path::CubicTo(float x1, float y1, float x2, float y2, float x3, float y3) {
  if (segments_.empty()) MoveTo(curX_, curY_);
  segments_.push_back({Op::kCubic, {x1, y1, x2, y2, x3, y3}});
  curX_ = x3;
  curY_ = y3;
}

void Path::Close() {
  if (segments_.empty()) return;
  segments_.push_back({Op::kClose, {0, 0, 0, 0, 0, 0}});
  curX_ = startX_;
  curY_ = startY_;
}

void Path::AddRect(float x, float y, float w, float h) {
  MoveTo(x, y);
  LineTo(x + w, y);
  LineTo(x + w, y + h);
  LineTo(x, y + h);
  Close();
}

void Path::AddEllipse(float cx, float cy, float rx, float ry) {
  constexpr float k = 0.5522847498f;  // cubic approximation of a quarter circle
  MoveTo(cx + rx, cy);
  CubicTo(cx + rx, cy + ry * k, cx + rx * k, cy + ry, cx, cy + ry);
  CubicTo(cx - rx * k, cy + ry, cx - rx, cy + ry * k, cx - rx, cy);
  CubicTo(cx - rx, cy - ry * k, cx - rx * k, cy - ry, cx, cy - ry);
  CubicTo(cx + rx * k, cy - ry, cx + rx, cy - ry * k, cx + rx, cy);
  Close();
}

}  // namespace host
