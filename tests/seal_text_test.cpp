// Seal text with a face of fixed metrics: the layout GetSealImageTextRect
// reports (the straight run's band and character positions, the ellipse
// placement against independently derived ellipse geometry, what the caller's
// list keeps) and what DrawSealText asks of a recording device.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/base/app_context.h"
#include "host/ofd/ofd_annotation.h"
#include "support/fixed_metrics_face.h"
#include "support/recording_device.h"
#include "tarvik/tarvik.h"
#include "text/draw_seal_text.h"
#include "text/seal_text_layout.h"

namespace tarvik {
namespace {

using testing_support::DeviceCall;
using testing_support::GlyphMetrics;
using testing_support::RecordingDevice;

constexpr double kPi = std::numbers::pi;
constexpr float kSize = 25.4f;  // 72 pt in millimetres
// Advances and heights in thousandths; '?' has no glyph.
const std::map<uint32_t, GlyphMetrics> kGlyphs = {
    {U'A', {1, 400, 300}}, {U'B', {2, 600, 500}}, {U'中', {3, 1000, 800}}};

double AdvanceMm(char32_t c) {
  auto it = kGlyphs.find(c);
  return it == kGlyphs.end() ? 0.0 : it->second.advance * 25.4 / 1000.0;
}

void ExpectNear(std::vector<float> got, std::vector<double> want, double tolerance = 1e-4) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], tolerance) << "value " << i;
}

void ExpectMatrixNear(const Matrix& m, const Matrix& e) {
  ExpectNear({m.a, m.b, m.c, m.d}, {e.a, e.b, e.c, e.d}, 1e-5);
  ExpectNear({m.e, m.f}, {e.e, e.f});
}

// Counts the glyph height questions, which only some baselines need.
class CountingFace : public testing_support::FixedMetricsFace {
 public:
  CountingFace() : FixedMetricsFace(kGlyphs) {}
  int GlyphHeight(uint32_t glyph) const override {
    ++heightCalls;
    return FixedMetricsFace::GlyphHeight(glyph);
  }
  mutable std::atomic<int> heightCalls{0};
};

class SealText : public ::testing::Test {
 protected:
  void SetUp() override {
    host::AppContext::Get()->GetFontMgr()->RegisterFace("SealTextFixed", face);
    param = {.fontSize = 72, .color = 0x80123456, .text = U"AB", .fontName = U"SealTextFixed"};
    seal.Boundary = box;
  }
  void TearDown() override { host::AppContext::Get()->GetFontMgr()->UnregisterFace("SealTextFixed"); }

  std::shared_ptr<CountingFace> face = std::make_shared<CountingFace>();
  RenderSealParam::TextParam param;
  const GRect box{10, 20, 110, 80};
  host::OfdAnnotationSeal seal;
  std::vector<TextObject> out;
  RecordingDevice device;
};

// The reported band and character positions, and the drawn run's start and
// baseline, for each alignment: "AB" is 25.4 wide and at most 12.7 high, in a
// 100 x 60 rectangle.
TEST_F(SealText, StraightBandStartAndBaselineForEveryAlignment) {
  const struct { uint32_t h, v; int32_t outside; float x, y0, y1, baseline; bool heightsAsked; } cases[] = {
      {0, 0, 0, 10.0f, 20.0f, 33.7f, 32.7f, true},     {1, 0, 1, 84.6f, 6.3f, 20.0f, 20.0f, false},
      {2, 1, 0, 47.3f, 66.3f, 80.0f, 80.0f, false},    {9, 1, 1, 47.3f, 80.0f, 93.7f, 92.7f, true},
      {0, 2, 0, 10.0f, 56.35f, 42.65f, 56.35f, true},  {1, 2, 7, 84.6f, 56.35f, 42.65f, 56.35f, true},
      {2, 4, 1, 47.3f, 0.0f, 0.0f, 92.7f, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "h=" << c.h << " v=" << c.v << " outside=" << c.outside);
    std::tie(param.horizontalAlign, param.verticalAlign, param.outside) = std::tuple(c.h, c.v, c.outside);
    param.angle = 30;  // never applied to reported rectangles
    out.clear();
    ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
    ASSERT_EQ(out.size(), 1u);
    const TextObject& t = out[0];
    EXPECT_TRUE(t.matrix.IsIdentity());
    ASSERT_EQ(t.chars.size(), 2u);
    EXPECT_EQ(t.chars[0].character, U'A');
    ExpectNear({t.rect.left, t.rect.right, t.rect.top, t.rect.bottom, t.chars[0].x, t.chars[1].x, t.chars[1].y},
               {c.x, c.x + 25.4, c.y0, c.y1, c.x, c.x + 10.16, c.y0});
    device.Clear();
    face->heightCalls = 0;
    param.angle = 0;
    DrawSealText(&device, box, Matrix(), param);
    ASSERT_EQ(device.Names(), std::vector<std::string>{"text"});
    const DeviceCall& call = device.calls()[0];
    EXPECT_EQ(std::make_tuple(call.codes, call.color, call.fontSize),
              std::make_tuple(std::u32string(U"AB"), 0x80123456u, 25.4f));
    ExpectMatrixNear(call.matrix, Matrix(1, 0, 0, 1, c.x, c.baseline));
    EXPECT_EQ(face->heightCalls > 0, c.heightsAsked);
  }
}

TEST_F(SealText, StraightGlyphlessCharacterHasEntryButNoWidth) {
  std::tie(param.text, param.horizontalAlign) = std::tuple(U"A?B", 1u);
  seal.Boundary = GRect(10, 20, 20, 80);  // narrower than the text: overhangs left
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  const TextObject& t = out[0];
  ASSERT_TRUE(t.chars.size() == 3 && t.chars[1].character == U'?');
  ExpectNear({t.rect.left, t.rect.right, t.chars[1].x, t.chars[2].x}, {-5.4, 20, -5.4 + 10.16, -5.4 + 10.16});
}

TEST_F(SealText, HeightCountsOnlyMoreThanATenthAboveTheMaximum) {
  // Thousandths of 25.4 mm: 40 = 1.016, 43 = 1.0922 (+0.076), 46 = 1.1684 (+0.152), 3 = 0.0762.
  const struct { std::vector<int> heights; int expect; } cases[] = {
      {{40, 43}, 40}, {{40, 43, 46}, 46}, {{46, 40}, 46}, {{3}, 0}, {{4}, 4}, {{3, 7}, 7}};
  for (const auto& c : cases) {
    std::map<uint32_t, GlyphMetrics> glyphs;
    for (size_t i = 0; i < c.heights.size(); ++i) glyphs[U'a' + i] = {static_cast<uint32_t>(i + 1), 500, c.heights[i]};
    testing_support::FixedMetricsFont font(glyphs);
    const std::u32string s = std::u32string(U"abc").substr(0, c.heights.size());
    ExpectNear({MeasureSealText(font, s, kSize, true).maxHeight, MeasureSealText(font, s, kSize, false).maxHeight},
               {c.expect * 25.4 / 1000, 0}, 1e-5);
  }
}

// Records are appended after the caller's; a kind with no placement gives
// one empty record per character.
TEST_F(SealText, RecordsAreAppendedAfterEarlierOnes) {
  out.assign(1, TextObject{GRect(1, 2, 3, 4), Matrix(2, 0, 0, 2, 0, 0), {{U'z', 5, 6}}});
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  std::tie(param.layoutKind, param.text) = std::tuple(3u, U"AB中?AB");
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  ASSERT_EQ(out.size(), 1u + 1u + 6u);
  EXPECT_EQ(std::make_tuple(out[0].rect, out[0].matrix, out[1].chars.size()),
            std::make_tuple(GRect(1, 2, 3, 4), Matrix(2, 0, 0, 2, 0, 0), size_t{2}));
  for (size_t i = 2; i < out.size(); ++i) {
    EXPECT_EQ(out[i].rect, GRect());
    ASSERT_EQ(out[i].chars.size(), 1u);
    EXPECT_EQ(out[i].chars[0].character, param.text[static_cast<int>(i - 2)]);
    EXPECT_EQ(std::make_pair(out[i].chars[0].x, out[i].chars[0].y), std::make_pair(0.0f, 0.0f));
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

TEST_F(SealText, EllipsePlacementForEveryStartPair) {
  // Rectangle (10,20)-(110,80): centre (60, 50); margin 2 x 25.4 / 3. The
  // centre is taken as |x0 + x1| / 2, the same for a seal left of and above
  // the origin.
  const double k = 2 * 25.4 / 3;
  const struct { uint32_t v, h; int32_t offsetX, offsetY; double start; GRect box{10, 20, 110, 80}; } pairs[] = {
      {2, 1, 0, 0, 180}, {0, 2, 2, 3, 270}, {2, 0, 0, 0, 0},     {1, 2, 0, 5, 90},
      {0, 0, 0, 0, 180}, {7, 7, 0, 0, 180}, {0, 2, 50, 90, 270},  // insets past the centre
      {0, 2, 0, 0, 270, GRect(-110, -80, -10, -20)},
  };
  const char32_t* texts[] = {U"中", U"AB中?", U"AB中?ABB", U"中AB?中AB?中AB?中AB?中AB?中AB?A"};
  for (const auto& p : pairs) {
    for (const char32_t* text : texts) {
      param = {.fontSize = 72, .layoutKind = 1, .verticalAlign = p.v, .horizontalAlign = p.h, .text = text,
               .fontName = U"SealTextFixed", .offsetX = p.offsetX, .offsetY = p.offsetY};
      seal.Boundary = p.box;
      out.clear();
      ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
      const int n = param.text.GetLength();
      ASSERT_EQ(out.size(), static_cast<size_t>(n));
      const double a = std::fabs(50 - p.offsetY - k), b = std::fabs(30 - p.offsetX - k);
      for (int i = 0; i < n; ++i) {
        SCOPED_TRACE(testing::Message() << "pair " << p.v << "," << p.h << " n=" << n << " i=" << i);
        const Matrix& m = out[i].matrix;
        ExpectMatrixNear(m, ExpectedOnEllipse(60, 50, a, b, p.start + i * 360.0 / n, AdvanceMm(text[i])));
        // The glyph top (text space -y) points away from the centre.
        const double cx = m.e + m.a * AdvanceMm(text[i]) / 2, cy = m.f + m.b * AdvanceMm(text[i]) / 2;
        EXPECT_GT(-m.c * (cx - 60) - m.d * (cy - 50), 0);
      }
    }
  }
}

TEST_F(SealText, ZeroSemiAxisSetsCharactersUprightAtTheCentre) {
  // A side of 2k leaves exactly 0 for that semi-axis once the margin k is taken.
  const float k = kSize / 3 + kSize / 3;
  const GRect boxes[] = {GRect(0, 0, 2 * k, 60), GRect(0, 0, 100, 2 * k), GRect(0, 0, 2 * k, 2 * k)};
  std::tie(param.layoutKind, param.text) = std::tuple(1u, U"AB中");
  for (const GRect& b : boxes) {
    seal.Boundary = b;
    out.clear();
    ASSERT_TRUE(GetSealImageTextRect(&seal, param, out) == 1 && out.size() == 3);
    for (int i = 0; i < 3; ++i) {
      const float half = static_cast<float>(AdvanceMm(param.text[i]) / 2);
      ExpectMatrixNear(out[i].matrix, Matrix(1, 0, 0, 1, b.right / 2 - half, b.bottom / 2));
    }
  }
}

TEST_F(SealText, CharWidthFollowsTheFontsOwnGlyphs) {
  testing_support::FixedMetricsFont font(kGlyphs);
  const host::WideString text(U"A?中");
  std::vector<float> widths;
  for (int i : {0, 1, 2, -1, 3}) widths.push_back(GetCharWidth(text, &font, i, kSize));
  widths.push_back(GetCharWidth(text, nullptr, 0, kSize));
  ExpectNear(widths, {10.16, 0, 25.4, 0, 0, 0}, 1e-5);
}

TEST_F(SealText, StraightRunTurnsAboutItsStartThenFollowsThePageMatrix) {
  const struct { float angle; Matrix page; } cases[] = {{-90, Matrix()}, {45, Matrix(0, 2, -2, 0, 300, 10)}};
  for (const auto& c : cases) {
    device.Clear();
    param.angle = c.angle;
    DrawSealText(&device, box, c.page, param);  // left, top, inside: start (10, 32.7)
    ASSERT_EQ(device.calls().size(), 1u);
    const double r = c.angle * kPi / 180;
    const float cs = static_cast<float>(std::cos(r)), sn = static_cast<float>(std::sin(r));
    // Page placement first, then the page matrix.
    ExpectMatrixNear(device.calls()[0].matrix, Matrix(cs, sn, -sn, cs, 10, 32.7f).Then(c.page));
  }
}

TEST_F(SealText, EllipseDrawsEachCharacterInOrderOnTheReportedPlaces) {
  std::tie(param.layoutKind, param.text, param.offsetX, param.offsetY) = std::tuple(2u, U"AB中?A", 1, -2);
  ASSERT_EQ(GetSealImageTextRect(&seal, param, out), 1);
  const Matrix page(0, 2, -2, 0, 300, 10);
  device.set_draw_result(0);  // a failing device still gets every character
  DrawSealText(&device, box, page, param);
  ASSERT_EQ(device.Names(), std::vector<std::string>(5, "text"));
  for (int i = 0; i < 5; ++i) {
    const DeviceCall& call = device.calls()[static_cast<size_t>(i)];
    EXPECT_EQ(std::make_tuple(call.count, call.codes, call.font, call.color, call.fontSize),
              std::make_tuple(1, std::u32string(1, param.text[i]), device.calls()[0].font, 0x80123456u, 25.4f));
    ExpectMatrixNear(call.matrix, out[static_cast<size_t>(i)].matrix.Then(page));
  }
  EXPECT_EQ(face->heightCalls, 0);  // the ellipse layout does not measure
}

// Nothing to lay out: no record is added to the caller's list, and nothing is drawn.
TEST_F(SealText, NothingLaidOutOrDrawnForInvalidInput) {
  const struct { const char* name; uint32_t fontSize; host::WideString text; GRect box; } cases[] = {
      {"size 0", 0, U"AB", box}, {"absent text", 72, host::WideString(), box}, {"empty text", 72, U"", box},
      {"zero width", 72, U"AB", GRect(10, 20, 10, 80)}, {"zero height", 72, U"AB", GRect(10, 20, 110, 20)}};
  const TextObject earlier{GRect(1, 2, 3, 4), Matrix(), {{U'z', 5, 6}}};
  for (const auto& c : cases) {
    std::tie(param.fontSize, param.text, seal.Boundary) = std::tie(c.fontSize, c.text, c.box);
    for (uint32_t layout : {0u, 1u}) {
      param.layoutKind = layout;
      out.assign(1, earlier);
      EXPECT_EQ(GetSealImageTextRect(&seal, param, out), 0) << c.name;
      DrawSealText(&device, c.box, Matrix(), param);
      EXPECT_TRUE(out.size() == 1 && out[0].chars[0].character == U'z' && device.calls().empty()) << c.name;
    }
  }
  EXPECT_EQ(GetSealImageTextRect(nullptr, param, out), 0);
  param = {.fontSize = 72, .text = U"AB", .fontName = {}};
  DrawSealText(nullptr, box, Matrix(), param);
}

}  // namespace
}  // namespace tarvik
