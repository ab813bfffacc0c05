#include "host/render/text_painter.h"

#include <cmath>
#include <vector>

#include "host/ofd/ofd_page_object.h"
#include "host/ofd/ofd_resource.h"
#include "host/ofd/text_code.h"
#include "host/render/font_cache.h"
#include "host/render/path_painter.h"

namespace host {

namespace {

// Larger text (in millimetres) is taken as a mistake and not drawn.
constexpr float kMaxFontSize = 10000;

// The fonts asked for a character in turn: the object's font, the family an
// embedded font names, the CJK fallback. Distinct, non-null.
struct Fonts {
  Font* list[3];
  int count = 0;
  void Add(Font* font) {
    if (!font) return;
    for (int i = 0; i < count; ++i)
      if (list[i] == font) return;
    list[count++] = font;
  }
};

// The glyph of character `i` of a text code and the font it comes from.
struct Resolved {
  uint32_t glyph = 0;
  int font = 0;
};

Resolved Resolve(const Fonts& fonts, const OfdTextCode& code, size_t i) {
  Resolved r;
  if (i < code.glyphs.size() && code.glyphs[i] >= 0) {
    r.glyph = static_cast<uint32_t>(code.glyphs[i]);
    return r;
  }
  const char32_t ch = code.text[static_cast<int>(i)];
  for (r.font = 0; r.font < fonts.count; ++r.font) {
    r.glyph = fonts.list[r.font]->GetGlyphIndex(ch);
    if (r.glyph != 0) return r;
  }
  return Resolved();
}

struct AdvanceState {
  const Fonts* fonts;
  const OfdTextCode* code;
  float scale;  // thousandths of an em to object units
};

float Advance(size_t index, void* user) {
  const auto* s = static_cast<const AdvanceState*>(user);
  // A character moved down by DeltaY (vertical text) does not also move along.
  if (index < s->code->deltaY.size() && s->code->deltaY[index] != 0) return 0;
  const Resolved r = Resolve(*s->fonts, *s->code, index);
  return static_cast<float>(s->fonts->list[r.font]->GetGlyphAdvance(r.glyph)) * s->scale;
}

}  // namespace

void PaintText(PaintContext& pc, const OfdTextObject& object, const Matrix& parent, int alpha) {
  if (!(object.size > 0) || !(object.size < kMaxFontSize) || object.textCodes.empty()) return;
  const Matrix matrix = ObjectMatrix(object, parent);
  if (!IsFiniteMatrix(matrix)) return;
  const OfdColor* color = object.fill ? &object.fillColor : object.stroke ? &object.strokeColor
                                                                          : nullptr;
  if (!color) return;
  const uint32_t argb = ScaleAlpha(SolidColor(*color), alpha * object.alpha / 255);
  if ((argb >> 24) == 0) return;

  Fonts fonts;
  fonts.Add(pc.fonts->GetFont(object.font, object.weight, object.italic));
  if (object.font && !object.font->fontFile.IsEmpty())
    fonts.Add(pc.fonts->GetSystemFont(object.font, object.weight, object.italic));
  fonts.Add(pc.fonts->GetFallbackFont());
  if (fonts.count == 0) return;

  const float hScale = std::isfinite(object.hScale) && object.hScale > 0 ? object.hScale : 1.0f;
  Matrix glyphMatrix(object.size * hScale, 0, 0, object.size, 0, 0);
  if (object.charDirection == 90 || object.charDirection == 180 || object.charDirection == 270) {
    const double angle = object.charDirection * 3.14159265358979323846 / 180;
    const float cs = static_cast<float>(std::round(std::cos(angle)));
    const float sn = static_cast<float>(std::round(std::sin(angle)));
    glyphMatrix = glyphMatrix.Then(Matrix(cs, sn, -sn, cs, 0, 0));
  }

  std::vector<GlyphPosition> runs[3];
  std::vector<float> xs, ys;
  for (const OfdTextCode& code : object.textCodes) {
    const size_t n = static_cast<size_t>(code.text.GetLength());
    if (n == 0) continue;
    const std::vector<float>* px = &code.xs;
    const std::vector<float>* py = &code.ys;
    if (code.deltaX.size() + 1 < n) {
      // DeltaX runs out: the rest advance by the font's widths.
      AdvanceState state{&fonts, &code, object.size * hScale / 1000};
      LayoutCharacters(code.x, code.y, code.deltaX, code.deltaY, n, Advance, &state, xs, ys);
      px = &xs;
      py = &ys;
    }
    for (size_t i = 0; i < n && i < px->size() && i < py->size(); ++i) {
      const Resolved r = Resolve(fonts, code, i);
      if (r.glyph == 0) continue;
      runs[r.font].push_back(GlyphPosition{r.glyph, (*px)[i], (*py)[i]});
    }
  }
  const BlendMode blend = ObjectBlendMode(object);
  for (int f = 0; f < fonts.count; ++f) {
    if (runs[f].empty()) continue;
    pc.device->DrawGlyphs(runs[f].data(), static_cast<int>(runs[f].size()), fonts.list[f], matrix,
                          glyphMatrix, argb, blend);
  }
}

}  // namespace host
