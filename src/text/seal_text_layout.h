// Layout of a seal's text against the seal's rectangle in page millimetres:
// one straight run, or one character at a time around an inscribed ellipse.
// Shared by the drawing of seal text, the text rectangles and the stamp
// engines (GetCharWidth). Everything here is internal to the library.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/font.h"
#include "host/base/geometry.h"
#include "host/base/matrix.h"
#include "host/base/wide_string.h"
#include "tarvik/tarvik.h"

namespace tarvik {

/// The seal text font size: `fontSize` points in millimetres, computed in
/// double precision and rounded to float.
float SealTextSize(uint32_t fontSize);

/// Makes the font of one call: a host::Font with the process-wide manager,
/// loaded with (fontName, fontName, 3, 700 or 400 by `bold`, `italic`). An
/// absent family name is the empty name. Null when the font cannot be
/// loaded. The caller owns the font. Thread-safe.
std::unique_ptr<host::Font> LoadSealTextFont(const RenderSealParam::TextParam& param);

/// What MeasureSealText reports, in millimetres.
struct SealTextMeasure {
  float textWidth = 0;
  float maxHeight = 0;  // 0 when heights were not wanted
};

/// Measures `text` at `size` millimetres through the process-wide font
/// manager's glyph operations on `font`'s face. Characters without a glyph
/// add nothing. A glyph's height raises maxHeight only when it exceeds the
/// running maximum by more than 0.1 mm; glyph heights are asked only when
/// `wantHeights`. When `advances` is given, one advance per character (0 for
/// a character without a glyph) is appended to it. Thread-safe.
SealTextMeasure MeasureSealText(const host::Font& font, const host::WideString& text, float size,
                                bool wantHeights, std::vector<float>* advances = nullptr);

/// The advance in `size` units of the character at `index` of `text`, from
/// the font's own glyph lookup and advance; 0 for a character without a
/// glyph, a null font or an index outside the text. Thread-safe as far as
/// `font` is.
float GetCharWidth(const host::WideString& text, host::Font* font, int index, float size);

/// Start x of the straight run in `rect` for a run `textWidth` wide:
/// horizontalAlign 0 left, 1 right, anything else centred. A run wider than
/// the rectangle overhangs.
float StraightRunStartX(const host::GRect& rect, float textWidth, uint32_t horizontalAlign);

/// Baseline y of the straight run in `rect`: at the top edge, the bottom
/// edge or the middle, inside or (`outside` non-zero) just outside the edge.
float StraightRunBaseline(const host::GRect& rect, float maxHeight, uint32_t verticalAlign,
                          int32_t outside);

/// True when the straight run's baseline depends on the glyph heights (all
/// but the top-outside and bottom-inside placements).
bool StraightRunNeedsHeights(uint32_t verticalAlign, int32_t outside);

/// Placement of a run whose baseline starts at (x, baseline), turned
/// clockwise by `angleDegrees` about that point: (cos, sin, -sin, cos, x, baseline).
host::Matrix RunMatrix(float x, float baseline, float angleDegrees);

/// The ellipse that the characters follow, and where the first one stands.
struct SealEllipse {
  float cx = 0;
  float cy = 0;
  float a = 0;           // horizontal semi-axis; its sign does not matter
  float b = 0;           // vertical semi-axis; its sign does not matter
  float startAngle = 0;  // degrees, clockwise from +x on a y-down page
};

/// The ellipse around (cx, cy) inscribed in a w x h rectangle, shrunk by
/// twice a third of `size` on every side, by `offsetY` horizontally and by
/// `offsetX` vertically. The first character stands at the left end for the
/// (verticalAlign, horizontalAlign) pair (2, 1), at the top for (0, 2), at
/// the right end for (2, 0), at the bottom for (1, 2) and at the left end for
/// any other pair.
SealEllipse MakeSealEllipse(float cx, float cy, float w, float h, float size,
                            const RenderSealParam::TextParam& param);

/// Placement matrix of character `index` of the `count` characters spread
/// clockwise over a full turn of `ellipse`: turned to follow the ellipse with
/// the glyph top outward, its advance (GetCharWidth of `text`, `font`,
/// `size`) centred on its point. When either semi-axis is 0 (or so large that
/// its square is not finite) there is no curve to follow: the character is
/// set upright with its advance centred on the ellipse's centre.
host::Matrix PlaceOnEllipse(int index, int count, const SealEllipse& ellipse,
                            const host::WideString& text, host::Font* font, float size);

}  // namespace tarvik
