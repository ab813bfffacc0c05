// GetSealImageTextRect: the seal text of an annotation as records, without
// drawing.
#include <cmath>
#include <memory>
#include <vector>

#include "host/ofd/ofd_annotation.h"
#include "tarvik/tarvik.h"
#include "text/seal_text_layout.h"

namespace tarvik {

namespace {

// The band a straight run occupies, from the chosen edge over the glyphs to
// 1 mm beyond them. For the centre the first y is the baseline, below the
// second; an unknown vertical alignment gives an empty band at y = 0.
void StraightRunBand(const GRect& r, float maxHeight, uint32_t verticalAlign, int32_t outside,
                     float& firstY, float& secondY) {
  switch (verticalAlign) {
    case 0:
      firstY = outside != 0 ? r.top - maxHeight - 1 : r.top;
      secondY = outside != 0 ? r.top : r.top + maxHeight + 1;
      break;
    case 1:
      firstY = outside != 0 ? r.bottom : r.bottom - maxHeight - 1;
      secondY = outside != 0 ? r.bottom + maxHeight + 1 : r.bottom;
      break;
    case 2:
      firstY = StraightRunBaseline(r, maxHeight, 2, outside);
      secondY = firstY - maxHeight - 1;
      break;
    default:
      firstY = 0;
      secondY = 0;
      break;
  }
}

}  // namespace

int GetSealImageTextRect(host::OfdAnnotationSeal* annotation,
                         const RenderSealParam::TextParam& param, std::vector<TextObject>& out) {
  if (!annotation) return 0;
  const GRect rect = annotation->Boundary;
  const int n = param.text.GetLength();
  if (param.fontSize == 0 || n == 0) return 0;
  const float w = std::fabs(rect.right - rect.left);
  const float h = std::fabs(rect.bottom - rect.top);
  if (w == 0 || h == 0) return 0;

  const std::unique_ptr<host::Font> font = LoadSealTextFont(param);
  if (!font) return 0;
  const float size = SealTextSize(param.fontSize);

  if (param.layoutKind == 0) {
    std::vector<float> advances;
    advances.reserve(static_cast<size_t>(n));
    const SealTextMeasure m = MeasureSealText(*font, param.text, size, true, &advances);
    TextObject record;
    const float startX = StraightRunStartX(rect, m.textWidth, param.horizontalAlign);
    float firstY = 0;
    float secondY = 0;
    StraightRunBand(rect, m.maxHeight, param.verticalAlign, param.outside, firstY, secondY);
    record.rect = GRect(startX, firstY, startX + m.textWidth, secondY);
    record.chars.reserve(static_cast<size_t>(n));
    float x = startX;
    for (int i = 0; i < n; ++i) {
      record.chars.push_back({static_cast<uint32_t>(param.text[i]), x, firstY});
      x += advances[static_cast<size_t>(i)];
    }
    out.push_back(std::move(record));
    return 1;
  }

  // Here the centre is taken from the magnitudes of the corner sums.
  const SealEllipse ellipse =
      MakeSealEllipse(std::fabs(rect.left + rect.right) * 0.5f,
                      std::fabs(rect.top + rect.bottom) * 0.5f, w, h, size, param);
  for (int i = 0; i < n; ++i) {
    TextObject record;
    record.matrix = PlaceOnEllipse(i, n, ellipse, param.text, font.get(), size);
    record.chars.push_back({static_cast<uint32_t>(param.text[i]), 0.0f, 0.0f});
    out.push_back(std::move(record));
  }
  return 1;
}

}  // namespace tarvik
