// OFD documents, their resources and the page object tree, on packages built
// here.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using namespace testing_support;  // NOLINT: packages and opened documents

template <typename T>
const T* ChildAs(const OfdPageBlock& block, size_t i) {
  return i < block.children.size() ? static_cast<const T*>(block.children[i].get()) : nullptr;
}

// The package most tests read: two pages, public and document resources,
// a template named in another letter case, annotations.
std::string SamplePackage() {
  const std::string common =
      "<ofd:MaxUnitID>50</ofd:MaxUnitID><ofd:PublicRes>PublicRes.xml</ofd:PublicRes>"
      "<ofd:DocumentRes>/Doc_0/DocumentRes.xml</ofd:DocumentRes>"
      "<ofd:TemplatePage ID=\"2\" BaseLoc=\"TPLS/Tpl_0/Content.xml\"/>";
  const std::string publicRes = OfdResXml(
      "<ofd:Fonts><ofd:Font ID=\"3\" FontName=\"宋体\" FamilyName=\"SimSun\" Bold=\"true\">"
      "<ofd:FontFile>font.ttf</ofd:FontFile></ofd:Font></ofd:Fonts>"
      "<ofd:ColorSpaces><ofd:ColorSpace ID=\"4\" Type=\"CMYK\"/></ofd:ColorSpaces>"
      "<ofd:DrawParams><ofd:DrawParam ID=\"6\" LineWidth=\"2\"><ofd:FillColor Value=\"255 0 0\"/>"
      "</ofd:DrawParam><ofd:DrawParam ID=\"8\" Relative=\"6\" Cap=\"Round\">"
      "<ofd:StrokeColor Value=\"0 0 255\"/></ofd:DrawParam></ofd:DrawParams>",
      "Res");
  const std::string documentRes = OfdResXml(
      "<ofd:MultiMedias><ofd:MultiMedia ID=\"10\" Type=\"Image\" Format=\"PNG\">"
      "<ofd:MediaFile>img.png</ofd:MediaFile></ofd:MultiMedia></ofd:MultiMedias><ofd:CompositeGraphicUnits>"
      "<ofd:CompositeGraphicUnit ID=\"11\" Width=\"10\" Height=\"5\"><ofd:Content>"
      "<ofd:PathObject ID=\"40\"><ofd:AbbreviatedData>M 0 0 L 1 1</ofd:AbbreviatedData></ofd:PathObject>"
      "</ofd:Content></ofd:CompositeGraphicUnit>"
      "<ofd:CompositeGraphicUnit ID=\"12\" Width=\"1\" Height=\"1\"><ofd:Content>"
      "<ofd:CompositeObject ID=\"41\" ResourceID=\"12\"/></ofd:Content></ofd:CompositeGraphicUnit>"
      "</ofd:CompositeGraphicUnits>",
      "Res");
  std::string page0 = OfdPageXml(
      "<ofd:PathObject ID=\"20\" Boundary=\"1 2 10 5\" Fill=\"true\" Rule=\"Even-Odd\">"
      "<ofd:AbbreviatedData>M 0 0 L 10 0 L 10 5 C</ofd:AbbreviatedData></ofd:PathObject>"
      "<ofd:TextObject ID=\"21\" Boundary=\"0 0 20 5\" Font=\"3\" Size=\"3\">"
      "<ofd:FillColor Value=\"0 0 0 255\" ColorSpace=\"4\"/>"
      "<ofd:TextCode X=\"0\" Y=\"2\" DeltaX=\"g 2 1.5 2\">ABCD</ofd:TextCode></ofd:TextObject>"
      "<ofd:ImageObject ID=\"22\" Boundary=\"0 0 5 5\" CTM=\"5 0 0 5 0 0\" ResourceID=\"10\"/>"
      "<ofd:ImageObject ID=\"23\" Boundary=\"0 0 5 5\" ResourceID=\"999\"/>"
      "<ofd:CompositeObject ID=\"24\" Boundary=\"0 0 10 5\" ResourceID=\"11\"/>"
      "<ofd:CompositeObject ID=\"25\" Boundary=\"0 0 1 1\" ResourceID=\"12\"/>"
      "<ofd:PageBlock ID=\"26\"><ofd:PathObject ID=\"27\" LineWidth=\"0.5\" Join=\"Bevel\" "
      "DashPattern=\"1 2\"><ofd:StrokeColor Value=\"#FF8000\"/><ofd:Clips><ofd:Clip>"
      "<ofd:Area CTM=\"2 0 0 2 0 0\"><ofd:Path Boundary=\"0 0 4 4\">"
      "<ofd:AbbreviatedData>M 0 0 L 4 0 L 4 4 C</ofd:AbbreviatedData></ofd:Path></ofd:Area>"
      "</ofd:Clip></ofd:Clips><ofd:AbbreviatedData>M 0 0 L 3 3</ofd:AbbreviatedData>"
      "</ofd:PathObject></ofd:PageBlock>",
      "<ofd:Template TemplateID=\"2\" ZOrder=\"Foreground\"/>"
      "<ofd:Area><ofd:PhysicalBox>0 0 40 30</ofd:PhysicalBox></ofd:Area>");
  // The layer's DrawParam 8 inherits 6: red fill, blue stroke, width 2.
  page0.replace(page0.find("<ofd:Layer ID=\"100\">"), 20, "<ofd:Layer ID=\"100\" DrawParam=\"8\">");
  return BuildOfdPackage({
      {"Doc_0/Document.xml",
       OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}, {7, "./Pages/../Pages/Page_1/Content.xml"}},
                      common, "<ofd:Annotations>Annots/Annotations.xml</ofd:Annotations>")},
      {"Doc_0/PublicRes.xml", publicRes},
      {"Doc_0/DocumentRes.xml", documentRes},
      {"Doc_0/Res/img.png", "PNGDATA"},
      {"Doc_0/Res/font.ttf", "FONT"},
      {"Doc_0/Pages/Page_0/Content.xml", page0},
      {"Doc_0/Pages/Page_1/Content.xml",
       OfdPageXml("<ofd:TextObject ID=\"30\" Boundary=\"0 0 9 9\" Font=\"3\" Size=\"4\">"
                  "<ofd:TextCode X=\"1\" Y=\"4\"> </ofd:TextCode></ofd:TextObject>")},
      {"Doc_0/Tpls/Tpl_0/Content.xml",
       OfdPageXml("<ofd:PathObject ID=\"31\"><ofd:AbbreviatedData>M 0 0 L 5 5</ofd:AbbreviatedData>"
                  "</ofd:PathObject>")},
      {"Doc_0/Annots/Annotations.xml",
       "<ofd:Annotations xmlns:ofd=\"http://www.ofdspec.org/2016\"><ofd:Page PageID=\"1\">"
       "<ofd:FileLoc>Page_0/Annotation.xml</ofd:FileLoc></ofd:Page></ofd:Annotations>"},
      {"Doc_0/Annots/Page_0/Annotation.xml",
       "<ofd:PageAnnot xmlns:ofd=\"http://www.ofdspec.org/2016\"><ofd:Annot ID=\"32\" Type=\"Stamp\" "
       "Visible=\"false\"><ofd:Appearance Boundary=\"5 5 20 10\"><ofd:ImageObject ID=\"33\" "
       "Boundary=\"0 0 20 10\" CTM=\"20 0 0 10 0 0\" ResourceID=\"10\"/></ofd:Appearance>"
       "</ofd:Annot></ofd:PageAnnot>"},
  }, "Doc_0/Document.xml", "Doc_0/Signs/Signatures.xml");
}

TEST(OfdDocument_Load, PagesTemplatesAndFailures) {
  Opened o = Open(SamplePackage());
  ASSERT_NE(o.doc, nullptr);
  OfdDocument& doc = *o.doc;
  EXPECT_EQ(std::tuple(doc.CountPages(), doc.FindPageIndexById(7), doc.FindPageIndexById(99), doc.GetMaxUnitId(),
                       doc.GetFolder(), doc.GetSignaturesLocation(), doc.GetPageEntry(1)->location),
            std::tuple(2, 1, -1, 50u, "Doc_0/", "/Doc_0/Signs/Signatures.xml", "/Doc_0/Pages/Page_1/Content.xml"));
  ASSERT_EQ(doc.GetTemplates().size(), 1u);
  EXPECT_EQ(doc.GetTemplates()[0].location, "/Doc_0/Tpls/Tpl_0/Content.xml");  // case fallback
  EXPECT_TRUE(!doc.LoadPage(2, 1) && !doc.LoadPage(-1, 1));
  EXPECT_EQ(doc.LoadDocument(o.package.get(), o.package->GetDocument(0), -1), kOfdLoadBadArgument);

  const struct { const char* name; std::string bytes; int want; } failures[] = {
      {"no Document.xml", BuildOfdPackage({}), kOfdLoadMissingFile},
      {"broken Document.xml", BuildOfdPackage({{"Doc_0/Document.xml", "<ofd:Document"}}), kOfdLoadBadXml},
      {"wrong root", BuildOfdPackage({{"Doc_0/Document.xml", "<Page/>"}}), kOfdLoadBadXml},
  };
  for (const auto& f : failures) EXPECT_EQ(Open(f.bytes).loadResult, f.want) << f.name;
  OfdDocument fresh;
  EXPECT_EQ(std::tuple(fresh.LoadDocument(nullptr, nullptr, -1), fresh.CountPages(), fresh.LoadPage(0, 1)),
            std::tuple(kOfdLoadBadArgument, 0, nullptr));
}

TEST(OfdPage_ParseContents, BuildsTheObjectTree) {
  Opened o = Open(SamplePackage());
  ASSERT_NE(o.doc, nullptr);
  auto page = ParsedPage(*o.doc, 0);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(std::tuple(page->GetPageId(), page->GetPageWidth(), page->GetPageHeight()), std::tuple(1u, 40.f, 30.f));
  ASSERT_EQ(page->GetTemplates().size(), 1u);
  // The page's ZOrder wins; the template holds a layer and a path.
  EXPECT_EQ(std::tuple(page->GetTemplates()[0].zOrder, page->GetTemplates()[0].content->CountObjects()),
            std::tuple(OfdZOrder::kForeground, 2u));
  // Parsed once per document: a later load of a page shares the objects.
  EXPECT_EQ(ParsedPage(*o.doc, 0)->GetTemplates().at(0).content, page->GetTemplates()[0].content);

  const OfdPageBlock* content = page->GetContent();
  ASSERT_EQ(content->children.size(), 1u);
  const auto* layer = ChildAs<OfdPageBlock>(*content, 0);
  EXPECT_EQ(layer->layerType, OfdPageBlock::LayerType::kBody);
  ASSERT_EQ(layer->children.size(), 7u);

  const auto* path = ChildAs<OfdPathObject>(*layer, 0);
  ASSERT_EQ(path->GetType(), OfdPageObject::Type::kPath);
  // Red fill from DrawParam 6 through 8, blue stroke and its width and cap from 8.
  EXPECT_EQ(std::tuple(path->boundary, path->fill, path->stroke, path->rule, path->path.segments().size(),
                       path->fillColor.ToArgb(), path->strokeColor.ToArgb(), path->strokeStyle.width,
                       path->strokeStyle.cap),
            std::tuple(GRect(1, 2, 11, 7), true, true, FillRule::kEvenOdd, 4u, 0xFFFF0000u, 0xFF0000FFu, 2.f,
                       LineCap::kRound));

  const auto* text = ChildAs<OfdTextObject>(*layer, 1);
  ASSERT_EQ(text->GetType(), OfdPageObject::Type::kText);
  ASSERT_NE(text->font, nullptr);
  ASSERT_EQ(text->textCodes.size(), 1u);
  EXPECT_EQ(std::tuple(text->font->fontName, text->font->bold, text->font->fontFile, text->fillColor.ToArgb(),
                       text->textCodes[0].xs, text->textCodes[0].ys),
            std::tuple("宋体", true, "/Doc_0/Res/font.ttf", 0xFF000000u /* CMYK black */,
                       std::vector<float>{0, 1.5f, 3, 5}, std::vector<float>{2, 2, 2, 2}));

  const auto* image = ChildAs<OfdImageObject>(*layer, 2);
  ASSERT_NE(image->media, nullptr);
  EXPECT_EQ(std::tuple(image->media->PrimaryLoc, image->media->format, image->ctm),
            std::tuple("/Doc_0/Res/img.png", "PNG", Matrix(5, 0, 0, 5, 0, 0)));
  EXPECT_EQ(ChildAs<OfdImageObject>(*layer, 3)->media, nullptr);  // dangling ID

  const auto* composite = ChildAs<OfdCompositeObject>(*layer, 4);
  ASSERT_NE(composite->unit, nullptr);
  EXPECT_EQ(std::tuple(composite->unit->width, composite->unit->content->children.size()), std::tuple(10.f, 1u));
  // Unit 12 names itself: the inner reference is cut.
  const auto* loop = ChildAs<OfdCompositeObject>(*layer, 5);
  ASSERT_NE(loop->unit, nullptr);
  const auto* inner = ChildAs<OfdCompositeObject>(*loop->unit->content, 0);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->unit, nullptr);

  const auto* block = ChildAs<OfdPageBlock>(*layer, 6);
  ASSERT_EQ(block->GetType(), OfdPageObject::Type::kPageBlock);
  const auto* dashed = ChildAs<OfdPathObject>(*block, 0);
  // The fill is the layer's, through the block.
  EXPECT_EQ(std::tuple(dashed->strokeColor.ToArgb(), dashed->strokeStyle.width, dashed->strokeStyle.join,
                       dashed->strokeStyle.dashes, dashed->fillColor.ToArgb(), dashed->clips.size()),
            std::tuple(0xFFFF8000u, 0.5f, LineJoin::kBevel, std::vector<float>{1, 2}, 0xFFFF0000u, 1u));
  ASSERT_EQ(dashed->clips[0].areas.size(), 1u);
  EXPECT_EQ(dashed->clips[0].areas[0].ctm, Matrix(2, 0, 0, 2, 0, 0));
  ASSERT_EQ(dashed->clips[0].areas[0].shape->GetType(), OfdPageObject::Type::kPath);

  ASSERT_EQ(page->GetAnnotations().size(), 1u);
  const OfdAnnotation& annot = *page->GetAnnotations()[0];
  EXPECT_EQ(std::tuple(annot.type, annot.visible, annot.boundary), std::tuple("Stamp", false, GRect(5, 5, 25, 15)));
  ASSERT_EQ(annot.appearance->children.size(), 1u);
  EXPECT_NE(ChildAs<OfdImageObject>(*annot.appearance, 0)->media, nullptr);
  EXPECT_EQ(page->CountObjects(), 1u + 7u + 1u + 2u + 1u);
  EXPECT_EQ(page->ParseContents(), 1);  // parsing again changes nothing
  EXPECT_EQ(page->CountObjects(), 12u);

  auto second = ParsedPage(*o.doc, 1);
  ASSERT_NE(second, nullptr);
  const auto* blank = ChildAs<OfdTextObject>(*ChildAs<OfdPageBlock>(*second->GetContent(), 0), 0);
  ASSERT_EQ(blank->textCodes.size(), 1u);
  // The document's PageArea; a lone blank is kept.
  EXPECT_EQ(std::tuple(second->GetPageWidth(), blank->textCodes[0].text, second->GetAnnotations().size()),
            std::tuple(210.f, WideString(U" "), 0u));
}

TEST(OfdPage_ParseContents, BadAndCyclicInputFailsSafely) {
  auto tpl = [](int next) {
    return OfdPageXml("<ofd:PathObject><ofd:AbbreviatedData>M 0 0 L 1 1</ofd:AbbreviatedData></ofd:PathObject>",
                      "<ofd:Template TemplateID=\"" + std::to_string(next) + "\"/>");
  };
  // Blocks nested far deeper than the cap, around a text with a huge repeat.
  const std::string hugeRepeat =
      "<ofd:TextObject><ofd:TextCode DeltaX=\"g 4000000000 1\">abc</ofd:TextCode></ofd:TextObject>";
  std::string deep;
  for (int i = 0; i < 500; ++i) deep += "<ofd:PageBlock>";
  deep += hugeRepeat;
  for (int i = 0; i < 500; ++i) deep += "</ofd:PageBlock>";
  const std::string common =
      "<ofd:TemplatePage ID=\"2\" BaseLoc=\"T2.xml\"/><ofd:TemplatePage ID=\"3\" BaseLoc=\"T3.xml\"/>"
      "<ofd:PublicRes>missing.xml</ofd:PublicRes><ofd:DocumentRes>Broken.xml</ofd:DocumentRes>";
  Opened o = Open(BuildOfdPackage({
      {"Doc_0/Document.xml",
       OfdDocumentXml({{1, "P0.xml"}, {2, "P1.xml"}, {3, "P2.xml"}, {4, "Missing.xml"}, {5, "Deep.xml"}},
                      common,
                      "<ofd:Annotations>NoSuchFile.xml</ofd:Annotations>")},
      {"Doc_0/Broken.xml", "<ofd:Res><ofd:Fonts>"},
      {"Doc_0/T2.xml", tpl(3)},
      {"Doc_0/T3.xml", tpl(2)},
      {"Doc_0/P0.xml", OfdPageXml("<ofd:PathObject><ofd:AbbreviatedData>M 0 0 X 1 1</ofd:AbbreviatedData>"
                                  "</ofd:PathObject><ofd:Unknown/><ofd:TextObject Font=\"77\"/>",
                                  "<ofd:Template TemplateID=\"2\"/><ofd:Template TemplateID=\"9\"/>")},
      {"Doc_0/P1.xml", "<ofd:Page><ofd:Content>"},
      {"Doc_0/P2.xml", "<ofd:Document/>"},
      {"Doc_0/Deep.xml", OfdPageXml(deep)},
  }));
  ASSERT_NE(o.doc, nullptr);
  EXPECT_EQ(o.doc->CountPages(), 5);
  auto page = ParsedPage(*o.doc, 0);
  ASSERT_NE(page, nullptr);
  // Templates 2 and 3 name each other: each is drawn once, then the loop stops.
  ASSERT_EQ(page->GetTemplates().size(), 2u);
  EXPECT_EQ(std::pair(page->GetTemplates()[0].templateId, page->GetTemplates()[1].templateId), std::pair(3u, 2u));
  const auto* layer = ChildAs<OfdPageBlock>(*page->GetContent(), 0);
  ASSERT_EQ(layer->children.size(), 2u);  // the unknown element is skipped
  const auto* path = ChildAs<OfdPathObject>(*layer, 0);
  EXPECT_EQ(std::tuple(path->dataStatus, path->path.segments().size(), ChildAs<OfdTextObject>(*layer, 1)->font),
            std::tuple(PathDataResult::kUnknownCommand, 1u, nullptr));
  for (int i = 1; i < 4; ++i) EXPECT_EQ(o.doc->LoadPage(i, 1), nullptr) << i;

  auto deepPage = ParsedPage(*o.doc, 4);
  ASSERT_NE(deepPage, nullptr);
  int depth = 0;
  for (const OfdPageBlock* b = deepPage->GetContent(); b && !b->children.empty();
       b = ChildAs<OfdPageBlock>(*b, 0)) {
    ASSERT_EQ(b->children[0]->GetType(), OfdPageObject::Type::kPageBlock);
    ++depth;
  }
  EXPECT_TRUE(depth > 32 && depth <= 66) << depth;
  EXPECT_EQ(deepPage->CountObjects(), static_cast<size_t>(depth));  // the text is beyond the cap

  Opened shallow = Open(BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1, "P.xml"}})},
                                         {"Doc_0/P.xml", OfdPageXml(hugeRepeat)}}));
  auto textPage = ParsedPage(*shallow.doc, 0);
  ASSERT_NE(textPage, nullptr);
  const auto* text = ChildAs<OfdTextObject>(*ChildAs<OfdPageBlock>(*textPage->GetContent(), 0), 0);
  ASSERT_NE(text, nullptr);
  // One step per gap, no more.
  EXPECT_EQ(std::pair(text->textCodes[0].deltaX, text->textCodes[0].xs),
            std::pair(std::vector<float>{1, 1}, std::vector<float>{0, 1, 2}));
}

TEST(OfdPage_GetDisplayMatrix, MapsThePageOntoTheDeviceRectangle) {
  // 40 x 30 mm onto 472 x 354 pixels (300 dpi) at (left, top), turned by quarter turns.
  const struct { const char* box; int left, top, rotate; float px, py, wantX, wantY; } cases[] = {
      {"0 0 40 30", 0, 0, 0, 40, 30, 472, 354}, {"0 0 40 30", 0, 0, 0, 20, 15, 236, 177},
      {"0 0 40 30", 0, 0, 1, 0, 0, 472, 0},     {"0 0 40 30", 0, 0, 1, 0, 30, 0, 0},
      {"0 0 40 30", 0, 0, 1, 40, 30, 0, 354},   {"0 0 40 30", 0, 0, 2, 0, 0, 472, 354},
      {"0 0 40 30", 0, 0, 3, 0, 0, 0, 354},     {"0 0 40 30", 0, 0, 270, 40, 0, 0, 0},
      {"10 20 40 30", 5, 7, 0, 10, 20, 5, 7},
  };
  for (const auto& c : cases) {
    Opened o = Open(BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1, "P.xml"}})},
                                     {"Doc_0/P.xml", OfdPageXml("", std::string("<ofd:Area><ofd:PhysicalBox>") +
                                                                        c.box + "</ofd:PhysicalBox></ofd:Area>")}}));
    std::unique_ptr<OfdPage> page(o.doc->LoadPage(0, 1));
    ASSERT_NE(page, nullptr);
    float x = c.px, y = c.py;
    page->GetDisplayMatrix(c.left, c.top, 472, 354, c.rotate).TransformPoint(x, y);
    EXPECT_NEAR(x, c.wantX, 1e-3) << c.rotate << " " << c.px << "," << c.py;
    EXPECT_NEAR(y, c.wantY, 1e-3) << c.rotate << " " << c.px << "," << c.py;
  }
}

}  // namespace
}  // namespace host
