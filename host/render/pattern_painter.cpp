#include "host/render/pattern_painter.h"

#include <algorithm>
#include <cmath>

#include "host/ofd/ofd_color.h"
#include "host/ofd/ofd_page_object.h"
#include "host/render/image_painter.h"
#include "host/render/object_clip.h"
#include "host/render/path_painter.h"
#include "host/render/text_painter.h"

namespace host {

namespace {

// Bounds on the work one pattern fill may do: cells drawn, cell objects drawn
// over all cells, and the nesting of blocks within a cell.
constexpr double kMaxCells = 20000;
constexpr double kMaxCellObjects = 200000;
constexpr int kMaxCellDepth = 4;
// A cell smaller than this on the device (in pixels along either axis) is
// not worth drawing one by one.
constexpr double kMinCellPixels = 0.5;

size_t CountObjects(const OfdPageBlock& block, int depth) {
  size_t n = 0;
  for (const auto& child : block.children) {
    if (!child) continue;
    ++n;
    if (child->GetType() == OfdPageObject::Type::kPageBlock && depth < kMaxCellDepth)
      n += CountObjects(static_cast<const OfdPageBlock&>(*child), depth + 1);
  }
  return n;
}

void PaintCellBlock(PaintContext& pc, const OfdPageBlock& block, const Matrix& matrix, int alpha,
                    int depth) {
  for (const auto& child : block.children) {
    if (!child || !child->visible) continue;
    const bool clipped = !child->clips.empty();
    if (clipped) {
      pc.device->SaveState();
      ApplyObjectClips(*pc.device, *child, matrix);
    }
    switch (child->GetType()) {
      case OfdPageObject::Type::kPath:
        PaintPath(pc, static_cast<const OfdPathObject&>(*child), matrix, alpha);
        break;
      case OfdPageObject::Type::kText:
        PaintText(pc, static_cast<const OfdTextObject&>(*child), matrix, alpha);
        break;
      case OfdPageObject::Type::kImage:
        PaintImage(pc, static_cast<const OfdImageObject&>(*child), matrix, alpha);
        break;
      case OfdPageObject::Type::kPageBlock:
        if (depth < kMaxCellDepth) {
          PaintCellBlock(pc, static_cast<const OfdPageBlock&>(*child),
                         ObjectMatrix(*child, matrix), alpha * child->alpha / 255, depth + 1);
        }
        break;
      default:  // composite units are not followed inside a cell
        break;
    }
    if (clipped) pc.device->RestoreState();
  }
}

}  // namespace

bool FillWithPattern(PaintContext& pc, const Path& path, const Matrix& matrix,
                     const OfdPattern& pattern, FillRule rule, int alpha) {
  // A pattern inside a cell of a pattern is drawn flat.
  if (!pattern.cell || pc.patternDepth > 0) return false;
  const float width = pattern.width, height = pattern.height;
  const float xStep = pattern.xStep > 0 ? pattern.xStep : width;
  const float yStep = pattern.yStep > 0 ? pattern.yStep : height;
  if (!(width > 0 && height > 0 && xStep > 0 && yStep > 0) ||
      !std::isfinite(width) || !std::isfinite(height) || !std::isfinite(xStep) ||
      !std::isfinite(yStep)) {
    return false;
  }
  // Cell coordinates to the device. (RelativeTo="Page" is taken as the
  // object's coordinates too: the renderer has no page matrix at hand here.)
  const Matrix cellToDevice = pattern.ctm.Then(matrix);
  if (!IsFiniteMatrix(cellToDevice)) return false;
  const double det = static_cast<double>(cellToDevice.a) * cellToDevice.d -
                     static_cast<double>(cellToDevice.b) * cellToDevice.c;
  if (!(std::fabs(det) > 1e-12)) return false;
  if (cellToDevice.XUnit() * xStep < kMinCellPixels || cellToDevice.YUnit() * yStep < kMinCellPixels)
    return false;

  // The part of the device the shape covers, in cell coordinates.
  GRect box;
  bool first = true;
  for (const Path::Segment& s : path.segments()) {
    const int points = s.op == Path::Op::kCubic ? 3 : s.op == Path::Op::kClose ? 0 : 1;
    for (int i = 0; i < points; ++i) {
      float x = s.pts[2 * i], y = s.pts[2 * i + 1];
      matrix.TransformPoint(x, y);
      if (!std::isfinite(x) || !std::isfinite(y)) return false;
      if (first) box = GRect(x, y, x, y);
      box.left = std::min(box.left, x);
      box.right = std::max(box.right, x);
      box.top = std::min(box.top, y);
      box.bottom = std::max(box.bottom, y);
      first = false;
    }
  }
  if (first) return true;  // nothing to fill
  box.left = std::max(box.left, 0.0f);
  box.top = std::max(box.top, 0.0f);
  box.right = std::min(box.right, static_cast<float>(pc.device->GetWidth()));
  box.bottom = std::min(box.bottom, static_cast<float>(pc.device->GetHeight()));
  if (box.left >= box.right || box.top >= box.bottom) return true;  // off the device
  cellToDevice.Inverse().TransformRect(box);

  const double i0 = std::floor(box.left / xStep) - 1, i1 = std::ceil(box.right / xStep);
  const double j0 = std::floor(box.top / yStep) - 1, j1 = std::ceil(box.bottom / yStep);
  const double cells = (i1 - i0 + 1) * (j1 - j0 + 1);
  const double objects = static_cast<double>(CountObjects(*pattern.cell, 0));
  if (!(cells <= kMaxCells) || !(cells * objects <= kMaxCellObjects)) return false;

  using Reflect = OfdPattern::ReflectMethod;
  const bool mirrorColumns = pattern.reflectMethod == Reflect::kColumn ||
                             pattern.reflectMethod == Reflect::kRowAndColumn;
  const bool mirrorRows =
      pattern.reflectMethod == Reflect::kRow || pattern.reflectMethod == Reflect::kRowAndColumn;
  Path cellRect;
  cellRect.AddRect(0, 0, width, height);
  ++pc.patternDepth;
  pc.device->SaveState();
  pc.device->ClipPath(path, matrix, rule);
  for (double j = j0; j <= j1; ++j) {
    for (double i = i0; i <= i1; ++i) {
      // Odd columns (rows) mirror the cell left to right (top to bottom).
      const bool flipX = mirrorColumns && std::fmod(std::fabs(i), 2) == 1;
      const bool flipY = mirrorRows && std::fmod(std::fabs(j), 2) == 1;
      const Matrix place(flipX ? -1 : 1, 0, 0, flipY ? -1 : 1,
                         static_cast<float>(i * xStep) + (flipX ? width : 0),
                         static_cast<float>(j * yStep) + (flipY ? height : 0));
      const Matrix cell = place.Then(cellToDevice);
      pc.device->SaveState();
      pc.device->ClipPath(cellRect, cell, FillRule::kNonZero);
      PaintCellBlock(pc, *pattern.cell, cell, alpha, 0);
      pc.device->RestoreState();
    }
  }
  pc.device->RestoreState();
  --pc.patternDepth;
  return true;
}

}  // namespace host
