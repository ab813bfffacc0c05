#include "text/seal_text_layout.h"

#include <cmath>
#include <numbers>

#include "host/base/app_context.h"
#include "host/base/font_mgr.h"
#include "host/base/units.h"

namespace tarvik {

namespace {

constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;

}  // namespace

float SealTextSize(uint32_t fontSize) {
  return static_cast<float>(fontSize * host::kMmPerInch / host::kPointsPerInch);
}

std::unique_ptr<host::Font> LoadSealTextFont(const RenderSealParam::TextParam& param) {
  auto font = std::make_unique<host::Font>(nullptr);
  const char32_t* family = param.fontName.IsNull() ? U"" : param.fontName.c_str();
  const int weight = param.bold != 0 ? host::kFontWeightBold : host::kFontWeightRegular;
  if (font->LoadFont(family, family, 3, weight, static_cast<int>(param.italic)) == 0)
    return nullptr;
  return font;
}

SealTextMeasure MeasureSealText(const host::Font& font, const host::WideString& text, float size,
                                bool wantHeights, std::vector<float>* advances) {
  SealTextMeasure m;
  host::AppContext* context = host::AppContext::Get();
  const host::FontMgr* mgr = context ? context->GetFontMgr() : nullptr;
  const host::FaceHandle face = font.GetFaceHandle();
  const int n = text.GetLength();
  for (int i = 0; i < n; ++i) {
    const uint32_t glyph = mgr ? mgr->GetGlyphIndex(face, text[i]) : 0;
    if (glyph == 0) {
      if (advances) advances->push_back(0.0f);
      continue;
    }
    const float advance = static_cast<float>(mgr->GetGlyphAdvance(face, glyph)) * size / 1000.0f;
    m.textWidth += advance;
    if (advances) advances->push_back(advance);
    if (wantHeights) {
      const float height = static_cast<float>(mgr->GetGlyphHeight(face, glyph)) * size / 1000.0f;
      // Small differences between glyph tops do not move the line.
      if (static_cast<double>(height - m.maxHeight) > 0.1) m.maxHeight = height;
    }
  }
  return m;
}

float GetCharWidth(const host::WideString& text, host::Font* font, int index, float size) {
  if (!font || index < 0 || index >= text.GetLength()) return 0.0f;
  const uint32_t glyph = font->GetGlyphIndex(text[index]);
  if (glyph == 0) return 0.0f;
  return static_cast<float>(font->GetGlyphAdvance(glyph)) * size / 1000.0f;
}

float StraightRunStartX(const host::GRect& rect, float textWidth, uint32_t horizontalAlign) {
  const float w = std::fabs(rect.right - rect.left);
  switch (horizontalAlign) {
    case 0: return rect.left;
    case 1: return rect.left + (w - textWidth);
    default: return rect.left + (w - textWidth) * 0.5f;
  }
}

float StraightRunBaseline(const host::GRect& rect, float maxHeight, uint32_t verticalAlign,
                          int32_t outside) {
  const float h = std::fabs(rect.bottom - rect.top);
  switch (verticalAlign) {
    case 0: return outside != 0 ? rect.top : rect.top + maxHeight;
    case 1: return outside != 0 ? rect.bottom + maxHeight : rect.bottom;
    case 2: return rect.top + h * 0.5f + maxHeight * 0.5f;
    default: return rect.bottom + maxHeight;
  }
}

bool StraightRunNeedsHeights(uint32_t verticalAlign, int32_t outside) {
  return !((verticalAlign == 1 && outside == 0) || (verticalAlign == 0 && outside != 0));
}

host::Matrix RunMatrix(float x, float baseline, float angleDegrees) {
  const double r = static_cast<double>(angleDegrees) * kRadiansPerDegree;
  const float c = static_cast<float>(std::cos(r));
  const float s = static_cast<float>(std::sin(r));
  return host::Matrix(c, s, -s, c, x, baseline);
}

SealEllipse MakeSealEllipse(float cx, float cy, float w, float h, float size,
                            const RenderSealParam::TextParam& param) {
  SealEllipse e;
  e.cx = cx;
  e.cy = cy;
  const float margin = size / 3 + size / 3;
  e.a = w * 0.5f - static_cast<float>(param.offsetY) - margin;
  e.b = h * 0.5f - static_cast<float>(param.offsetX) - margin;
  const uint32_t v = param.verticalAlign;
  const uint32_t hz = param.horizontalAlign;
  if (v == 0 && hz == 2) {
    e.startAngle = 270;
  } else if (v == 2 && hz == 0) {
    e.startAngle = 0;
  } else if (v == 1 && hz == 2) {
    e.startAngle = 90;
  } else {
    e.startAngle = 180;  // (2, 1) and every other pair: the left end
  }
  return e;
}

host::Matrix PlaceOnEllipse(int index, int count, const SealEllipse& ellipse,
                            const host::WideString& text, host::Font* font, float size) {
  const float width = GetCharWidth(text, font, index, size);
  const float a2 = ellipse.a * ellipse.a;
  const float b2 = ellipse.b * ellipse.b;
  if (count <= 0 || a2 == 0 || b2 == 0 || !std::isfinite(a2) || !std::isfinite(b2)) {
    return host::Matrix(1, 0, 0, 1, ellipse.cx - width * 0.5f, ellipse.cy);
  }
  const float step = 360.0f / static_cast<float>(count);
  const float theta = static_cast<float>(index) * step;
  const float beta = ellipse.startAngle + theta;
  const double betaRad = static_cast<double>(beta) * kRadiansPerDegree;
  const float cb = static_cast<float>(std::cos(betaRad));
  const float sb = static_cast<float>(std::sin(betaRad));
  const float rho = 1.0f / std::sqrt(cb * cb / a2 + sb * sb / b2);
  const float px = ellipse.cx + rho * cb;
  const float py = ellipse.cy + rho * sb;
  const float dx = px - ellipse.cx;
  const float dy = py - ellipse.cy;
  // The tangent, pointing the way the text runs: clockwise round the ellipse.
  const float alpha = static_cast<float>(
      std::atan2(static_cast<double>(dx / a2), static_cast<double>(-dy / b2)) / kRadiansPerDegree);
  const double alphaRad = static_cast<double>(alpha) * kRadiansPerDegree;
  const float ca = static_cast<float>(std::cos(alphaRad));
  const float sa = static_cast<float>(std::sin(alphaRad));
  return host::Matrix(ca, sa, -sa, ca, px - width * 0.5f * ca, py - width * 0.5f * sa);
}

}  // namespace tarvik
