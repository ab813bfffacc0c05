// The OFD page renderer: drawing order, paths, text, images, clips and
// shadings against reference pictures; seal pictures through the seal image
// parser; hostile object trees.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/fixtures.h"
#include "support/fonts.h"
#include "host/base/device.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_clip_page_area.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"
#include "host/base/font.h"
#include "support/opened_document.h"
#include "support/render_compare.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using namespace testing_support;  // NOLINT: packages, documents and reference pictures

constexpr uint32_t kWhite = 0xFFFFFFFF;
constexpr uint32_t kRed = 0xFFFF0000;
constexpr uint32_t kBlue = 0xFF0000FF;
constexpr uint32_t kBlack = 0xFF000000;

// A document with one 40 x 40 mm page holding `body` in one layer.
std::string OnePage(const std::string& body, const std::string& pageHead = "",
                    const std::string& commonData = "", const std::string& docExtra = "",
                    ZipEntries extra = {}) {
  const std::string publicRes = OfdResXml(
      "<ofd:Fonts><ofd:Font ID=\"3\" FontName=\"楷体\" FamilyName=\"楷体\"/>"
      "<ofd:Font ID=\"4\" FontName=\"宋体\" FamilyName=\"宋体\"/></ofd:Fonts>"
      "<ofd:ColorSpaces><ofd:ColorSpace ID=\"5\" Type=\"CMYK\"/>"
      "<ofd:ColorSpace ID=\"6\" Type=\"GRAY\"/></ofd:ColorSpaces>",
      "Res");
  ZipEntries files = {
      {"Doc_0/Document.xml",
       OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}},
                      "<ofd:PageArea><ofd:PhysicalBox>0 0 40 40</ofd:PhysicalBox></ofd:PageArea>"
                      "<ofd:PublicRes>PublicRes.xml</ofd:PublicRes>" + commonData,
                      docExtra)},
      {"Doc_0/PublicRes.xml", publicRes},
      {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml(body, pageHead)},
  };
  for (auto& f : extra) files.push_back(std::move(f));
  return BuildOfdPackage(files);
}

// Renders a page onto a white device of `w` x `h` pixels covering the page,
// leaving the device's saved states balanced.
std::unique_ptr<Dib> Render(OfdPage& page, int w, int h) {
  std::unique_ptr<Device> device = CreateBitmapDevice(w, h, kDibArgb32, kWhite);
  if (!device) return nullptr;
  const Matrix matrix = page.GetDisplayMatrix(0, 0, w, h, 0);
  OfdRenderContext context(0);
  context.AppendPage(&page, matrix, OfdRenderContext::kPageAnnotations);
  OfdClipPageArea(device.get(), &page, matrix);
  OfdProgressiveRender render(&page, BitmapDeviceCreator, nullptr, 0, 0, 0);
  render.StartRender(&context, device.get());
  for (int calls = 0; render.Continue() && calls < 100000; ++calls) {
  }
  EXPECT_EQ(device->SaveDepth(), 0);
  return std::unique_ptr<Dib>(device->TakeBitmap());
}

std::unique_ptr<Dib> RenderPackage(const std::string& bytes, int w, int h) {
  Opened o = Open(StreamReader::CreateMemoryStreamReader(bytes));
  if (!o.doc) return nullptr;
  std::unique_ptr<OfdPage> page = ParsedPage(*o.doc, 0);
  return page ? Render(*page, w, h) : nullptr;
}

std::string Solid(const char* value, const char* extra = "") {
  return std::string("<ofd:FillColor Value=\"") + value + "\" " + extra + "/>";
}

// ---------------------------------------------------------------------------
// Reference pictures

// Each picture's name and package.
std::vector<std::pair<const char*, std::string>> GoldenCases() {
  const std::string circle = "M 36 20 A 16 16 0 1 1 4 20 A 16 16 0 1 1 36 20 C";
  const std::string clip =
      "<ofd:PathObject ID=\"1\" Boundary=\"0 0 40 40\" Fill=\"true\">" + Solid("0 0 255") +
      "<ofd:Clips><ofd:Clip><ofd:Area><ofd:Path Boundary=\"0 0 40 40\"><ofd:AbbreviatedData>" +
      circle + "</ofd:AbbreviatedData></ofd:Path></ofd:Area></ofd:Clip>"
      "<ofd:Clip><ofd:Area CTM=\"1 0 0 1 0 20\"><ofd:Path Boundary=\"0 0 40 20\">"
      "<ofd:AbbreviatedData>M 0 0 L 40 0 L 40 20 L 0 20 C</ofd:AbbreviatedData></ofd:Path>"
      "</ofd:Area></ofd:Clip></ofd:Clips>"
      "<ofd:AbbreviatedData>M 0 0 L 40 0 L 40 40 L 0 40 C</ofd:AbbreviatedData></ofd:PathObject>";

  const std::string stops =
      "<ofd:Segment Position=\"0\"><ofd:Color Value=\"255 0 0\"/></ofd:Segment>"
      "<ofd:Segment Position=\"0.5\"><ofd:Color Value=\"255 255 0\"/></ofd:Segment>"
      "<ofd:Segment Position=\"1\"><ofd:Color Value=\"0 0 255\"/></ofd:Segment>";
  const std::string shading =
      "<ofd:PathObject ID=\"1\" Boundary=\"0 0 40 20\" Fill=\"true\" Stroke=\"false\">"
      "<ofd:FillColor><ofd:AxialShd StartPoint=\"8 0\" EndPoint=\"32 0\" Extend=\"3\">" + stops +
      "</ofd:AxialShd></ofd:FillColor>"
      "<ofd:AbbreviatedData>M 2 2 L 38 2 L 38 18 L 2 18 C</ofd:AbbreviatedData></ofd:PathObject>"
      "<ofd:PathObject ID=\"2\" Boundary=\"0 20 40 20\" Fill=\"true\" Stroke=\"false\">"
      "<ofd:FillColor><ofd:RadialShd StartPoint=\"20 10\" EndPoint=\"20 10\" StartRadius=\"0\" "
      "EndRadius=\"9\" Extend=\"0\">" + stops + "</ofd:RadialShd></ofd:FillColor>"
      "<ofd:AbbreviatedData>M 2 1 L 38 1 L 38 19 L 2 19 C</ofd:AbbreviatedData></ofd:PathObject>";

  // Red background template, green content, blue foreground template and a
  // yellow annotation, each smaller than the one before.
  auto square = [](const char* color, int inset) {
    const std::string a = std::to_string(inset), b = std::to_string(40 - inset);
    return "<ofd:PathObject ID=\"50\" Boundary=\"0 0 40 40\" Fill=\"true\" Stroke=\"false\">" +
           Solid(color) + "<ofd:AbbreviatedData>M " + a + " " + a + " L " + b + " " + a + " L " +
           b + " " + b + " L " + a + " " + b + " C</ofd:AbbreviatedData></ofd:PathObject>";
  };
  const std::string annotations =
      "<ofd:Annotations xmlns:ofd=\"http://www.ofdspec.org/2016\"><ofd:Page PageID=\"1\">"
      "<ofd:FileLoc>Page_0/Annotation.xml</ofd:FileLoc></ofd:Page></ofd:Annotations>";
  const std::string pageAnnot =
      "<ofd:PageAnnot xmlns:ofd=\"http://www.ofdspec.org/2016\"><ofd:Annot ID=\"60\" Type=\"Stamp\">"
      "<ofd:Appearance Boundary=\"15 15 10 10\"><ofd:PathObject ID=\"61\" Boundary=\"0 0 10 10\" "
      "Fill=\"true\" Stroke=\"false\">" + Solid("255 220 0") +
      "<ofd:AbbreviatedData>M 0 0 L 10 0 L 10 10 L 0 10 C</ofd:AbbreviatedData></ofd:PathObject>"
      "</ofd:Appearance></ofd:Annot>"
      "<ofd:Annot ID=\"62\" Type=\"Stamp\" Visible=\"false\"><ofd:Appearance Boundary=\"0 0 40 40\">"
      "<ofd:PathObject ID=\"63\" Boundary=\"0 0 40 40\" Fill=\"true\">" + Solid("0 0 0") +
      "<ofd:AbbreviatedData>M 0 0 L 40 0 L 40 40 C</ofd:AbbreviatedData></ofd:PathObject>"
      "</ofd:Appearance></ofd:Annot></ofd:PageAnnot>";

  return {
      {"render_clip", OnePage(clip)},
      {"render_shading", OnePage(shading)},
      {"render_draw_order",
       OnePage(square("0 160 0", 5),
               "<ofd:Template TemplateID=\"3\" ZOrder=\"Foreground\"/><ofd:Template TemplateID=\"2\"/>",
               "<ofd:TemplatePage ID=\"2\" BaseLoc=\"Tpls/Tpl_0/Content.xml\" ZOrder=\"Background\"/>"
               "<ofd:TemplatePage ID=\"3\" BaseLoc=\"Tpls/Tpl_1/Content.xml\"/>",
               "<ofd:Annotations>Annots/Annotations.xml</ofd:Annotations>",
               {{"Doc_0/Tpls/Tpl_0/Content.xml", OfdPageXml(square("255 0 0", 0))},
                {"Doc_0/Tpls/Tpl_1/Content.xml", OfdPageXml(square("0 0 255", 10))},
                {"Doc_0/Annots/Annotations.xml", annotations},
                {"Doc_0/Annots/Page_0/Annotation.xml", pageAnnot}})},
  };
}

TEST(OfdRender_References, MatchReferencePictures) {
  TARVIK_NEED_FONTS("AR PL UKai CN", "AR PL UMing CN");
  for (const auto& [name, package] : GoldenCases()) {
    SCOPED_TRACE(name);
    std::unique_ptr<Dib> dib = RenderPackage(package, 160, 160);
    ASSERT_NE(dib, nullptr);
    EXPECT_TRUE(CompareWithReference(*dib, name, 8));
  }
}

// ---------------------------------------------------------------------------
// Page content: text without its font file, glyph groups, fallbacks,
// default colours, patterns, synthetic bold

int CountInk(const Dib& dib, int threshold = 160) {
  int n = 0;
  for (int y = 0; y < dib.GetHeight(); ++y)
    for (int x = 0; x < dib.GetWidth(); ++x) {
      const uint32_t p = dib.GetPixel(Point(x, y));
      n += static_cast<int>((((p >> 16) & 0xFF) + ((p >> 8) & 0xFF) + (p & 0xFF)) / 3) < threshold;
    }
  return n;
}

int CountDifferent(const Dib& a, const Dib& b) {
  int n = 0;
  for (int y = 0; y < a.GetHeight(); ++y)
    for (int x = 0; x < a.GetWidth(); ++x) n += a.GetPixel(Point(x, y)) != b.GetPixel(Point(x, y));
  return n;
}

std::string Text(const std::string& attrs, const std::string& inner) {
  return "<ofd:TextObject ID=\"1\" Boundary=\"0 0 40 40\" Size=\"8\" " + attrs + ">" + inner + "</ofd:TextObject>";
}

// A TextCode at (2, 20) mm.
std::string Code(const std::string& text, const std::string& deltaX = "") {
  return "<ofd:TextCode X=\"2\" Y=\"20\"" + (deltaX.empty() ? "" : " DeltaX=\"" + deltaX + "\"") + ">" + text +
         "</ofd:TextCode>";
}

// A page whose document resources add font 7, embedded from `fontFile`, font
// 8, whose file is missing, and font 9, DejaVu Sans by name.
std::unique_ptr<Dib> RenderWithDocumentFonts(const std::string& body, const std::string& fontFile = "") {
  const std::string docRes = OfdResXml(
      "<ofd:Fonts><ofd:Font ID=\"7\" FontName=\"Embedded\"><ofd:FontFile>f.ttf</ofd:FontFile>"
      "</ofd:Font><ofd:Font ID=\"8\" FontName=\"宋体\"><ofd:FontFile>missing.ttf</ofd:FontFile>"
      "</ofd:Font><ofd:Font ID=\"9\" FontName=\"DejaVu Sans\"/></ofd:Fonts>");
  return RenderPackage(OnePage(body, "", "<ofd:DocumentRes>DocRes.xml</ofd:DocumentRes>", "",
                               {{"Doc_0/DocRes.xml", docRes}, {"Doc_0/f.ttf", fontFile}}),
                       160, 160);
}

std::string ReadFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Each case draws the same picture twice: once as the document under test
// writes it, once as plain characters.
TEST(OfdRender_Text, GlyphIndicesAndGroupsDrawTheRightCharacters) {
  const std::string dejavu = ReadFile("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
  if (dejavu.empty()) GTEST_SKIP() << "DejaVu Sans not installed";
  Font face(nullptr);
  ASSERT_TRUE(face.LoadFontFromMemory(reinterpret_cast<const uint8_t*>(dejavu.data()), dejavu.size()));
  auto g = [&](char32_t c) { return std::to_string(face.GetGlyphIndex(c)); };
  auto cg = [](int pos, int codes, int glyphs, const std::string& list) {
    return "<ofd:CGTransform CodePosition=\"" + std::to_string(pos) + "\" CodeCount=\"" +
           std::to_string(codes) + "\" GlyphCount=\"" + std::to_string(glyphs) +
           "\"><ofd:Glyphs>" + list + "</ofd:Glyphs></ofd:CGTransform>";
  };
  const struct { const char* name; std::string tested, plain; } cases[] = {
      // Indices of a font that is not embedded (4) or whose file is missing
      // (8) are meaningless: the characters are drawn.
      {"no file", Text("Font=\"4\"", cg(0, 3, 3, "1 2 3") + Code("测试章", "9 9")), Text("Font=\"4\"", Code("测试章", "9 9"))},
      {"file missing", Text("Font=\"8\"", cg(0, 2, 2, "5 6") + Code("测试", "9")), Text("Font=\"4\"", Code("测试", "9"))},
      // Groups in the embedded font: 2 characters as 1 glyph, 1 as 2, 2 as 3;
      // DeltaX steps from glyph to glyph.
      {"2 to 1", Text("Font=\"7\"", cg(1, 2, 1, g(U'\uFB01')) + Code("xfiy", "6 6")),
       Text("Font=\"7\"", Code("x\uFB01y", "6 6"))},
      {"1 to 2", Text("Font=\"7\"", cg(0, 1, 2, g(U'A') + " " + g(U'B')) + Code("QC", "7 7")),
       Text("Font=\"7\"", Code("ABC", "7 7"))},
      {"2 to 3", Text("Font=\"7\"", cg(0, 2, 3, g(U'A') + " " + g(U'B') + " " + g(U'C')) + Code("QR", "7 7")),
       Text("Font=\"7\"", Code("ABC", "7 7"))},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::unique_ptr<Dib> tested = RenderWithDocumentFonts(c.tested, dejavu);
    std::unique_ptr<Dib> plain = RenderWithDocumentFonts(c.plain, dejavu);
    ASSERT_TRUE(tested && plain);
    EXPECT_GT(CountInk(*plain), 100);
    EXPECT_EQ(CountDifferent(*tested, *plain), 0);
  }
}



TEST(OfdRender_Text, CharactersTheFontLacksComeFromElsewhereOrAsBoxes) {
  TARVIK_NEED_FONTS("AR PL UKai CN", "DejaVu Sans");
  // ♔ is in neither 楷体's substitute nor the CJK fallback, but in DejaVu Sans
  // (font 9). A character no installed font has is a box, not nothing.
  std::unique_ptr<Dib> a = RenderWithDocumentFonts(Text("Font=\"3\"", Code("\u2654"))),
                       b = RenderWithDocumentFonts(Text("Font=\"9\"", Code("\u2654"))),
                       box = RenderWithDocumentFonts(Text("Font=\"3\"", Code("\U0010FFFD")));
  ASSERT_TRUE(a && b && box);
  EXPECT_EQ(std::tuple(CountInk(*a) > 50, CountDifferent(*a, *b), CountInk(*box) > 50), std::tuple(true, 0, true));
}

TEST(OfdRender_Text, BoldWithoutABoldFaceIsSynthesized) {
  TARVIK_NEED_FONTS("AR PL UKai CN");
  // The 楷体 substitute has no bold face.
  auto render = [](const char* weight) {
    return RenderPackage(OnePage(Text(std::string("Font=\"3\" Weight=\"") + weight + "\"", Code("测试章", "9 9"))),
                         160, 160);
  };
  std::unique_ptr<Dib> regular = render("400"), bold = render("700");
  ASSERT_TRUE(regular && bold);
  EXPECT_GT(CountInk(*bold), CountInk(*regular) * 5 / 4);
}

// A 30 x 30 mm square at 1 px per mm: colours inside, at (20, 20) mm, and on
// its left edge, at (4, 20) mm, in every colour space, and the defaults.
TEST(OfdRender_Paths, ColoursTakeTheirSpaceAlphaAndDefaults) {
  const char* fill = "Fill=\"true\" Stroke=\"false\"";
  const struct { const char *name, *attrs; std::string colour; uint32_t inside, edge; } cases[] = {
      {"rgb", fill, Solid("0 0 255"), kBlue, kWhite},
      {"hex", fill, Solid("#FF0000"), kRed, kWhite},
      {"gray", fill, Solid("0", "ColorSpace=\"6\""), kBlack, kWhite},
      {"cmyk", fill, Solid("0 255 255 0", "ColorSpace=\"5\""), kRed, kWhite},
      {"alpha", fill, Solid("0 0 0", "Alpha=\"128\""), 0xFF7F7F7F, kWhite},
      {"fill without colour", fill, "", kWhite, kWhite},
      {"stroke without colour", "Fill=\"true\" LineWidth=\"2\"", "", kWhite, kBlack},
  };
  auto near = [](uint32_t a, uint32_t b) {
    for (int shift : {0, 8, 16, 24})
      if (std::abs(static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF)) > 2) return false;
    return true;
  };
  for (const auto& c : cases) {
    std::unique_ptr<Dib> dib = RenderPackage(
        OnePage(std::string("<ofd:PathObject ID=\"1\" Boundary=\"0 0 40 40\" ") + c.attrs + ">" + c.colour +
                "<ofd:AbbreviatedData>M 5 5 L 35 5 L 35 35 L 5 35 C</ofd:AbbreviatedData></ofd:PathObject>"),
        40, 40);
    ASSERT_NE(dib, nullptr) << c.name;
    EXPECT_PRED2(near, dib->GetPixel(Point(20, 20)), c.inside) << c.name;
    EXPECT_PRED2(near, dib->GetPixel(Point(4, 20)), c.edge) << c.name;
  }
}

// A 40 x 40 mm square filled with a pattern whose cell holds a 2 x 2 mm
// blue square in its top-left corner; steps of 10 mm. Drawn at 1 px per mm.
TEST(OfdRender_Paths, PatternCellsRepeatAtTheirStep) {
  auto fill = [](const std::string& patternAttrs) {
    return "<ofd:PathObject ID=\"1\" Boundary=\"0 0 40 40\" Fill=\"true\" Stroke=\"false\">"
           "<ofd:FillColor><ofd:Pattern Width=\"4\" Height=\"4\" XStep=\"10\" YStep=\"10\" " + patternAttrs +
           "><ofd:CellContent><ofd:PathObject ID=\"9\" Boundary=\"0 0 4 4\" Fill=\"true\" Stroke=\"false\">" +
           Solid("0 0 255") + "<ofd:AbbreviatedData>M 0 0 L 2 0 L 2 2 L 0 2 C</ofd:AbbreviatedData></ofd:PathObject>"
           "</ofd:CellContent></ofd:Pattern></ofd:FillColor>"
           "<ofd:AbbreviatedData>M 0 0 L 40 0 L 40 40 L 0 40 C</ofd:AbbreviatedData></ofd:PathObject>";
  };
  const struct { const char* name; std::string attrs; std::vector<Point> blue, white; } cases[] = {
      {"normal", "", {{1, 1}, {11, 1}, {21, 31}, {31, 11}}, {{5, 5}, {3, 1}, {13, 1}, {15, 15}}},
      {"moved by its matrix", "CTM=\"1 0 0 1 5 0\"", {{6, 1}, {16, 11}}, {{1, 1}, {11, 1}}},
      // Odd columns mirror the cell: their square sits at 2..4 mm of the cell.
      {"mirrored columns", "ReflectMethod=\"Column\"", {{1, 1}, {13, 1}, {21, 1}}, {{11, 1}}},
  };
  for (const auto& c : cases) {
    std::unique_ptr<Dib> dib = RenderPackage(OnePage(fill(c.attrs)), 40, 40);
    ASSERT_NE(dib, nullptr) << c.name;
    for (const Point& p : c.blue) EXPECT_EQ(dib->GetPixel(p), kBlue) << c.name << " " << p.x << "," << p.y;
    for (const Point& p : c.white) EXPECT_EQ(dib->GetPixel(p), kWhite) << c.name << " " << p.x << "," << p.y;
  }
}



// ---------------------------------------------------------------------------
// Real documents, first page at 40 dpi

TEST(OfdRender_Fixtures, FirstPagesMatchReferences) {
  const std::filesystem::path folder = TARVIK_FIXTURE_DIR;
  TARVIK_NEED_FIXTURE(folder);
  TARVIK_NEED_FONTS("AR PL UMing CN", "AR PL UKai CN", "Noto Sans CJK SC", "DejaVu Sans");
  // Small pictures keep the references small; the seal-sized page is drawn larger.
  const struct { const char* name; int dpi; } cases[] = {
      {"ofdrw__999", 40},         {"ofdrw__h", 40},          {"ofdrw__csfapiao1", 40},
      {"ofdrw__draw_param_ref", 40}, {"ofdrw__ctm_rotate", 200}, {"ofdrw__alpha_text", 40},
      {"ofdrw__testPathFillOpacity", 40}, {"ofdrw__keyword", 40}, {"c5soft__6.2.001_normal_structure", 20}};
  for (const auto& [name, dpi] : cases) {
    SCOPED_TRACE(name);
    const std::filesystem::path file = folder / (std::string(name) + ".ofd");
    if (!std::filesystem::exists(file)) continue;
    Opened o = Open(StreamReader::CreateFileStreamReader(file.c_str()));
    ASSERT_NE(o.doc, nullptr);
    std::unique_ptr<OfdPage> page = ParsedPage(*o.doc, 0);
    ASSERT_NE(page, nullptr);
    const int w = static_cast<int>(page->GetPageWidth() * dpi / 25.4);
    const int h = static_cast<int>(page->GetPageHeight() * dpi / 25.4);
    std::unique_ptr<Dib> dib = Render(*page, w, h);
    ASSERT_NE(dib, nullptr);
    EXPECT_TRUE(CompareWithReference(*dib, std::string("fixture_") + name, 12));
  }
}

// ---------------------------------------------------------------------------
// Seal pictures

// A fake seal provider: answers with a picture of the size asked for, white
// (or transparent) with a red centre half, and records the requests.
struct SealRequest {
  bool opaque = true, answerNull = false;
  int calls = 0;
  const OfdMultiMedia* media = nullptr;
};

Dib* FakeSealParser(const OfdMultiMedia* media, const Size& size, void* request) {
  auto* r = static_cast<SealRequest*>(request);
  ++r->calls, r->media = media;
  if (r->answerNull) return nullptr;
  std::unique_ptr<Dib> dib = Dib::Create(size.width, size.height, kDibArgb32);
  if (!dib) return nullptr;
  dib->Fill(r->opaque ? kWhite : 0x00FFFFFF);
  for (int y = size.height / 4; y < size.height * 3 / 4; ++y)
    for (int x = size.width / 4; x < size.width * 3 / 4; ++x) dib->SetPixel(Point(x, y), kRed);
  return dib.release();
}

// Draws a seal annotation at (20, 30)-(50, 50) mm at 2 px/mm over a page
// whose left part of the seal area, (20, 30)-(35, 50) mm, is blue.
std::unique_ptr<Dib> RenderSeal(SealRequest* request, const Matrix& matrix = Matrix(2, 0, 0, 2, 0, 0)) {
  OfdAnnotationSeal seal;
  seal.Boundary = GRect(20, 30, 50, 50);
  auto media = std::make_unique<OfdMultiMedia>();
  media->type = "Seal";
  seal.BindSealImage(std::move(media));

  std::unique_ptr<Device> device = CreateBitmapDevice(200, 200, kDibArgb32, kWhite);
  Path blue;
  blue.AddRect(20, 30, 15, 20);
  device->FillPath(blue, matrix, kBlue, FillRule::kNonZero);
  OfdRenderContext context(0);
  context.AppendPageBlock(seal.Appearance.get(), matrix, seal.Boundary);
  OfdProgressiveRender render(nullptr, BitmapDeviceCreator, nullptr, 0, 0, 0);
  if (request) render.SetSealImageParser(FakeSealParser, request);
  render.StartRender(&context, device.get());
  while (render.Continue()) {
  }
  EXPECT_EQ(device->SaveDepth(), 0);
  EXPECT_TRUE(!request || !request->calls || request->media == seal.sealMedia.get());
  return std::unique_ptr<Dib>(device->TakeBitmap());
}

// The page under the seal is blue on the left, white on the right; the
// picture's centre half is red.
TEST(OfdRender_Seal, OpaquePicturesMultiplyTransparentOnesDrawOver) {
  enum Answer { kOpaque, kTransparent, kNull, kNoParser };
  // Red on blue, red on white, white on blue, white on white, outside the seal.
  const Point at[] = {Point(60, 80), Point(80, 80), Point(45, 65), Point(95, 65), Point(150, 150)};
  const struct { Answer answer; std::vector<uint32_t> want; } cases[] = {
      {kOpaque, {kBlack, kRed, kBlue, kWhite, kWhite}},  // red on blue: no light left
      {kTransparent, {kRed, kRed, kBlue, kWhite, kWhite}},
      {kNull, {kBlue, kWhite, kBlue, kWhite, kWhite}},
      {kNoParser, {kBlue, kWhite, kBlue, kWhite, kWhite}},
  };
  for (const auto& c : cases) {
    SealRequest request;
    request.opaque = c.answer == kOpaque;
    request.answerNull = c.answer == kNull;
    std::unique_ptr<Dib> dib = RenderSeal(c.answer == kNoParser ? nullptr : &request);
    ASSERT_NE(dib, nullptr);
    std::vector<uint32_t> got;
    for (const Point& p : at) got.push_back(dib->GetPixel(p));
    EXPECT_EQ(std::pair(request.calls, got), std::pair(c.answer == kNoParser ? 0 : 1, c.want)) << c.answer;
  }
}

// ---------------------------------------------------------------------------
// Robustness

// A new object of type T with matrix `ctm`, appended to `block`.
template <typename T>
T* Add(OfdPageBlock& block, const Matrix& ctm) {
  auto object = std::make_unique<T>();
  object->ctm = ctm;
  block.children.push_back(std::move(object));
  return static_cast<T*>(block.children.back().get());
}

TEST(OfdRender_Hostile, BrokenObjectsDrawWithoutHarm) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  OfdMultiMedia unreadable;  // no container: its bytes cannot be read
  unreadable.type = "Image";
  OfdPageBlock root;
  for (const Matrix& ctm : {Matrix(1e30f, 0, 0, 1e30f, 0, 0), Matrix(nan, 0, 0, 1, 0, 0),
                            Matrix(0, 0, 0, 0, 0, 0), Matrix(1, 0, 0, 1, inf, -inf)}) {
    auto* path = Add<OfdPathObject>(root, ctm);
    path->fill = true;
    path->path.AddRect(0, 0, 10, 10);
    path->strokeStyle.width = ctm.a;
    path->strokeStyle.dashes = {ctm.a, nan};
    auto* text = Add<OfdTextObject>(root, ctm);
    text->size = ctm.a;
    text->hScale = nan;
    OfdTextCode& code = text->textCodes.emplace_back();
    code.text = WideString(U"测试AB");
    code.xs = {0, nan, 1e30f, 2};
    code.ys = {0, 0, nan, 2};
    code.glyphs = {-1, 5, 70000, -1};
    auto* image = Add<OfdImageObject>(root, ctm);
    image->boundary = GRect(3, 3, 3, 3);  // no area at all
    image->media = &unreadable;
  }
  auto* nanPath = Add<OfdPathObject>(root, Matrix());
  nanPath->path.MoveTo(nan, 0);
  nanPath->path.LineTo(1e30f, -1e30f);
  nanPath->fill = true;
  auto shading = std::make_shared<OfdShading>();
  shading->startX = nan;
  shading->segments.resize(2);
  nanPath->fillColor.shading = shading;
  nanPath->clips.emplace_back().areas.emplace_back();  // an area without a shape
  // Blocks nested far deeper than the renderer follows.
  OfdPageBlock* inner = &root;
  for (int i = 0; i <= 3 * OfdProgressiveRender::kMaxDepth; ++i) inner = Add<OfdPageBlock>(*inner, Matrix());
  auto* bottom = Add<OfdPathObject>(*inner, Matrix());
  bottom->fill = true;
  bottom->fillColor = OfdColor::Rgb(0, 255, 0);
  bottom->path.AddRect(0, 0, 40, 40);

  // Seal pictures at absurd sizes are never asked for.
  OfdMultiMedia seal;
  seal.type = "Seal";
  for (const Matrix& ctm : {Matrix(1e9f, 0, 0, 1e9f, 0, 0), Matrix(nan, 0, 0, nan, 0, 0),
                            Matrix(0.01f, 0, 0, 0.01f, 0, 0)})
    Add<OfdImageObject>(root, ctm)->media = &seal;

  std::unique_ptr<Device> device = CreateBitmapDevice(64, 64, kDibArgb32, kWhite);
  OfdRenderContext context(0);
  context.AppendPageBlock(&root, Matrix(2, 0, 0, 2, 0, 0), GRect(0, 0, 0, 0));
  context.AppendPageBlock(&root, Matrix(nan, 0, 0, 2, 0, 0), GRect(0, 0, 30, 30));
  OfdProgressiveRender render(nullptr, BitmapDeviceCreator, nullptr, 0, 0, 0);
  SealRequest request;
  render.SetSealImageParser(FakeSealParser, &request);
  ASSERT_EQ(render.StartRender(&context, device.get()), 1);
  int calls = 0;
  while (render.Continue() && calls < 1000) ++calls;
  EXPECT_EQ(std::tuple(calls < 1000, request.calls, device->SaveDepth()), std::tuple(true, 0, 0));
  std::unique_ptr<Dib> dib(device->TakeBitmap());
  ASSERT_NE(dib, nullptr);
  // The deep green square is not reached.
  for (int y = 0; y < dib->GetHeight(); ++y)
    for (int x = 0; x < dib->GetWidth(); ++x) ASSERT_NE(dib->GetPixel(Point(x, y)), 0xFF00FF00u);
}

}  // namespace
}  // namespace host
