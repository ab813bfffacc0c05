// Small documents that ask for unbounded work: composite units fanning out,
// templates naming each other many times, huge self-crossing paths. Each must
// finish, bounded by the renderer's limits, with what was drawn kept and the
// reason for stopping told.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_page_render.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"
#include "support/hostile_documents.h"
#include "support/opened_document.h"
#include "tarvik/tarvik.h"

namespace host {
namespace {

constexpr int kDpi = 50;

struct Drawn {
  RenderStop stop = RenderStop::kNone;
  std::string message;
  std::unique_ptr<Dib> bitmap;
  size_t templates = 0;
};

Drawn DrawFirstPage(std::string package, const RenderLimits& limits = RenderLimits()) {
  Drawn out;
  testing_support::Opened opened = testing_support::Open(std::move(package));
  if (!opened.doc) return out;
  std::unique_ptr<OfdPage> page = testing_support::ParsedPage(*opened.doc, 0);
  if (!page) return out;
  out.templates = page->GetTemplates().size();
  const int w = static_cast<int>(page->GetPageWidth() * kDpi / 25.4);
  const int h = static_cast<int>(page->GetPageHeight() * kDpi / 25.4);
  std::unique_ptr<Device> device = CreateBitmapDevice(w, h, kDibArgb32, 0xFFFFFFFF);
  out.stop = RenderPageContent(page.get(), device.get(), page->GetDisplayMatrix(0, 0, w, h, 0),
                               limits, &out.message);
  out.bitmap.reset(device->TakeBitmap());
  return out;
}

bool HasInk(const Dib& dib) {
  for (int y = 0; y < dib.GetHeight(); ++y)
    for (int x = 0; x < dib.GetWidth(); ++x)
      if (dib.GetPixel({x, y}) != 0xFFFFFFFF) return true;
  return false;
}

// Limits of a host: what was drawn before a limit stays, zero is no limit.
RenderLimits Limits(uint64_t objects, uint64_t segments) {
  RenderLimits limits;
  limits.maxObjects = objects, limits.maxSegments = segments;
  if (!objects) limits.maxScanRows = limits.maxImageBytes = 0;
  return limits;
}

struct HostileCase {
  const char* name;
  std::string (*make)();
  RenderStop stop;
  RenderLimits limits;
  size_t templates;  // loaded for the page
  bool ink;          // something was drawn
};

const HostileCase kCases[] = {
    // 10^9 paths through nine units of ten composite objects each.
    {"composite_fan_out", [] { return testing_support::CompositeFanOutPackage(9, 10); }, RenderStop::kObjects, {}, 0, true},
    // Eight templates naming the next ten times: loaded once each.
    {"template_fan_out", [] { return testing_support::TemplateFanOutPackage(8, 10); }, RenderStop::kNone, {}, 8, true},
    {"one_crossing_path_30k", [] { return testing_support::SelfCrossingPathsPackage(1, 30000); },
     RenderStop::kScanRows, {}, 0, false},
    // Cut to a million segments when parsed, still too much to draw.
    {"one_crossing_path_3m", [] { return testing_support::SelfCrossingPathsPackage(1, 3000000); },
     RenderStop::kScanRows, {}, 0, false},
    // Of 40 objects: the page's composite, two units of three, then paths.
    {"host_object_limit", [] { return testing_support::CompositeFanOutPackage(3, 3); }, RenderStop::kObjects,
     Limits(20, 4000000), 0, true},
    {"no_limits", [] { return testing_support::CompositeFanOutPackage(3, 3); }, RenderStop::kNone, Limits(0, 0), 0, true},
    {"host_segment_limit", [] { return testing_support::SelfCrossingPathsPackage(1, 1000); }, RenderStop::kSegments,
     Limits(250000, 100), 0, false},
};

class HostileRender : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileRender, FinishesWithinLimitsAndSaysWhy) {
  const HostileCase& c = GetParam();
  const Drawn drawn = DrawFirstPage(c.make(), c.limits);
  ASSERT_TRUE(drawn.bitmap) << "the page was not drawn";
  EXPECT_EQ(drawn.stop, c.stop);
  EXPECT_EQ(drawn.message, c.stop == RenderStop::kNone ? "" : std::string("page 1: ") + RenderStopText(c.stop));
  EXPECT_EQ(drawn.templates, c.templates);
  if (c.ink) {
    EXPECT_TRUE(HasInk(*drawn.bitmap));
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, HostileRender, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(HostileRender_Limits, TheRendererTellsItsReasonUntilRestarted) {
  testing_support::Opened opened = testing_support::Open(testing_support::CompositeFanOutPackage(4, 4));
  ASSERT_TRUE(opened.doc);
  std::unique_ptr<OfdPage> page = testing_support::ParsedPage(*opened.doc, 0);
  ASSERT_TRUE(page);
  std::unique_ptr<Device> device = CreateBitmapDevice(64, 64, kDibArgb32, 0xFFFFFFFF);
  OfdRenderContext context;
  context.AppendPage(page.get(), page->GetDisplayMatrix(0, 0, 64, 64, 0), 0);
  OfdProgressiveRender render(page.get(), BitmapDeviceCreator, nullptr, 0, 0, 0);
  RenderLimits limits;
  limits.maxObjects = 10;
  render.SetLimits(limits);
  EXPECT_EQ(render.GetLimits().maxObjects, 10u);
  ASSERT_EQ(render.StartRender(&context, device.get()), 1);
  while (render.Continue()) {
  }
  EXPECT_EQ(render.GetStopReason(), RenderStop::kObjects);
  EXPECT_EQ(render.GetObjectCount(), 11u);
  EXPECT_EQ(render.GetStopMessage(), "page 1: too many objects");
  render.SetLimits(RenderLimits());
  ASSERT_EQ(render.StartRender(&context, device.get()), 1);
  EXPECT_EQ(render.GetStopReason(), RenderStop::kNone);
  while (render.Continue()) {
  }
  EXPECT_EQ(render.GetStopReason(), RenderStop::kNone);
  EXPECT_TRUE(render.GetStopMessage().empty());
}

}  // namespace
}  // namespace host
