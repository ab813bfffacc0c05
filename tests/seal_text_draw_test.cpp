// Drawing seal text: what DrawSealText asks of the device (a recording
// device and a face of fixed metrics), and two pictures with a real CJK font.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "host/base/app_context.h"
#include "host/base/device.h"
#include "host/ofd/ofd_annotation.h"
#include "support/fixed_metrics_face.h"
#include "support/recording_device.h"
#include "support/render_compare.h"
#include "tarvik/tarvik.h"
#include "text/draw_seal_text.h"

namespace tarvik {
namespace {

using testing_support::DeviceCall;
using testing_support::GlyphMetrics;
using testing_support::RecordingDevice;

// Counts the glyph height questions, which only some baselines need.
class CountingFace : public testing_support::FixedMetricsFace {
 public:
  CountingFace()
      : FixedMetricsFace({{U'A', {1, 400, 300}}, {U'B', {2, 600, 500}}, {U'中', {3, 1000, 800}}}) {}
  int GlyphHeight(uint32_t glyph) const override {
    ++heightCalls;
    return FixedMetricsFace::GlyphHeight(glyph);
  }
  mutable std::atomic<int> heightCalls{0};
};

void ExpectMaps(const Matrix& m, const Matrix& e, const char* what) {
  const float pts[3][2] = {{0, 0}, {1, 0}, {0, 1}};
  for (const auto& p : pts) {
    float x = p[0], y = p[1], ex = p[0], ey = p[1];
    m.TransformPoint(x, y);
    e.TransformPoint(ex, ey);
    EXPECT_NEAR(x, ex, 1e-3) << what;
    EXPECT_NEAR(y, ey, 1e-3) << what;
  }
}

class SealTextDraw : public ::testing::Test {
 protected:
  void SetUp() override {
    host::AppContext::Get()->GetFontMgr()->RegisterFace("SealTextCounting", face);
    param.fontSize = 72;  // 25.4 mm
    param.fontName = U"SealTextCounting";
    param.text = U"AB";
    param.color = 0x80123456;
  }
  void TearDown() override {
    host::AppContext::Get()->GetFontMgr()->UnregisterFace("SealTextCounting");
  }

  std::shared_ptr<CountingFace> face = std::make_shared<CountingFace>();
  RenderSealParam::TextParam param;
  RecordingDevice device;
  const GRect seal{10, 20, 110, 80};
};

TEST_F(SealTextDraw, StraightRunStartAndBaseline) {
  // "AB" is 25.4 wide and at most 12.7 high, in a 100 x 60 rectangle.
  const struct {
    uint32_t h, v;
    int32_t outside;
    float x, baseline;
    bool heightsAsked;
  } cases[] = {
      {0, 0, 0, 10.0f, 32.7f, true}, {1, 0, 1, 84.6f, 20.0f, false}, {2, 1, 0, 47.3f, 80.0f, false},
      {3, 1, 1, 47.3f, 92.7f, true}, {0, 2, 0, 10.0f, 56.35f, true}, {1, 2, 1, 84.6f, 56.35f, true},
      {0, 4, 0, 10.0f, 92.7f, true}, {0, 4, 1, 10.0f, 92.7f, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "h=" << c.h << " v=" << c.v << " outside=" << c.outside);
    param.horizontalAlign = c.h;
    param.verticalAlign = c.v;
    param.outside = c.outside;
    device.Clear();
    face->heightCalls = 0;
    DrawSealText(&device, seal, Matrix(), param);
    ASSERT_EQ(device.Names(), std::vector<std::string>{"text"});
    const DeviceCall& call = device.calls()[0];
    EXPECT_EQ(call.codes, U"AB");
    EXPECT_EQ(call.color, 0x80123456u);
    EXPECT_FLOAT_EQ(call.fontSize, 25.4f);
    ExpectMaps(call.matrix, Matrix(1, 0, 0, 1, c.x, c.baseline), "placement");
    EXPECT_EQ(face->heightCalls > 0, c.heightsAsked);
  }
}

TEST_F(SealTextDraw, StraightRunTurnsAboutItsStartThenFollowsThePageMatrix) {
  const struct {
    float angle;
    Matrix page;
  } cases[] = {{30, Matrix()},
               {-90, Matrix()},
               {180, Matrix(3, 0, 0, 3, -5, 7)},
               {45, Matrix(0, 2, -2, 0, 300, 10)}};
  for (const auto& c : cases) {
    device.Clear();
    param.angle = c.angle;
    DrawSealText(&device, seal, c.page, param);  // left, top, inside: start (10, 32.7)
    ASSERT_EQ(device.calls().size(), 1u);
    const double r = c.angle * std::numbers::pi / 180;
    const float cs = static_cast<float>(std::cos(r)), sn = static_cast<float>(std::sin(r));
    // Page placement first, then the page matrix: compose by hand.
    const Matrix& p = c.page;
    const float ex = 10 * p.a + 32.7f * p.c + p.e, ey = 10 * p.b + 32.7f * p.d + p.f;
    const Matrix expect(cs * p.a + sn * p.c, cs * p.b + sn * p.d, -sn * p.a + cs * p.c,
                        -sn * p.b + cs * p.d, ex, ey);
    ExpectMaps(device.calls()[0].matrix, expect, "rotated");
  }
}

TEST_F(SealTextDraw, EllipseDrawsEachCharacterInOrderOnTheReportedPlaces) {
  param.layoutKind = 2;
  param.text = U"AB中?A";
  param.offsetX = 1;
  param.offsetY = -2;
  host::OfdAnnotationSeal annotation;
  annotation.Boundary = seal;
  std::vector<TextObject> records;
  ASSERT_EQ(GetSealImageTextRect(&annotation, param, records), 1);
  const Matrix page(0, 2, -2, 0, 300, 10);
  device.set_draw_result(0);  // a failing device still gets every character
  DrawSealText(&device, seal, page, param);
  ASSERT_EQ(device.Names(), std::vector<std::string>(5, "text"));
  for (int i = 0; i < 5; ++i) {
    const DeviceCall& call = device.calls()[static_cast<size_t>(i)];
    EXPECT_EQ(call.count, 1);
    EXPECT_EQ(call.codes, std::u32string(1, param.text[i]));
    EXPECT_EQ(call.font, device.calls()[0].font);
    EXPECT_EQ(call.color, 0x80123456u);
    EXPECT_FLOAT_EQ(call.fontSize, 25.4f);
    ExpectMaps(call.matrix, records[static_cast<size_t>(i)].matrix.Then(page), "ellipse");
  }
  EXPECT_EQ(face->heightCalls, 0);  // the ellipse layout does not measure
}

TEST_F(SealTextDraw, NothingDrawnForInvalidInput) {
  const struct {
    const char* name;
    uint32_t fontSize;
    host::WideString text;
    GRect box;
  } cases[] = {
      {"size 0", 0, U"AB", seal},
      {"absent text", 72, host::WideString(), seal},
      {"empty text", 72, U"", seal},
      {"zero width", 72, U"AB", GRect(10, 20, 10, 80)},
      {"zero height", 72, U"AB", GRect(10, 20, 110, 20)},
  };
  for (const auto& c : cases) {
    param.fontSize = c.fontSize;
    param.text = c.text;
    for (uint32_t layout : {0u, 1u}) {
      param.layoutKind = layout;
      DrawSealText(&device, c.box, Matrix(), param);
      EXPECT_TRUE(device.calls().empty()) << c.name;
    }
  }
  param = RenderSealParam::TextParam{};
  param.fontSize = 72;
  param.text = U"AB";
  DrawSealText(nullptr, seal, Matrix(), param);
}

TEST_F(SealTextDraw, ZeroSemiAxisStillDrawsFiniteCharacters) {
  const float k = 25.4f / 3 + 25.4f / 3;
  param.layoutKind = 1;
  DrawSealText(&device, GRect(0, 0, 2 * k, 2 * k), Matrix(2, 0, 0, 2, 0, 0), param);
  ASSERT_EQ(device.calls().size(), 2u);
  for (const DeviceCall& call : device.calls()) {
    const Matrix& m = call.matrix;
    for (float v : {m.a, m.b, m.c, m.d, m.e, m.f}) EXPECT_TRUE(std::isfinite(v));
  }
}

// Pictures with the installed CJK font: a ring of characters and a turned run.
TEST(SealTextPicture, RingAndStraightRun) {
  if (!testing_support::HasReferenceCjkFont()) GTEST_SKIP() << "WenQuanYi Zen Hei is not installed";
  const struct {
    const char* name;
    RenderSealParam::TextParam param;
  } cases[] = {
      {"seal_text_ring",
       {.fontSize = 14,
        .layoutKind = 1,
        .verticalAlign = 2,
        .horizontalAlign = 1,
        .color = 0xFFD01010,
        .text = U"中华人民共和国测试专用章",
        .fontName = U"WenQuanYi Zen Hei"}},
      {"seal_text_straight",
       {.fontSize = 16,
        .bold = 1,
        .verticalAlign = 2,
        .horizontalAlign = 2,
        .color = 0xFF1030C0,
        .angle = -20,
        .text = U"合同专用章",
        .fontName = U"WenQuanYi Zen Hei"}},
  };
  for (const auto& c : cases) {
    std::unique_ptr<Device> device =
        host::CreateBitmapDevice(320, 320, host::kDibArgb32, 0xFFFFFFFF);
    ASSERT_NE(device, nullptr);
    DrawSealText(device.get(), GRect(5, 5, 35, 35), Matrix(8, 0, 0, 8, 0, 0), c.param);
    std::unique_ptr<Dib> dib(device->TakeBitmap());
    ASSERT_NE(dib, nullptr);
    EXPECT_TRUE(testing_support::CompareWithReference(*dib, c.name, 24));
  }
}

}  // namespace
}  // namespace tarvik
