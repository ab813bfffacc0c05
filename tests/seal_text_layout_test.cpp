// Seal text layout as GetSealImageTextRect reports it, with a face of fixed
// metrics: the straight run's band and character positions, the ellipse
// placement against independently derived ellipse geometry, and what the
// caller's list keeps.
#include "text/seal_text_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <numbers>
#include <vector>

#include "host/base/app_context.h"
#include "host/ofd/ofd_annotation.h"
#include "support/fixed_metrics_face.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::FixedMetricsFace;
using testing_support::GlyphMetrics;

constexpr double kPi = std::numbers::pi;
constexpr float kSize = 25.4f;  // 72 pt in millimetres
// Advances and heights in thousandths; '?' has no glyph.
const std::map<uint32_t, GlyphMetrics> kGlyphs = {
    {U'A', {1, 400, 300}}, {U'B', {2, 600, 500}}, {U'中', {3, 1000, 800}}};

double AdvanceMm(char32_t c) {
  auto it = kGlyphs.find(c);
  return it == kGlyphs.end() ? 0.0 : it->second.advance * 25.4 / 1000.0;
}

void ExpectMatrixNear(const Matrix& m, const Matrix& e) {
  EXPECT_NEAR(m.a, e.a, 1e-5);
  EXPECT_NEAR(m.b, e.b, 1e-5);
  EXPECT_NEAR(m.c, e.c, 1e-5);
  EXPECT_NEAR(m.d, e.d, 1e-5);
  EXPECT_NEAR(m.e, e.e, 1e-4);
  EXPECT_NEAR(m.f, e.f, 1e-4);
}

class SealTextLayout : public ::testing::Test {
 protected:
  void SetUp() override {
    host::AppContext::Get()->GetFontMgr()->RegisterFace(
        "SealTextFixed", std::make_shared<FixedMetricsFace>(kGlyphs, 1000, 0));
    param.fontSize = 72;
    param.fontName = U"SealTextFixed";
    param.text = U"AB";
    seal.Boundary = GRect(10, 20, 110, 80);
  }
  void TearDown() override {
    host::AppContext::Get()->GetFontMgr()->UnregisterFace("SealTextFixed");
  }

  RenderSealParam::TextParam param;
  host::OfdAnnotationSeal seal;
  std::vector<TextObject> out;
};

TEST_F(SealTextLayout, StraightBandAndStartForEveryAlignment) {
  // "AB": width 10.16 + 15.24 = 25.4, tallest glyph 12.7; rectangle 100 x 60.
  const struct {
    uint32_t h, v;
    int32_t outside;
    float x, y0, y1;
  } cases[] = {
      {0, 0, 0, 10.0f, 20.0f, 33.7f},   {1, 0, 1, 84.6f, 6.3f, 20.0f},
      {2, 1, 0, 47.3f, 66.3f, 80.0f},   {9, 1, 1, 47.3f, 80.0f, 93.7f},
      {0, 2, 0, 10.0f, 56.35f, 42.65f}, {1, 2, 7, 84.6f, 56.35f, 42.65f},
      {2, 5, 0, 47.3f, 0.0f, 0.0f},     {2, 5, 1, 47.3f, 0.0f, 0.0f},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "h=" << c.h << " v=" << c.v << " outside=" << c.outside);
    param.horizontalAlign = c.h;
    param.verticalAlign = c.v;
    param.outside = c.outside;
    param.angle = 30;  // never applied to reported rectangles
    out.clear();
    ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
    ASSERT_EQ(out.size(), 1u);
    const TextObject& t = out[0];
    EXPECT_NEAR(t.rect.left, c.x, 1e-4);
    EXPECT_NEAR(t.rect.right, c.x + 25.4f, 1e-4);
    EXPECT_NEAR(t.rect.top, c.y0, 1e-4);
    EXPECT_NEAR(t.rect.bottom, c.y1, 1e-4);
    EXPECT_TRUE(t.matrix.IsIdentity());
    ASSERT_EQ(t.chars.size(), 2u);
    EXPECT_EQ(t.chars[0].character, U'A');
    EXPECT_NEAR(t.chars[0].x, c.x, 1e-4);
    EXPECT_NEAR(t.chars[1].x, c.x + 10.16f, 1e-4);
    for (const auto& ch : t.chars) EXPECT_EQ(ch.y, t.rect.top);
  }
}

TEST_F(SealTextLayout, StraightGlyphlessCharacterHasEntryButNoWidth) {
  param.text = U"A?B";
  param.horizontalAlign = 1;
  seal.Boundary = GRect(10, 20, 20, 80);  // narrower than the text: overhangs left
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  const TextObject& t = out[0];
  EXPECT_NEAR(t.rect.left, 10.0f - 15.4f, 1e-4);
  EXPECT_NEAR(t.rect.right - t.rect.left, 25.4f, 1e-4);
  ASSERT_EQ(t.chars.size(), 3u);
  EXPECT_EQ(t.chars[1].character, U'?');
  EXPECT_NEAR(t.chars[1].x, t.chars[0].x + 10.16f, 1e-4);
  EXPECT_EQ(t.chars[2].x, t.chars[1].x);
}

TEST_F(SealTextLayout, HeightCountsOnlyMoreThanATenthAboveTheMaximum) {
  // Thousandths of 25.4 mm: 40 = 1.016, 43 = 1.0922 (+0.076), 46 = 1.1684 (+0.152), 3 = 0.0762.
  const struct {
    std::vector<int> heights;
    int expect;
  } cases[] = {{{40, 43}, 40}, {{40, 43, 46}, 46}, {{46, 40}, 46}, {{3}, 0}, {{4}, 4}, {{3, 7}, 7}};
  for (const auto& c : cases) {
    std::map<uint32_t, GlyphMetrics> glyphs;
    std::u32string s;
    for (size_t i = 0; i < c.heights.size(); ++i) {
      glyphs[U'a' + i] = {static_cast<uint32_t>(i + 1), 500, c.heights[i]};
      s.push_back(static_cast<char32_t>(U'a' + i));
    }
    testing_support::FixedMetricsFont font(glyphs);
    const SealTextMeasure m = MeasureSealText(font, s, kSize, true);
    EXPECT_NEAR(m.maxHeight, c.expect * 25.4 / 1000, 1e-5) << c.heights.size();
    EXPECT_EQ(MeasureSealText(font, s, kSize, false).maxHeight, 0.0f);
  }
}

TEST_F(SealTextLayout, NothingToLayOutLeavesTheListAlone) {
  const struct {
    const char* name;
    uint32_t fontSize;
    host::WideString text;
    GRect box;
  } cases[] = {
      {"size 0", 0, U"AB", GRect(10, 20, 110, 80)},
      {"absent text", 72, host::WideString(), GRect(10, 20, 110, 80)},
      {"empty text", 72, U"", GRect(10, 20, 110, 80)},
      {"zero width", 72, U"AB", GRect(10, 20, 10, 80)},
      {"zero height", 72, U"AB", GRect(10, 80, 110, 80)},
  };
  for (const auto& c : cases) {
    param.fontSize = c.fontSize;
    param.text = c.text;
    seal.Boundary = c.box;
    out.assign(1, TextObject{GRect(1, 2, 3, 4), Matrix(), {{U'z', 5, 6}}});
    for (uint32_t layout : {0u, 1u}) {
      param.layoutKind = layout;
      EXPECT_EQ(GetSealImageTextRect(&seal, param, out), 0) << c.name;
    }
    ASSERT_EQ(out.size(), 1u) << c.name;
    EXPECT_EQ(out[0].chars[0].character, U'z');
  }
  EXPECT_EQ(GetSealImageTextRect(nullptr, param, out), 0);
}

TEST_F(SealTextLayout, RecordsAreAppendedAfterEarlierOnes) {
  out.assign(1, TextObject{GRect(1, 2, 3, 4), Matrix(2, 0, 0, 2, 0, 0), {{U'z', 5, 6}}});
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  param.layoutKind = 3;
  param.text = U"AB中?AB";
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  ASSERT_EQ(out.size(), 1u + 1u + 6u);
  EXPECT_EQ(out[0].rect, GRect(1, 2, 3, 4));
  EXPECT_EQ(out[0].matrix, Matrix(2, 0, 0, 2, 0, 0));
  EXPECT_EQ(out[1].chars.size(), 2u);
  for (size_t i = 2; i < out.size(); ++i) {
    EXPECT_EQ(out[i].rect, GRect());
    ASSERT_EQ(out[i].chars.size(), 1u);
    EXPECT_EQ(out[i].chars[0].character, param.text[static_cast<int>(i - 2)]);
    EXPECT_EQ(out[i].chars[0].x, 0.0f);
    EXPECT_EQ(out[i].chars[0].y, 0.0f);
  }
}

// The expected placement, from the ellipse's parametric form (x = a cos t,
// y = b sin t, the point in direction beta has tan t = (a / b) tan beta) and
// its derivative in t, which runs the same way as beta.
Matrix ExpectedOnEllipse(double cx, double cy, double a, double b, double beta, double advance) {
  const double rad = beta * kPi / 180;
  const double t = std::atan2(a * std::sin(rad), b * std::cos(rad));
  const double px = cx + a * std::cos(t), py = cy + b * std::sin(t);
  const double tx = -a * std::sin(t), ty = b * std::cos(t), len = std::hypot(tx, ty);
  const double ca = tx / len, sa = ty / len;
  return Matrix(static_cast<float>(ca), static_cast<float>(sa), static_cast<float>(-sa),
                static_cast<float>(ca), static_cast<float>(px - advance / 2 * ca),
                static_cast<float>(py - advance / 2 * sa));
}

TEST_F(SealTextLayout, EllipsePlacementForEveryStartPair) {
  // Rectangle (10,20)-(110,80): centre (60, 50); margin 2 x 25.4 / 3.
  const double k = 2 * 25.4 / 3;
  const struct {
    uint32_t v, h;
    int32_t offsetX, offsetY;
    double start;
  } pairs[] = {
      {2, 1, 0, 0, 180}, {0, 2, 2, 3, 270}, {2, 0, 0, 0, 0},     {1, 2, 0, 5, 90},
      {0, 0, 0, 0, 180}, {7, 7, 0, 0, 180}, {0, 2, 50, 90, 270},  // insets past the centre
  };
  const char32_t* texts[] = {U"中", U"AB中?", U"AB中?ABB", U"中AB?中AB?中AB?中AB?中AB?中AB?A"};
  for (const auto& p : pairs) {
    for (const char32_t* text : texts) {
      param.verticalAlign = p.v;
      param.horizontalAlign = p.h;
      param.offsetX = p.offsetX;
      param.offsetY = p.offsetY;
      param.layoutKind = 1;
      param.text = text;
      out.clear();
      ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
      const int n = param.text.GetLength();
      ASSERT_EQ(out.size(), static_cast<size_t>(n));
      const double a = std::fabs(50 - p.offsetY - k), b = std::fabs(30 - p.offsetX - k);
      for (int i = 0; i < n; ++i) {
        SCOPED_TRACE(testing::Message()
                     << "pair " << p.v << "," << p.h << " n=" << n << " i=" << i);
        const Matrix e =
            ExpectedOnEllipse(60, 50, a, b, p.start + i * 360.0 / n, AdvanceMm(text[i]));
        const Matrix& m = out[i].matrix;
        ExpectMatrixNear(m, e);
        // The glyph top (text space -y) points away from the centre.
        const double cx = m.e + m.a * AdvanceMm(text[i]) / 2,
                     cy = m.f + m.b * AdvanceMm(text[i]) / 2;
        EXPECT_GT(-m.c * (cx - 60) - m.d * (cy - 50), 0);
      }
    }
  }
}

TEST_F(SealTextLayout, EllipseQuarterTurnsAndSingleCharacter) {
  // Four glyphless characters from the top: top, right end, bottom, left end.
  param.layoutKind = 1;
  param.text = U"????";
  param.verticalAlign = 0;
  param.horizontalAlign = 2;
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  const double a = 50 - 2 * 25.4 / 3, b = 30 - 2 * 25.4 / 3;
  const double expect[4][4] = {
      {60, 50 - b, 1, 0}, {60 + a, 50, 0, 1}, {60, 50 + b, -1, 0}, {60 - a, 50, 0, -1}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(out[i].matrix.e, expect[i][0], 1e-4) << i;
    EXPECT_NEAR(out[i].matrix.f, expect[i][1], 1e-4) << i;
    EXPECT_NEAR(out[i].matrix.a, expect[i][2], 1e-6) << i;
    EXPECT_NEAR(out[i].matrix.b, expect[i][3], 1e-6) << i;
  }
  // A seal lying left of and above the origin: the centre is taken as |x0 + x1| / 2.
  out.clear();
  param.text = U"?";
  seal.Boundary = GRect(-110, -80, -10, -20);
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  EXPECT_NEAR(out[0].matrix.e, 60, 1e-4);
  EXPECT_NEAR(out[0].matrix.f, 50 - b, 1e-4);
}

TEST_F(SealTextLayout, ZeroSemiAxisSetsCharactersUprightAtTheCentre) {
  // A side of 2k leaves exactly 0 for that semi-axis once the margin k is taken.
  const float k = kSize / 3 + kSize / 3;
  const GRect boxes[] = {GRect(0, 0, 2 * k, 60), GRect(0, 0, 100, 2 * k),
                         GRect(0, 0, 2 * k, 2 * k)};
  param.layoutKind = 1;
  param.text = U"AB中";
  for (const GRect& box : boxes) {
    seal.Boundary = box;
    out.clear();
    ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
    ASSERT_EQ(out.size(), 3u);
    for (int i = 0; i < 3; ++i) {
      const float half = static_cast<float>(AdvanceMm(param.text[i]) / 2);
      ExpectMatrixNear(out[i].matrix, Matrix(1, 0, 0, 1, box.right / 2 - half, box.bottom / 2));
    }
  }
}

TEST_F(SealTextLayout, CharWidthFollowsTheFontsOwnGlyphs) {
  testing_support::FixedMetricsFont font(kGlyphs);
  const host::WideString text(U"A?中");
  const struct {
    int index;
    float expect;
  } cases[] = {{0, 10.16f}, {1, 0}, {2, 25.4f}, {-1, 0}, {3, 0}};
  for (const auto& c : cases)
    EXPECT_NEAR(GetCharWidth(text, &font, c.index, kSize), c.expect, 1e-5) << c.index;
  EXPECT_EQ(GetCharWidth(text, nullptr, 0, kSize), 0.0f);
}

}  // namespace
}  // namespace tarvik
