#include "host/render/text_painter.h"

#include <algorithm>
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
// Fonts one text object may draw with; characters past that get boxes.
constexpr size_t kMaxFonts = 16;
// A substitute's glyph wider than the advance the document gives is narrowed
// to fit, but never below this fraction of its width.
constexpr float kMinSqueeze = 0.5f;

// The fonts asked for a character in turn: the embedded file (whose glyph
// indices CGTransforms give), the family the font names, the CJK fallback,
// then faces found for single characters. Distinct, non-null.
struct Fonts {
  std::vector<Font*> list;
  bool embedded = false;  // list[0] is the object's embedded font file
  int basic = 0;          // fonts asked for every character
  int Add(Font* font) {
    if (!font) return -1;
    for (size_t i = 0; i < list.size(); ++i)
      if (list[i] == font) return static_cast<int>(i);
    if (list.size() >= kMaxFonts) return -1;
    list.push_back(font);
    return static_cast<int>(list.size()) - 1;
  }
};

// What character `i` of a text code draws: a glyph of one font, a box (no
// installed font has it), or nothing (joined into an earlier glyph group).
struct Resolved {
  enum Kind { kGlyph, kBlank, kBox, kNothing } kind = kNothing;
  uint32_t glyph = 0;
  int font = 0;
};

struct TextState {
  PaintContext* pc;
  Fonts* fonts;
  const OfdTextCode* code;
  int weight;
  bool italic;
  float scale;  // thousandths of an em to object units along the baseline
};

Resolved Resolve(const TextState& s, size_t i) {
  Resolved r;
  const OfdTextCode& code = *s.code;
  if (s.fonts->embedded && i < code.glyphs.size() && code.glyphs[i] != -1) {
    // Glyph indices are those of the embedded file, which loaded.
    if (code.glyphs[i] < 0) return r;  // joined
    r.kind = Resolved::kGlyph;
    r.glyph = static_cast<uint32_t>(code.glyphs[i]);
    return r;
  }
  const char32_t ch = code.text[static_cast<int>(i)];
  // Blanks and controls draw nothing in any font.
  if (ch <= 0x20 || ch == 0x3000 || ch == 0xA0 || (ch >= 0x7F && ch < 0xA0)) {
    r.glyph = s.fonts->list[0]->GetGlyphIndex(ch);
    r.kind = Resolved::kBlank;
    return r;
  }
  for (r.font = 0; r.font < s.fonts->basic; ++r.font) {
    r.glyph = s.fonts->list[r.font]->GetGlyphIndex(ch);
    if (r.glyph != 0) {
      r.kind = Resolved::kGlyph;
      return r;
    }
  }
  // Any installed face that has it.
  r.font = s.fonts->Add(s.pc->fonts->GetFontForChar(ch, s.weight, s.italic));
  if (r.font >= 0) r.glyph = s.fonts->list[r.font]->GetGlyphIndex(ch);
  if (r.font < 0 || r.glyph == 0) {
    r.font = 0;
    r.kind = Resolved::kBox;
    return r;
  }
  r.kind = Resolved::kGlyph;
  return r;
}

// Thousandths of an em that extra glyphs of character `i` add after its own.
int ExtraAdvance(const TextState& s, size_t i) {
  int sum = 0;
  for (const OfdTextCode::ExtraGlyph& g : s.code->extraGlyphs)
    if (g.character == i) sum += s.fonts->list[0]->GetGlyphAdvance(g.glyph);
  return sum;
}

float Advance(size_t index, void* user) {
  const auto* s = static_cast<const TextState*>(user);
  // A character moved down by DeltaY (vertical text) does not also move along.
  if (index < s->code->deltaY.size() && s->code->deltaY[index] != 0) return 0;
  const Resolved r = Resolve(*s, index);
  int advance = 0;
  if (r.kind == Resolved::kGlyph) advance = s->fonts->list[r.font]->GetGlyphAdvance(r.glyph);
  if (r.kind == Resolved::kBox) advance = 1000;
  if (r.kind == Resolved::kBlank) {
    const char32_t ch = s->code->text[static_cast<int>(index)];
    advance = r.glyph ? s->fonts->list[0]->GetGlyphAdvance(r.glyph) : ch == 0x3000 ? 1000 : 500;
  }
  if (s->fonts->embedded && r.kind != Resolved::kBox) advance += ExtraAdvance(*s, index);
  return static_cast<float>(advance) * s->scale;
}

// Characters laid out at full width in CJK faces; others (Latin, digits)
// are expected at about half an em.
bool IsWide(char32_t ch) {
  return (ch >= 0x1100 && ch <= 0x115F) || (ch >= 0x2E80 && ch <= 0xA4CF) ||
         (ch >= 0xAC00 && ch <= 0xD7A3) || (ch >= 0xF900 && ch <= 0xFAFF) ||
         (ch >= 0xFE30 && ch <= 0xFE4F) || (ch >= 0xFF00 && ch <= 0xFF60) ||
         (ch >= 0xFFE0 && ch <= 0xFFE6) || ch >= 0x20000;
}

// A glyph drawn on its own, narrowed to the advance the document gives it.
struct Squeezed {
  int font;
  GlyphPosition position;
  float factor;
};

// Adds an outlined box for a character no font has: a visible mark in place
// of the glyph, in glyph space 0.1 .. 0.6 em wide and 0.75 em high.
void AddBox(Path& boxes, const Matrix& glyphMatrix, float x, float y) {
  const float corners[4][2] = {{0.1f, 0.05f}, {0.6f, 0.05f}, {0.6f, -0.7f}, {0.1f, -0.7f}};
  for (int k = 0; k < 4; ++k) {
    const float gx = corners[k][0], gy = corners[k][1];
    const float ux = x + glyphMatrix.a * gx + glyphMatrix.c * gy;
    const float uy = y + glyphMatrix.b * gx + glyphMatrix.d * gy;
    if (k == 0) {
      boxes.MoveTo(ux, uy);
    } else {
      boxes.LineTo(ux, uy);
    }
  }
  boxes.Close();
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

  const int weight = object.weight;
  const bool italic = object.italic;
  Fonts fonts;
  if (Font* embedded = pc.fonts->GetEmbeddedFont(object.font)) {
    fonts.Add(embedded);
    fonts.embedded = true;
  }
  fonts.Add(pc.fonts->GetSystemFont(object.font, weight, italic));
  fonts.Add(pc.fonts->GetFallbackFont());
  if (fonts.list.empty()) return;
  fonts.basic = static_cast<int>(fonts.list.size());

  const float hScale = std::isfinite(object.hScale) && object.hScale > 0 ? object.hScale : 1.0f;
  Matrix glyphMatrix(object.size * hScale, 0, 0, object.size, 0, 0);
  const bool upright = object.charDirection == 0;
  if (object.charDirection == 90 || object.charDirection == 180 || object.charDirection == 270) {
    const double angle = object.charDirection * 3.14159265358979323846 / 180;
    const float cs = static_cast<float>(std::round(std::cos(angle)));
    const float sn = static_cast<float>(std::round(std::sin(angle)));
    glyphMatrix = glyphMatrix.Then(Matrix(cs, sn, -sn, cs, 0, 0));
  }
  const float emScale = object.size * hScale / 1000;

  std::vector<std::vector<GlyphPosition>> runs(kMaxFonts);
  std::vector<Squeezed> squeezed;
  Path boxes;
  std::vector<float> xs, ys;
  for (const OfdTextCode& code : object.textCodes) {
    const size_t n = static_cast<size_t>(code.text.GetLength());
    if (n == 0) continue;
    TextState state{&pc, &fonts, &code, weight, italic, emScale};
    const std::vector<float>* px = &code.xs;
    const std::vector<float>* py = &code.ys;
    // Places DeltaX must give: one per glyph where groups join characters or
    // add glyphs.
    size_t places = n + code.extraGlyphs.size();
    for (int32_t g : code.glyphs) places -= g == OfdTextCode::kJoinedGlyph ? 1 : 0;
    if (code.deltaX.size() + 1 < places) {
      // DeltaX runs out: the rest advance by the font's widths.
      LayoutCharacters(code.x, code.y, code.deltaX, code.deltaY, n, Advance, &state, xs, ys);
      px = &xs;
      py = &ys;
    }
    const bool relaid = px == &xs;
    size_t extra = 0;  // next of code.extraGlyphs
    float pen = 0;     // where a character joined into a group goes when drawn alone
    const size_t count = std::min({n, px->size(), py->size()});
    for (size_t i = 0; i < count; ++i) {
      const Resolved r = Resolve(state, i);
      float x = (*px)[i];
      const float y = (*py)[i];
      // Without the glyph group's font the group's characters are drawn one
      // after another from the group's place.
      const bool joined = i < code.glyphs.size() && code.glyphs[i] == OfdTextCode::kJoinedGlyph;
      if (joined && !relaid && i > 0 && (*py)[i - 1] == y) x = pen;
      pen = x;
      if (r.kind == Resolved::kGlyph) pen += static_cast<float>(fonts.list[r.font]->GetGlyphAdvance(r.glyph)) * emScale;
      if (r.kind == Resolved::kBox) {
        AddBox(boxes, glyphMatrix, x, y);
        continue;
      }
      if (r.kind != Resolved::kGlyph || r.glyph == 0) continue;
      Font* font = fonts.list[r.font];
      const bool substitute = !(fonts.embedded && r.font == 0);
      const char32_t ch = code.text[static_cast<int>(i)];
      // A substitute's Latin glyph wider than the room the next character
      // leaves it is narrowed, so that letters do not run into each other.
      float factor = 1;
      if (substitute && upright && !IsWide(ch) && i + 1 < count && (*py)[i + 1] == y) {
        const float room = (*px)[i + 1] - x;
        const float width = static_cast<float>(font->GetGlyphAdvance(r.glyph)) * emScale;
        if (room > 0 && width > room * 1.02f) factor = std::max(kMinSqueeze, room / width);
      }
      if (factor < 1) {
        squeezed.push_back({r.font, GlyphPosition{r.glyph, x, y}, factor});
      } else {
        runs[static_cast<size_t>(r.font)].push_back(GlyphPosition{r.glyph, x, y});
      }
      if (!fonts.embedded || r.font != 0) continue;
      // Further glyphs of this character's group, at their places (after
      // its glyph where the font's advances placed the text).
      while (extra < code.extraGlyphs.size() && code.extraGlyphs[extra].character < i) ++extra;
      float after = x + static_cast<float>(font->GetGlyphAdvance(r.glyph)) * emScale;
      for (; extra < code.extraGlyphs.size() && code.extraGlyphs[extra].character == i; ++extra) {
        const OfdTextCode::ExtraGlyph& g = code.extraGlyphs[extra];
        runs[0].push_back(relaid ? GlyphPosition{g.glyph, after, y} : GlyphPosition{g.glyph, g.x, g.y});
        after += static_cast<float>(font->GetGlyphAdvance(g.glyph)) * emScale;
      }
    }
  }
  const BlendMode blend = ObjectBlendMode(object);
  for (size_t f = 0; f < fonts.list.size(); ++f) {
    if (runs[f].empty()) continue;
    pc.device->DrawGlyphs(runs[f].data(), static_cast<int>(runs[f].size()), fonts.list[f], matrix,
                          glyphMatrix, argb, blend);
  }
  for (const Squeezed& s : squeezed) {
    pc.device->DrawGlyphs(&s.position, 1, fonts.list[static_cast<size_t>(s.font)], matrix,
                          Matrix(s.factor, 0, 0, 1, 0, 0).Then(glyphMatrix), argb, blend);
  }
  if (!boxes.IsEmpty()) {
    StrokeStyle style;
    style.width = object.size * 0.05f;
    pc.device->StrokePath(boxes, matrix, argb, style, blend);
  }
}

}  // namespace host
