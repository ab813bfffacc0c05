// Stamp engines: engine choice, settings, failure paths and exact placement on
// a recording device with a face of fixed metrics.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/base/app_context.h"
#include "stamp/image_engine.h"
#include "stamp/image_engine_line.h"
#include "stamp/image_engine_round.h"
#include "support/fixed_metrics_face.h"
#include "support/recording_device.h"

namespace tarvik {
namespace {

using testing_support::DeviceCall;
using testing_support::RecordingDevice;
using TextParam = RenderSealParam::TextParam;
constexpr double kPi = std::numbers::pi;

std::vector<std::pair<int, std::string>> g_reports;
void Capture(int32_t code, const host::ByteString& message) {
  g_reports.emplace_back(code, message.str());
}

// A font whose load always fails.
class UnloadableFont : public host::Font {
 public:
  UnloadableFont() : host::Font(nullptr) { mgr_ = nullptr; }
};

// 'A' and 'B' are one em wide and high, 'h' half an em wide and 0.999 high;
// '?' has no glyph.
double Advance(char32_t c) { return c == U'h' ? 500 : c == U'?' ? 0 : 1000; }

class StampEngine : public ::testing::Test {
 protected:
  void SetUp() override {
    host::AppContext::Get()->GetFontMgr()->RegisterFace("StampFixed", face);
    param.fontName = U"StampFixed";
    g_reports.clear();
  }
  void TearDown() override { host::AppContext::Get()->GetFontMgr()->UnregisterFace("StampFixed"); }

  std::shared_ptr<testing_support::FixedMetricsFace> face =
      std::make_shared<testing_support::FixedMetricsFace>(
          std::map<uint32_t, testing_support::GlyphMetrics>{
              {U'A', {1, 1000, 1000}}, {U'B', {2, 1000, 1000}}, {U'h', {3, 500, 999}}});
  TextParam param;
};

TEST_F(StampEngine, LayoutKindSelectsTheEngine) {
  std::tie(param.text, param.fontSize, param.widthPercent) = std::tuple(U"ABAB", 20u, 50u);
  for (uint32_t kind : {0u, 1u, 2u, 3u, 200u, 0xFFFFFFFFu}) {
    const bool round = kind == 1 || kind == 2;
    param.layoutKind = kind;
    RecordingDevice device(200, 200);
    EXPECT_TRUE(AddStampOnDevice(&device, param));
    const std::vector<DeviceCall> calls = device.Of(DeviceCall::kDrawText);
    ASSERT_EQ(calls.size(), round ? 4u : 1u) << kind;
    // The line sizes itself: 100 px / 4.
    EXPECT_EQ(std::make_tuple(calls[0].codes, calls[0].fontSize, calls[0].face,
                              dynamic_cast<ImageEngine_Round*>(MakeImageEngine(kind).get()) != nullptr),
              std::make_tuple(std::u32string(round ? U"A" : U"ABAB"), round ? 20.0f : 25.0f, face.get(), round));
  }
}

TEST_F(StampEngine, FailuresAndTheReporter) {
  const struct {
    const char* name;
    uint32_t kind;
    host::WideString text;
    bool unloadable;
    int drawResult, status;
    size_t textCalls;
    std::vector<std::pair<int, std::string>> reports;
  } cases[] = {
      {"line font fails", 0, U"AB", true, 1, -2, 0, {{0, "Font Load Error"}}},
      {"round font fails", 1, U"AB", true, 1, -2, 0, {{0, "Font Load Error"}}},
      {"line refused", 0, U"AB", false, 0, 0, 1, {{0, "Draw Line Error"}}},
      {"round refused", 2, U"ABh", false, 0, 0, 3, {}},
      {"round absent text", 1, host::WideString(), false, 1, 0, 0, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    g_reports.clear();
    std::tie(param.layoutKind, param.text) = std::tie(c.kind, c.text);
    RecordingDevice device(120, 80, c.drawResult);
    StampContext context;
    context.reporter = &Capture;
    if (c.unloadable && c.kind == 0) context.engine = std::make_unique<ImageEngine_Line>(std::make_unique<UnloadableFont>());
    if (c.unloadable && c.kind != 0) context.engine = std::make_unique<ImageEngine_Round>(std::make_unique<UnloadableFont>());
    if (c.unloadable) std::tie(context.engine->text, context.engine->reporter) = std::tuple(c.text, &Capture);
    EXPECT_EQ(context.AddStamp(&device, param), c.status);
    // The engine is kept only on failure.
    EXPECT_EQ(std::make_tuple(context.engine != nullptr, device.Of(DeviceCall::kDrawText).size(), g_reports),
              std::make_tuple(c.status != 0, c.textCalls, c.reports));
  }
  EXPECT_FALSE(AddStampOnDevice(nullptr, param));
}

TEST_F(StampEngine, LinePlacementSizeAndRotation) {
  const struct {
    uint32_t w, h, percent;
    std::u32string text;
    uint32_t hAlign, vAlign;
    int32_t x, y;
    float angle, size, e, f;  // size, e, f: expected, from the device's edges
  } cases[] = {
      {400, 100, 50, U"ABAB", 2, 2, 0, 0, 0, 50, 100, 75},       // M = 200 centred
      {400, 100, 50, U"ABAB", 1, 1, 0, 0, 0, 50, 200, 100},      // ends at the right edge
      {400, 100, 50, U"hhhh", 1, 0, 0, 0, 0, 50, 200, 49},       // by T; 49.95 high counts 49
      {400, 100, 50, U"hhhh", 2, 2, 0, 0, 0, 50, 150, 74.5f},    // M = 100 centred
      {400, 100, 50, U"AB?A", 2, 2, 0, 0, 0, 50, 125, 75},       // '?' counts in n only
      {401, 100, 50, U"ABAB", 0, 0, 0, 0, 0, 50.125f, 0.5f, 50}, // exact half vs shifted half
      {333, 100, 37, U"ABAB", 1, 1, 0, 0, 0, 12321 / 100.0f / 4, 166.5f + 42, 100},
      {400, 100, 50, U"ABAB", 2, 2, 0, 0, -30, 50, 100, 75},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " " << c.hAlign << c.vAlign);
    param = TextParam{.widthPercent = c.percent, .fontSize = 77, .verticalAlign = c.vAlign,
                      .horizontalAlign = c.hAlign, .color = 0xFF102030, .angle = c.angle,
                      .text = c.text, .fontName = U"StampFixed", .offsetX = c.x, .offsetY = c.y};
    RecordingDevice device(c.w, c.h);
    EXPECT_TRUE(AddStampOnDevice(&device, param));
    ASSERT_EQ(device.Names(), std::vector<std::string>{"text"});
    const DeviceCall& call = device.calls()[0];
    EXPECT_EQ(std::make_tuple(call.codes, call.count, call.color), std::make_tuple(c.text, 4, 0xFF102030u));
    const double r = c.angle * kPi / 180;
    const host::Matrix& m = call.matrix;
    for (auto [got, want] : {std::pair{m.a, std::cos(r)}, {m.b, std::sin(r)}, {m.c, -std::sin(r)}, {m.d, std::cos(r)},
                             {call.fontSize, c.size}, {m.e, c.e}, {m.f, c.f}})
      EXPECT_NEAR(got, want, 1e-6 + 1e-6 * std::fabs(want));
  }
}

// Where character i should stand: at the clockwise angle start + i*360/n from
// the left end of the axis, as seen from the centre, on the ellipse with the
// given semi-axes; its baseline along the tangent, its advance centred.
// Without a curve, characters stand upright at the centre.
host::Matrix ExpectedOnRing(int i, int n, double start, double cx, double cy, double a, double b,
                            double halfAdvance) {
  if (a == 0 && b == 0) return host::Matrix(1, 0, 0, 1, cx - halfAdvance, cy);
  const double th = (start + i * 360.0 / n) * kPi / 180;
  // Exact zeros on the axes: a very flat ellipse turns its tangent on a residue.
  const double cs = std::fabs(std::cos(th)) < 1e-12 ? 0 : std::cos(th);
  const double sn = std::fabs(std::sin(th)) < 1e-12 ? 0 : std::sin(th);
  const double rho = 1 / std::sqrt(std::pow(cs / a, 2) + std::pow(sn / b, 2));
  const double px = -rho * cs, py = -rho * sn;  // y down
  const double r = std::atan2(px / (a * a), -py / (b * b));
  return host::Matrix(std::cos(r), std::sin(r), -std::sin(r), std::cos(r),
                      cx + px - halfAdvance * std::cos(r), cy + py - halfAdvance * std::sin(r));
}

TEST_F(StampEngine, RoundPlacementAroundTheEllipse) {
  const std::u32string mix = U"ABh?hBA";
  const struct {
    uint32_t w, h, size; int32_t insetX, insetY; std::u32string text; uint32_t hAlign, vAlign; double start;
  } cases[] = {
      {200, 200, 20, 0, 0, U"AAAA", 1, 2, 0},     {200, 200, 20, 0, 0, U"AAAA", 2, 0, 90},
      {200, 200, 20, 0, 0, U"AAAA", 0, 2, 180},   {200, 200, 20, 0, 0, U"h", 2, 1, 270},
      {300, 200, 18, 5, 3, mix, 2, 0, 90},        {201, 151, 12, -4, 6, std::u32string(400, U'h'), 2, 1, 270},
      {30, 30, 30, 0, 0, U"ABh", 0, 2, 180},      // semi-axes -5: as +5
      {200, 200, 20, 150, 0, U"AAAA", 5, 2, 0},   // inset wraps to a huge semi-axis; no pair: 0
      {40, 40, 30, 0, 0, U"Ah", 0, 0, 0},         // semi-axes 20 - 2 * 30 / 3 = 0
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " n=" << c.text.size() << " start=" << c.start);
    param = TextParam{.widthPercent = 90, .fontSize = c.size, .layoutKind = 1,
                      .verticalAlign = c.vAlign, .horizontalAlign = c.hAlign, .color = 0xFFAA0000,
                      .angle = 45, .text = c.text, .fontName = U"StampFixed",
                      .offsetX = c.insetX, .offsetY = c.insetY};
    RecordingDevice device(c.w, c.h);
    EXPECT_TRUE(AddStampOnDevice(&device, param));
    const int n = static_cast<int>(c.text.size());
    ASSERT_EQ(device.Names(), std::vector<std::string>(static_cast<size_t>(n), "text"));
    const double margin = 2.0 * c.size / 3;
    const double a = static_cast<uint32_t>(c.w / 2 - static_cast<uint32_t>(c.insetX)) - margin;
    const double b = static_cast<uint32_t>(c.h / 2 - static_cast<uint32_t>(c.insetY)) - margin;
    for (int i = 0; i < n; ++i) {
      const DeviceCall& call = device.calls()[static_cast<size_t>(i)];
      EXPECT_EQ(std::make_tuple(call.codes, call.count, call.color, call.fontSize),
                std::make_tuple(c.text.substr(static_cast<size_t>(i), 1), 1, 0xFFAA0000u, static_cast<float>(c.size)));
      const host::Matrix e = ExpectedOnRing(i, n, c.start, c.w / 2, c.h / 2, a, b,
                                            Advance(c.text[static_cast<size_t>(i)]) * c.size / 2000);
      const host::Matrix& m = call.matrix;
      const std::tuple<float, float, double> checks[] = {
          {m.a, e.a, 1e-5}, {m.b, e.b, 1e-5}, {m.c, e.c, 1e-5}, {m.d, e.d, 1e-5},
          {m.e, e.e, 2e-3 + 1e-6 * std::fabs(e.e)}, {m.f, e.f, 2e-3 + 1e-6 * std::fabs(e.f)}};
      for (const auto& [got, want, tol] : checks) EXPECT_NEAR(got, want, tol) << "character " << i;
    }
  }
}

}  // namespace
}  // namespace tarvik
