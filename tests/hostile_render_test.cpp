// Small documents that ask for unbounded work: composite units fanning out,
// templates naming each other many times, huge self-crossing paths. Each must
// finish, bounded by the renderer's limits, with what was drawn kept and the
// reason for stopping told.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_page_render.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using testing_support::OfdPageXml;

constexpr int kDpi = 50;

// A package whose one A4 page (ID 1000) is `page`, beside `files`.
std::string Package(const std::string& page, const std::string& common = "",
                    testing_support::ZipEntries files = {}) {
  files.push_back({"Doc_0/Document.xml",
                   testing_support::OfdDocumentXml({{1000, "Pages/Page_0/Content.xml"}}, common)});
  files.push_back({"Doc_0/Pages/Page_0/Content.xml", page});
  return testing_support::BuildOfdPackage(files);
}

std::string Triangle(int id, int size) {
  const std::string s = std::to_string(size);
  return "<ofd:PathObject ID=\"" + std::to_string(id) + "\" Boundary=\"0 0 " + s + " " + s +
         "\"><ofd:AbbreviatedData>M 0 0 L " + s + " " + s + " L 0 " + s +
         " C</ofd:AbbreviatedData></ofd:PathObject>";
}

std::string Composites(int unitId, int fan) {
  std::string body;
  for (int i = 0; i < fan; ++i)
    body += "<ofd:CompositeObject ID=\"" + std::to_string(100000 + i) + "\" ResourceID=\"" +
            std::to_string(unitId) + "\" Boundary=\"" + std::to_string(i % 5) + " 0 10 10\"/>";
  return body;
}

// `units` composite graphic units, each holding `fan` CompositeObjects that
// use the next unit (the last holds `fan` small paths); the page draws the
// first unit once: fan^units paths.
std::string CompositeFanOut(int units, int fan) {
  std::string res = "<ofd:CompositeGraphicUnits>";
  for (int u = 1; u <= units; ++u) {
    std::string content = u < units ? Composites(u + 1, fan) : "";
    for (int i = 0; u == units && i < fan; ++i) content += Triangle(200000 + i, 5);
    res += "<ofd:CompositeGraphicUnit ID=\"" + std::to_string(u) + "\" Width=\"10\" Height=\"10\"><ofd:Content>" +
           content + "</ofd:Content></ofd:CompositeGraphicUnit>";
  }
  return Package(OfdPageXml(Composites(1, 1)), "<ofd:PublicRes>PublicRes.xml</ofd:PublicRes>",
                 {{"Doc_0/PublicRes.xml", testing_support::OfdResXml(res + "</ofd:CompositeGraphicUnits>")}});
}

// `templates` template pages, each naming the next one `fan` times; the page
// names the first: fan^(templates-1) template loads without a cap.
std::string TemplateFanOut(int templates, int fan) {
  testing_support::ZipEntries files;
  std::string common;
  for (int t = 1; t <= templates; ++t) {
    const std::string loc = "Tpls/Tpl_" + std::to_string(t) + "/Content.xml";
    common += "<ofd:TemplatePage ID=\"" + std::to_string(t) + "\" BaseLoc=\"" + loc + "\"/>";
    std::string head;
    for (int i = 0; t < templates && i < fan; ++i) head += "<ofd:Template TemplateID=\"" + std::to_string(t + 1) + "\"/>";
    files.push_back({"Doc_0/" + loc, OfdPageXml(Triangle(5, 20), head)});
  }
  return Package(OfdPageXml("", "<ofd:Template TemplateID=\"1\"/>"), common, files);
}

// A filled and stroked path of `points` points zigzagging between the top and
// the bottom edge of the page, so that every segment crosses others.
std::string SelfCrossingPath(int points) {
  std::string data = "M 0 0";
  data.reserve(static_cast<size_t>(points) * 16);
  for (int i = 1; i < points; ++i)
    data += " L " + std::to_string(int64_t{i} * 7919 % 210) + (i % 2 ? " 297" : " 0");
  return Package(OfdPageXml("<ofd:PathObject ID=\"10\" Boundary=\"0 0 210 297\" Fill=\"true\" Stroke=\"true\">"
                            "<ofd:AbbreviatedData>" + data + " C</ofd:AbbreviatedData></ofd:PathObject>"));
}

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
    {"composite_fan_out", [] { return CompositeFanOut(9, 10); }, RenderStop::kObjects, {}, 0, true},
    // Eight templates naming the next ten times: loaded once each.
    {"template_fan_out", [] { return TemplateFanOut(8, 10); }, RenderStop::kNone, {}, 8, true},
    {"one_crossing_path_30k", [] { return SelfCrossingPath(30000); }, RenderStop::kScanRows, {}, 0, false},
    // Cut to a million segments when parsed, still too much to draw.
    {"one_crossing_path_3m", [] { return SelfCrossingPath(3000000); }, RenderStop::kScanRows, {}, 0, false},
    // Of 40 objects: the page's composite, two units of three, then paths.
    {"host_object_limit", [] { return CompositeFanOut(3, 3); }, RenderStop::kObjects, Limits(20, 4000000), 0, true},
    {"no_limits", [] { return CompositeFanOut(3, 3); }, RenderStop::kNone, Limits(0, 0), 0, true},
    {"host_segment_limit", [] { return SelfCrossingPath(1000); }, RenderStop::kSegments, Limits(250000, 100), 0, false},
};

class HostileRender : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileRender, FinishesWithinLimitsAndSaysWhy) {
  const HostileCase& c = GetParam();
  const Drawn drawn = DrawFirstPage(c.make(), c.limits);
  ASSERT_TRUE(drawn.bitmap) << "the page was not drawn";
  EXPECT_EQ(std::tuple(drawn.stop, drawn.message, drawn.templates),
            std::tuple(c.stop, c.stop == RenderStop::kNone ? "" : std::string("page 1: ") + RenderStopText(c.stop),
                       c.templates));
  EXPECT_TRUE(!c.ink || HasInk(*drawn.bitmap));
}

INSTANTIATE_TEST_SUITE_P(Documents, HostileRender, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(HostileRender_Limits, TheRendererTellsItsReasonUntilRestarted) {
  testing_support::Opened opened = testing_support::Open(CompositeFanOut(4, 4));
  ASSERT_TRUE(opened.doc);
  std::unique_ptr<OfdPage> page = testing_support::ParsedPage(*opened.doc, 0);
  ASSERT_TRUE(page);
  std::unique_ptr<Device> device = CreateBitmapDevice(64, 64, kDibArgb32, 0xFFFFFFFF);
  OfdRenderContext context;
  context.AppendPage(page.get(), page->GetDisplayMatrix(0, 0, 64, 64, 0), 0);
  OfdProgressiveRender render(page.get(), BitmapDeviceCreator, nullptr, 0, 0, 0);
  render.SetLimits(Limits(10, 4000000));
  EXPECT_EQ(render.GetLimits().maxObjects, 10u);
  ASSERT_EQ(render.StartRender(&context, device.get()), 1);
  while (render.Continue()) {
  }
  EXPECT_EQ(std::tuple(render.GetStopReason(), render.GetObjectCount(), render.GetStopMessage()),
            std::tuple(RenderStop::kObjects, 11u, std::string("page 1: too many objects")));
  render.SetLimits(RenderLimits());
  ASSERT_EQ(render.StartRender(&context, device.get()), 1);
  EXPECT_EQ(render.GetStopReason(), RenderStop::kNone);
  while (render.Continue()) {
  }
  EXPECT_EQ(std::tuple(render.GetStopReason(), render.GetStopMessage()), std::tuple(RenderStop::kNone, ""));
}

}  // namespace
}  // namespace host
