#include "host/render/path_painter.h"

#include <algorithm>

#include "host/ofd/ofd_color.h"
#include "host/ofd/ofd_page_object.h"
#include "host/render/pattern_painter.h"
#include "host/render/shading_painter.h"

namespace host {

namespace {

// Looks through a cell (and blocks inside it, to a small depth) for the
// first object that puts colour on the page.
bool FindCellColor(const OfdPageBlock& block, int depth, uint32_t& out) {
  if (depth > 8) return false;
  for (const auto& child : block.children) {
    if (!child || !child->visible) continue;
    switch (child->GetType()) {
      case OfdPageObject::Type::kPageBlock:
        if (FindCellColor(static_cast<const OfdPageBlock&>(*child), depth + 1, out)) return true;
        break;
      case OfdPageObject::Type::kPath: {
        const auto& path = static_cast<const OfdPathObject&>(*child);
        if (!path.fill && !path.stroke) break;
        const OfdColor& c = path.fill ? path.fillColor : path.strokeColor;
        if (c.pattern) break;  // a pattern within a pattern: look further
        out = ScaleAlpha(c.ToArgb(), path.alpha);
        return true;
      }
      case OfdPageObject::Type::kText:
        if (child->fillColor.pattern) break;
        out = ScaleAlpha(child->fillColor.ToArgb(), child->alpha);
        return true;
      default:
        break;
    }
  }
  return false;
}

}  // namespace

uint32_t PatternColor(const OfdPattern& pattern) {
  uint32_t color = 0;
  if (pattern.cell) FindCellColor(*pattern.cell, 0, color);
  return color;
}

uint32_t SolidColor(const OfdColor& color) {
  if (color.pattern && !color.shading) return ScaleAlpha(PatternColor(*color.pattern), color.alpha);
  return color.ToArgb();
}

void FillWithColor(PaintContext& pc, const Path& path, const Matrix& matrix, const OfdColor& color,
                   FillRule rule, int alpha, BlendMode blend) {
  if (color.shading) {
    Gradient gradient;
    if (MakeGradient(*color.shading, gradient)) {
      pc.device->FillPathGradient(path, matrix, gradient, rule,
                                  alpha * std::clamp(color.alpha, 0, 255) / 255, blend);
    }
    return;
  }
  if (color.pattern &&
      FillWithPattern(pc, path, matrix, *color.pattern, rule,
                      alpha * std::clamp(color.alpha, 0, 255) / 255)) {
    return;
  }
  const uint32_t argb = ScaleAlpha(SolidColor(color), alpha);
  if ((argb >> 24) == 0) return;
  pc.device->FillPath(path, matrix, argb, rule, blend);
}

void PaintPath(PaintContext& pc, const OfdPathObject& object, const Matrix& parent, int alpha) {
  if (object.path.IsEmpty()) return;
  const Matrix matrix = ObjectMatrix(object, parent);
  if (!IsFiniteMatrix(matrix)) return;
  const int opacity = alpha * object.alpha / 255;
  const BlendMode blend = ObjectBlendMode(object);
  if (object.fill) FillWithColor(pc, object.path, matrix, object.fillColor, object.rule, opacity, blend);
  if (object.stroke) {
    const uint32_t argb = ScaleAlpha(SolidColor(object.strokeColor), opacity);
    if ((argb >> 24) != 0) pc.device->StrokePath(object.path, matrix, argb, object.strokeStyle, blend);
  }
}

}  // namespace host
