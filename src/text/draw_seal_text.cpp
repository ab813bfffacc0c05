#include "text/draw_seal_text.h"

#include <cmath>
#include <memory>

#include "text/seal_text_layout.h"

namespace tarvik {

void DrawSealText(Device* device, const GRect& sealRect, const Matrix& pageToDevice,
                  const RenderSealParam::TextParam& param) {
  if (!device || param.fontSize == 0) return;
  const float w = std::fabs(sealRect.right - sealRect.left);
  const float h = std::fabs(sealRect.bottom - sealRect.top);
  const int n = param.text.GetLength();
  if (w == 0 || h == 0 || n == 0) return;

  const std::unique_ptr<host::Font> font = LoadSealTextFont(param);
  if (!font) return;
  const float size = SealTextSize(param.fontSize);

  if (param.layoutKind == 0) {
    // Heights are asked of the font only when the baseline depends on them.
    const bool wantHeights = StraightRunNeedsHeights(param.verticalAlign, param.outside);
    const SealTextMeasure m = MeasureSealText(*font, param.text, size, wantHeights);
    Matrix placement =
        RunMatrix(StraightRunStartX(sealRect, m.textWidth, param.horizontalAlign),
                  StraightRunBaseline(sealRect, m.maxHeight, param.verticalAlign, param.outside),
                  param.angle);
    placement.Contact(pageToDevice);
    device->DrawText(param.text.c_str(), n, font.get(), &placement, param.color, size);
    return;
  }

  const SealEllipse ellipse =
      MakeSealEllipse((sealRect.left + sealRect.right) * 0.5f,
                      (sealRect.top + sealRect.bottom) * 0.5f, w, h, size, param);
  for (int i = 0; i < n; ++i) {
    const char32_t one = param.text[i];
    Matrix placement = PlaceOnEllipse(i, n, ellipse, param.text, font.get(), size);
    placement.Contact(pageToDevice);
    // A character that fails to draw does not stop the others.
    device->DrawText(&one, 1, font.get(), &placement, param.color, size);
  }
}

}  // namespace tarvik
