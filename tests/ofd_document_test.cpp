// OFD packages, documents, resources and the page object tree, on packages
// built here and on the real files of the fixture folder.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/fixtures.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/path_data.h"
#include "host/ofd/text_code.h"
#include "host/ofd/zip_archive.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using testing_support::BuildOfdPackage;
using testing_support::OfdDocumentXml;
using testing_support::OfdPageXml;
using testing_support::OfdResXml;
using testing_support::Open;
using testing_support::Opened;
using testing_support::ParsedPage;

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
      "<ofd:MediaFile>img.png</ofd:MediaFile></ofd:MultiMedia></ofd:MultiMedias>"
      "<ofd:CompositeGraphicUnits>"
      "<ofd:CompositeGraphicUnit ID=\"11\" Width=\"10\" Height=\"5\"><ofd:Content>"
      "<ofd:PathObject ID=\"40\"><ofd:AbbreviatedData>M 0 0 L 1 1</ofd:AbbreviatedData></ofd:PathObject>"
      "</ofd:Content></ofd:CompositeGraphicUnit>"
      "<ofd:CompositeGraphicUnit ID=\"12\" Width=\"1\" Height=\"1\"><ofd:Content>"
      "<ofd:CompositeObject ID=\"41\" ResourceID=\"12\"/></ofd:Content></ofd:CompositeGraphicUnit>"
      "</ofd:CompositeGraphicUnits>",
      "Res");
  const std::string page0 = OfdPageXml(
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
  const std::string layered = [&] {
    std::string p = page0;
    p.replace(p.find("<ofd:Layer ID=\"100\">"), 20, "<ofd:Layer ID=\"100\" DrawParam=\"8\">");
    return p;
  }();
  return BuildOfdPackage({
      {"Doc_0/Document.xml",
       OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}, {7, "./Pages/../Pages/Page_1/Content.xml"}},
                      common, "<ofd:Annotations>Annots/Annotations.xml</ofd:Annotations>")},
      {"Doc_0/PublicRes.xml", publicRes},
      {"Doc_0/DocumentRes.xml", documentRes},
      {"Doc_0/Res/img.png", "PNGDATA"},
      {"Doc_0/Res/font.ttf", "FONT"},
      {"Doc_0/Pages/Page_0/Content.xml", layered},
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

// A reader that records its destruction.
class TrackedReader : public StreamReader {
 public:
  TrackedReader(std::string bytes, bool* released) : bytes_(std::move(bytes)), released_(released) {}
  ~TrackedReader() override { *released_ = true; }
  uint64_t GetSize() const override { return bytes_.size(); }
  size_t ReadBlock(void* out, uint64_t offset, size_t size) override {
    if (offset >= bytes_.size()) return 0;
    const size_t n = std::min<size_t>(size, bytes_.size() - offset);
    std::memcpy(out, bytes_.data() + offset, n);
    return n;
  }
  const uint8_t* GetBuffer() const override { return reinterpret_cast<const uint8_t*>(bytes_.data()); }

 private:
  std::string bytes_;
  bool* released_;
};

TEST(OfdPackage_Load, ResultsAndDocumentEntries) {
  const struct {
    const char* name;
    std::string bytes;
    int result;
    int documents;
  } cases[] = {
      {"sample", SamplePackage(), 0, 1},
      {"no DocBody", testing_support::BuildZip({{"OFD.xml", "<ofd:OFD xmlns:ofd=\"x\"/>"}}), 0, 0},
      {"not a zip", "not a zip at all", kOfdLoadNotZip, 0},
      {"no OFD.xml", testing_support::BuildZip({{"a.xml", "<OFD/>"}}), kOfdLoadMissingFile, 0},
      {"broken OFD.xml", testing_support::BuildZip({{"OFD.xml", "<OFD><DocBody>"}}), kOfdLoadBadXml, 0},
      {"wrong root", testing_support::BuildZip({{"OFD.xml", "<Document/>"}}), kOfdLoadBadXml, 0},
  };
  for (const auto& c : cases) {
    OfdPackage package;
    EXPECT_EQ(package.LoadFromStream(StreamReader::CreateMemoryStreamReader(c.bytes), 1), c.result)
        << c.name;
    EXPECT_EQ(package.CountDocuments(), c.documents) << c.name;
    EXPECT_EQ(package.GetDocument(c.documents), nullptr) << c.name;
    EXPECT_EQ(package.GetDocument(-1), nullptr) << c.name;
  }
  OfdPackage package;
  EXPECT_EQ(package.LoadFromStream(nullptr, 1), kOfdLoadBadArgument);
  ASSERT_EQ(package.LoadFromStream(StreamReader::CreateMemoryStreamReader(SamplePackage()), 1), 0);
  const OfdDocBody* body = package.GetDocument(0);
  ASSERT_NE(body, nullptr);
  EXPECT_EQ(body->docRoot, "/Doc_0/Document.xml");
  EXPECT_EQ(body->signatures, "/Doc_0/Signs/Signatures.xml");
  EXPECT_EQ(body->docId, "test");
  package.ClosePackage();
  EXPECT_EQ(package.CountDocuments(), 0);
  package.ClosePackage();  // twice is harmless
}

TEST(OfdPackage_Load, FlagOneTakesOverTheReaderEvenOnFailure) {
  for (const std::string& bytes : {SamplePackage(), std::string("garbage")}) {
    bool released = false;
    {
      OfdPackage package;
      package.LoadFromStream(new TrackedReader(bytes, &released), 1);
      EXPECT_FALSE(released);
    }
    EXPECT_TRUE(released);
  }
  bool released = false;
  TrackedReader kept(SamplePackage(), &released);
  {
    OfdPackage package;
    EXPECT_EQ(package.LoadFromStream(&kept, 0), 0);
  }
  EXPECT_FALSE(released);
}

TEST(ZipArchive_Budget, RereadingAnEntryIsNotChargedAgain) {
  const std::string big(ZipArchive::kMaxEntryBytes / 2, '\0');
  const std::string zip = testing_support::BuildZip({{"big.bin", big}, {"other.bin", big}});
  StreamReaderPtr reader(StreamReader::CreateMemoryStreamReader(zip));
  auto archive = ZipArchive::Open(reader.get());
  ASSERT_NE(archive, nullptr);
  std::string out;
  // Far more than the total budget in all, but only two distinct entries.
  for (uint64_t read = 0; read <= ZipArchive::kMaxTotalBytes; read += big.size())
    ASSERT_TRUE(archive->ReadNamed("big.bin", out)) << read;
  EXPECT_TRUE(archive->ReadNamed("other.bin", out));
  EXPECT_EQ(out.size(), big.size());
}

TEST(OfdLocation_Normalize, Table) {
  const struct {
    const char* base;
    const char* location;
    const char* want;
  } cases[] = {
      {"Doc_0/", "Res/a.png", "Doc_0/Res/a.png"},
      {"Doc_0", "./Res/../Res/a.png", "Doc_0/Res/a.png"},
      {"Doc_0/", "/Doc_1/a.png", "Doc_1/a.png"},
      {"Doc_0/", "../../../a.png", "a.png"},
      {"Doc_0/", "\\Doc_0\\Res\\a.png", "Doc_0/Res/a.png"},
      {"", "//a//b/./c", "a/b/c"},
      {"Doc_0/", "", "Doc_0"},
  };
  for (const auto& c : cases) EXPECT_EQ(ResolveLocation(c.base, c.location), c.want) << c.location;
  EXPECT_EQ(FolderOf("Doc_0/Pages/Page_0.xml"), "Doc_0/Pages/");
  EXPECT_EQ(FolderOf("OFD.xml"), "");
}

TEST(OfdPackage_LoadRawStream, ResolvesAbsoluteRelativeAndCase) {
  Opened o = Open(SamplePackage());
  ASSERT_NE(o.doc, nullptr);
  const struct {
    const OfdDocument* doc;
    const char* location;
    const char* want;  // null: no stream
  } cases[] = {
      {o.doc.get(), "Res/img.png", "PNGDATA"},
      {o.doc.get(), "/Doc_0/Res/img.png", "PNGDATA"},
      {o.doc.get(), "./Pages/../Res/IMG.PNG", "PNGDATA"},
      {o.doc.get(), "/doc_0/res/font.ttf", "FONT"},
      {nullptr, "Doc_0/Res/img.png", "PNGDATA"},
      {nullptr, "Res/img.png", nullptr},
      {o.doc.get(), "Res/missing.png", nullptr},
      {o.doc.get(), "", nullptr},
  };
  for (const auto& c : cases) {
    StreamReaderPtr stream(o.package->LoadRawStream(c.doc, c.location, 1));
    if (!c.want) {
      EXPECT_EQ(stream, nullptr) << c.location;
      continue;
    }
    ASSERT_NE(stream, nullptr) << c.location;
    ASSERT_NE(stream->GetBuffer(), nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(stream->GetBuffer()), stream->GetSize()), c.want);
  }
  o.package->ClosePackage();
  EXPECT_EQ(o.package->LoadRawStream(o.doc.get(), "Res/img.png", 1), nullptr);
}

TEST(OfdDocument_Load, PagesTemplatesAndFailures) {
  Opened o = Open(SamplePackage());
  ASSERT_NE(o.doc, nullptr);
  OfdDocument& doc = *o.doc;
  EXPECT_EQ(doc.CountPages(), 2);
  EXPECT_EQ(doc.FindPageIndexById(7), 1);
  EXPECT_EQ(doc.FindPageIndexById(99), -1);
  EXPECT_EQ(doc.GetMaxUnitId(), 50u);
  EXPECT_EQ(doc.GetFolder(), "Doc_0/");
  EXPECT_EQ(doc.GetSignaturesLocation(), "/Doc_0/Signs/Signatures.xml");
  ASSERT_EQ(doc.GetTemplates().size(), 1u);
  EXPECT_EQ(doc.GetTemplates()[0].location, "/Doc_0/Tpls/Tpl_0/Content.xml");  // case fallback
  EXPECT_EQ(doc.GetPageEntry(1)->location, "/Doc_0/Pages/Page_1/Content.xml");
  EXPECT_EQ(doc.LoadPage(2, 1), nullptr);
  EXPECT_EQ(doc.LoadPage(-1, 1), nullptr);
  EXPECT_EQ(doc.LoadDocument(o.package.get(), o.package->GetDocument(0), -1), kOfdLoadBadArgument);

  const struct {
    const char* name;
    std::string bytes;
    int want;
  } failures[] = {
      {"no Document.xml", BuildOfdPackage({}), kOfdLoadMissingFile},
      {"broken Document.xml", BuildOfdPackage({{"Doc_0/Document.xml", "<ofd:Document"}}), kOfdLoadBadXml},
      {"wrong root", BuildOfdPackage({{"Doc_0/Document.xml", "<Page/>"}}), kOfdLoadBadXml},
  };
  for (const auto& f : failures) EXPECT_EQ(Open(f.bytes).loadResult, f.want) << f.name;
  OfdDocument fresh;
  EXPECT_EQ(fresh.LoadDocument(nullptr, nullptr, -1), kOfdLoadBadArgument);
  EXPECT_EQ(fresh.CountPages(), 0);
  EXPECT_EQ(fresh.LoadPage(0, 1), nullptr);
}

TEST(OfdPage_ParseContents, BuildsTheObjectTree) {
  Opened o = Open(SamplePackage());
  ASSERT_NE(o.doc, nullptr);
  auto page = ParsedPage(*o.doc, 0);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->GetPageId(), 1u);
  EXPECT_FLOAT_EQ(page->GetPageWidth(), 40);
  EXPECT_FLOAT_EQ(page->GetPageHeight(), 30);

  ASSERT_EQ(page->GetTemplates().size(), 1u);
  EXPECT_EQ(page->GetTemplates()[0].zOrder, OfdZOrder::kForeground);  // the page's ZOrder wins
  EXPECT_EQ(page->GetTemplates()[0].content->CountObjects(), 2u);    // layer and path
  // Parsed once per document: a later load of a page shares the objects.
  EXPECT_EQ(ParsedPage(*o.doc, 0)->GetTemplates().at(0).content, page->GetTemplates()[0].content);

  const OfdPageBlock* content = page->GetContent();
  ASSERT_EQ(content->children.size(), 1u);
  const auto* layer = ChildAs<OfdPageBlock>(*content, 0);
  EXPECT_EQ(layer->layerType, OfdPageBlock::LayerType::kBody);
  ASSERT_EQ(layer->children.size(), 7u);

  const auto* path = ChildAs<OfdPathObject>(*layer, 0);
  ASSERT_EQ(path->GetType(), OfdPageObject::Type::kPath);
  EXPECT_EQ(path->boundary, GRect(1, 2, 11, 7));
  EXPECT_TRUE(path->fill);
  EXPECT_TRUE(path->stroke);
  EXPECT_EQ(path->rule, FillRule::kEvenOdd);
  EXPECT_EQ(path->path.segments().size(), 4u);
  EXPECT_EQ(path->fillColor.ToArgb(), 0xFFFF0000u);    // from DrawParam 6 through 8
  EXPECT_EQ(path->strokeColor.ToArgb(), 0xFF0000FFu);  // from DrawParam 8
  EXPECT_FLOAT_EQ(path->strokeStyle.width, 2);
  EXPECT_EQ(path->strokeStyle.cap, LineCap::kRound);

  const auto* text = ChildAs<OfdTextObject>(*layer, 1);
  ASSERT_EQ(text->GetType(), OfdPageObject::Type::kText);
  ASSERT_NE(text->font, nullptr);
  EXPECT_EQ(text->font->fontName, "宋体");
  EXPECT_TRUE(text->font->bold);
  EXPECT_EQ(text->font->fontFile, "/Doc_0/Res/font.ttf");
  EXPECT_EQ(text->fillColor.ToArgb(), 0xFF000000u);  // CMYK black
  ASSERT_EQ(text->textCodes.size(), 1u);
  EXPECT_EQ(text->textCodes[0].xs, (std::vector<float>{0, 1.5f, 3, 5}));
  EXPECT_EQ(text->textCodes[0].ys, (std::vector<float>{2, 2, 2, 2}));

  const auto* image = ChildAs<OfdImageObject>(*layer, 2);
  ASSERT_NE(image->media, nullptr);
  EXPECT_EQ(image->media->PrimaryLoc, "/Doc_0/Res/img.png");
  EXPECT_EQ(image->media->format, "PNG");
  EXPECT_EQ(image->ctm, Matrix(5, 0, 0, 5, 0, 0));
  EXPECT_EQ(ChildAs<OfdImageObject>(*layer, 3)->media, nullptr);  // dangling ID

  const auto* composite = ChildAs<OfdCompositeObject>(*layer, 4);
  ASSERT_NE(composite->unit, nullptr);
  EXPECT_FLOAT_EQ(composite->unit->width, 10);
  EXPECT_EQ(composite->unit->content->children.size(), 1u);
  // Unit 12 names itself: the inner reference is cut.
  const auto* loop = ChildAs<OfdCompositeObject>(*layer, 5);
  ASSERT_NE(loop->unit, nullptr);
  const auto* inner = ChildAs<OfdCompositeObject>(*loop->unit->content, 0);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->unit, nullptr);

  const auto* block = ChildAs<OfdPageBlock>(*layer, 6);
  ASSERT_EQ(block->GetType(), OfdPageObject::Type::kPageBlock);
  const auto* dashed = ChildAs<OfdPathObject>(*block, 0);
  EXPECT_EQ(dashed->strokeColor.ToArgb(), 0xFFFF8000u);
  EXPECT_FLOAT_EQ(dashed->strokeStyle.width, 0.5f);
  EXPECT_EQ(dashed->strokeStyle.join, LineJoin::kBevel);
  EXPECT_EQ(dashed->strokeStyle.dashes, (std::vector<float>{1, 2}));
  EXPECT_EQ(dashed->fillColor.ToArgb(), 0xFFFF0000u);  // the layer's, through the block
  ASSERT_EQ(dashed->clips.size(), 1u);
  ASSERT_EQ(dashed->clips[0].areas.size(), 1u);
  EXPECT_EQ(dashed->clips[0].areas[0].ctm, Matrix(2, 0, 0, 2, 0, 0));
  ASSERT_EQ(dashed->clips[0].areas[0].shape->GetType(), OfdPageObject::Type::kPath);

  ASSERT_EQ(page->GetAnnotations().size(), 1u);
  const OfdAnnotation& annot = *page->GetAnnotations()[0];
  EXPECT_EQ(annot.type, "Stamp");
  EXPECT_FALSE(annot.visible);
  EXPECT_EQ(annot.boundary, GRect(5, 5, 25, 15));
  ASSERT_EQ(annot.appearance->children.size(), 1u);
  EXPECT_NE(ChildAs<OfdImageObject>(*annot.appearance, 0)->media, nullptr);
  EXPECT_EQ(page->CountObjects(), 1u + 7u + 1u + 2u + 1u);
  EXPECT_EQ(page->ParseContents(), 1);  // parsing again changes nothing
  EXPECT_EQ(page->CountObjects(), 12u);

  auto second = ParsedPage(*o.doc, 1);
  ASSERT_NE(second, nullptr);
  EXPECT_FLOAT_EQ(second->GetPageWidth(), 210);  // the document's PageArea
  const auto* blank = ChildAs<OfdTextObject>(*ChildAs<OfdPageBlock>(*second->GetContent(), 0), 0);
  ASSERT_EQ(blank->textCodes.size(), 1u);
  EXPECT_EQ(blank->textCodes[0].text, WideString(U" "));  // a lone blank is kept
  EXPECT_TRUE(second->GetAnnotations().empty());
}

TEST(OfdPage_ParseContents, BadAndCyclicInputFailsSafely) {
  const std::string tpl = [](int next) {
    return OfdPageXml("<ofd:PathObject><ofd:AbbreviatedData>M 0 0 L 1 1</ofd:AbbreviatedData>"
                      "</ofd:PathObject>",
                      "<ofd:Template TemplateID=\"" + std::to_string(next) + "\"/>");
  }(3);
  std::string tpl3 = tpl;
  tpl3.replace(tpl3.find("TemplateID=\"3\""), 14, "TemplateID=\"2\"");
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
      {"Doc_0/T2.xml", tpl},
      {"Doc_0/T3.xml", tpl3},
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
  EXPECT_EQ(page->GetTemplates()[0].templateId, 3u);
  EXPECT_EQ(page->GetTemplates()[1].templateId, 2u);
  const auto* layer = ChildAs<OfdPageBlock>(*page->GetContent(), 0);
  ASSERT_EQ(layer->children.size(), 2u);  // the unknown element is skipped
  const auto* path = ChildAs<OfdPathObject>(*layer, 0);
  EXPECT_EQ(path->dataStatus, PathDataResult::kUnknownCommand);
  EXPECT_EQ(path->path.segments().size(), 1u);
  EXPECT_EQ(ChildAs<OfdTextObject>(*layer, 1)->font, nullptr);
  for (int i = 1; i < 4; ++i) EXPECT_EQ(o.doc->LoadPage(i, 1), nullptr) << i;

  auto deepPage = ParsedPage(*o.doc, 4);
  ASSERT_NE(deepPage, nullptr);
  int depth = 0;
  for (const OfdPageBlock* b = deepPage->GetContent(); b && !b->children.empty();
       b = ChildAs<OfdPageBlock>(*b, 0)) {
    ASSERT_EQ(b->children[0]->GetType(), OfdPageObject::Type::kPageBlock);
    ++depth;
  }
  EXPECT_GT(depth, 32);
  EXPECT_LE(depth, 66);
  EXPECT_EQ(deepPage->CountObjects(), static_cast<size_t>(depth));  // the text is beyond the cap

  Opened shallow = Open(BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1, "P.xml"}})},
                                         {"Doc_0/P.xml", OfdPageXml(hugeRepeat)}}));
  auto textPage = ParsedPage(*shallow.doc, 0);
  ASSERT_NE(textPage, nullptr);
  const auto* text = ChildAs<OfdTextObject>(*ChildAs<OfdPageBlock>(*textPage->GetContent(), 0), 0);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->textCodes[0].deltaX, (std::vector<float>{1, 1}));  // one per gap, no more
  EXPECT_EQ(text->textCodes[0].xs, (std::vector<float>{0, 1, 2}));
}

TEST(OfdPage_GetDisplayMatrix, MapsThePageOntoTheDeviceRectangle) {
  auto build = [](const char* box) {
    return BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1, "P.xml"}})},
                            {"Doc_0/P.xml", OfdPageXml("", std::string("<ofd:Area><ofd:PhysicalBox>") +
                                                               box + "</ofd:PhysicalBox></ofd:Area>")}});
  };
  Opened o = Open(build("0 0 40 30"));
  ASSERT_NE(o.doc, nullptr);
  std::unique_ptr<OfdPage> page(o.doc->LoadPage(0, 1));
  ASSERT_NE(page, nullptr);
  // 40 x 30 mm onto 472 x 354 pixels (300 dpi), turned by quarter turns.
  const struct {
    int rotate;
    float px, py, wantX, wantY;
  } cases[] = {
      {0, 40, 30, 472, 354}, {0, 20, 15, 236, 177},
      {1, 0, 0, 472, 0},     {1, 0, 30, 0, 0},       {1, 40, 30, 0, 354},
      {2, 0, 0, 472, 354},   {3, 0, 0, 0, 354},      {270, 40, 0, 0, 0},
  };
  for (const auto& c : cases) {
    float x = c.px, y = c.py;
    page->GetDisplayMatrix(0, 0, 472, 354, c.rotate).TransformPoint(x, y);
    EXPECT_NEAR(x, c.wantX, 1e-3) << c.rotate << " " << c.px << "," << c.py;
    EXPECT_NEAR(y, c.wantY, 1e-3) << c.rotate << " " << c.px << "," << c.py;
  }
  Opened shifted = Open(build("10 20 40 30"));
  std::unique_ptr<OfdPage> page2(shifted.doc->LoadPage(0, 1));
  float x = 10, y = 20;
  page2->GetDisplayMatrix(5, 7, 472, 354, 0).TransformPoint(x, y);
  EXPECT_NEAR(x, 5, 1e-3);
  EXPECT_NEAR(y, 7, 1e-3);
}

TEST(OfdPathData_Parse, Table) {
  using Op = Path::Op;
  const struct {
    const char* data;
    PathDataResult::Code code;
    std::vector<Op> ops;
  } cases[] = {
      {"M 0 0 L 10 0", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"S 1 2 L 3 4 C", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kClose}},
      {"M 0 0 Q 5 5 10 0", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M 0 0 B 1 2 3 4 5 6", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M0,0L1,1 L+2 -.5e1", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kLine}},
      {"M 0 0 L 1 1 2 2", PathDataResult::kOk, {Op::kMove, Op::kLine, Op::kLine}},
      {"M 0 0 1 1", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"M 0 0 A 5 5 0 0 1 10 0", PathDataResult::kOk, {Op::kMove, Op::kCubic, Op::kCubic}},
      {"M 0 0 A 0 5 0 0 1 10 0", PathDataResult::kOk, {Op::kMove, Op::kLine}},
      {"M 0 0 A 5 5 0 0 1 0 0", PathDataResult::kOk, {Op::kMove}},
      {"M 0 0 A 10 10 0 0 0 0 10", PathDataResult::kOk, {Op::kMove, Op::kCubic}},
      {"M 0 0 A 10 10 0 1 0 0 10", PathDataResult::kOk,
       {Op::kMove, Op::kCubic, Op::kCubic, Op::kCubic, Op::kCubic}},
      {"", PathDataResult::kOk, {}},
      {"M 0 0 X 1 1", PathDataResult::kUnknownCommand, {Op::kMove}},
      {"m 0 0", PathDataResult::kUnknownCommand, {}},
      {"1 2", PathDataResult::kUnknownCommand, {}},
      {"M 0 0 C 1 1", PathDataResult::kUnknownCommand, {Op::kMove, Op::kClose}},
      {"M 0 abc", PathDataResult::kBadNumber, {}},
      {"M 0 0 L 1e999 0", PathDataResult::kBadNumber, {Op::kMove}},
      {"M nan 0", PathDataResult::kBadNumber, {}},
      {"M inf 0", PathDataResult::kBadNumber, {}},
      {"M 0 0 B 1 2 3", PathDataResult::kBadNumber, {Op::kMove}},
  };
  for (const auto& c : cases) {
    Path path;
    const PathDataResult r = ParseAbbreviatedData(c.data, path);
    EXPECT_EQ(r.code, c.code) << c.data << ": " << r.Description();
    std::vector<Op> ops;
    for (const auto& s : path.segments()) ops.push_back(s.op);
    EXPECT_EQ(ops, c.ops) << c.data;
  }
  Path quad;
  ParseAbbreviatedData("M 0 0 Q 6 6 12 0", quad);
  EXPECT_EQ(std::vector<float>(quad.segments()[1].pts, quad.segments()[1].pts + 6),
            (std::vector<float>{4, 4, 8, 4, 12, 0}));
  // A half circle from (0,0) to (10,0) with sweep 1 passes (5,-5) and ends exactly.
  Path arc;
  ParseAbbreviatedData("M 0 0 A 5 5 0 0 1 10 0", arc);
  EXPECT_NEAR(arc.segments()[1].pts[4], 5, 1e-4);
  EXPECT_NEAR(arc.segments()[1].pts[5], -5, 1e-4);
  EXPECT_EQ(arc.CurrentX(), 10);
  EXPECT_EQ(arc.CurrentY(), 0);
  // Radii too small to span the ends grow to a half circle of radius 5.
  Path grown;
  ParseAbbreviatedData("M 0 0 A 1 1 0 0 1 10 0", grown);
  EXPECT_NEAR(grown.segments()[1].pts[5], -5, 1e-4);
  Path capped;
  const PathDataResult r = ParseAbbreviatedData("M 0 0 L 1 1 L 2 2 L 3 3", capped, 3);
  EXPECT_EQ(r.code, PathDataResult::kTooManySegments);
  EXPECT_EQ(r.offset, 18u);  // the fourth command
  EXPECT_EQ(capped.segments().size(), 3u);
}

TEST(OfdTextCode_DeltaList, Table) {
  const struct {
    const char* text;
    size_t max;
    bool ok;
    std::vector<float> want;
  } cases[] = {
      {"1 2 3", 10, true, {1, 2, 3}},
      {"g 3 1.5", 10, true, {1.5f, 1.5f, 1.5f}},
      {"g 2 1 3 g 2 0.5", 10, true, {1, 1, 3, 0.5f, 0.5f}},
      {"G 2 1", 10, true, {1, 1}},
      {"g 0 7 4", 10, true, {4}},
      {"g 4000000000 1", 5, true, {1, 1, 1, 1, 1}},
      {"g 1e30 1", 3, true, {1, 1, 1}},
      {"1 2 3", 2, true, {1, 2}},
      {"  3.88 3.88 ", 10, true, {3.88f, 3.88f}},
      {"", 10, true, {}},
      {"g 2", 10, false, {}},
      {"g -1 2", 10, false, {}},
      {"g 1.5 2", 10, false, {}},
      {"1 x 2", 10, false, {1}},
      {"g x 1", 10, false, {}},
  };
  for (const auto& c : cases) {
    std::vector<float> out;
    EXPECT_EQ(ParseDeltaList(c.text, c.max, out), c.ok) << c.text;
    EXPECT_EQ(out, c.want) << c.text;
  }
  std::vector<float> xs, ys;
  LayoutCharacters(1, 2, {1}, {0.5f}, 3, [](size_t, void*) { return 4.0f; }, nullptr, xs, ys);
  EXPECT_EQ(xs, (std::vector<float>{1, 2, 6}));
  EXPECT_EQ(ys, (std::vector<float>{2, 2.5f, 2.5f}));
}

TEST(OfdColor_ToArgb, Table) {
  OfdColorSpace gray16{1, OfdColorSpace::Kind::kGray, 16, {}};
  OfdColorSpace indexed{2, OfdColorSpace::Kind::kRGB, 8, {{0, 128, 255}}};
  const struct {
    std::vector<float> values;
    const OfdColorSpace* space;
    int index;
    int alpha;
    uint32_t want;
  } cases[] = {
      {{255, 0, 0}, nullptr, -1, 255, 0xFFFF0000u},
      {{128}, nullptr, -1, 255, 0xFF808080u},
      {{0, 255, 0, 0}, nullptr, -1, 76, 0x4CFF00FFu},
      {{65535}, &gray16, -1, 255, 0xFFFFFFFFu},
      {{}, &indexed, 0, 255, 0xFF0080FFu},
      {{999, -5, 10}, nullptr, -1, 255, 0xFFFF000Au},
      {{}, nullptr, -1, 255, 0xFF000000u},
  };
  for (const auto& c : cases) {
    OfdColor color;
    color.values = c.values;
    color.colorSpace = c.space;
    color.index = c.index;
    color.alpha = c.alpha;
    EXPECT_EQ(color.ToArgb(), c.want);
  }
}

// Every real file opens, and every page parses into objects.
TEST(OfdDocument_Fixtures, EveryPageParsesIntoObjects) {
  namespace fs = std::filesystem;
  const fs::path dir(TARVIK_FIXTURE_DIR);
  TARVIK_NEED_FIXTURE(dir);
  int files = 0;
  for (const auto& item : fs::directory_iterator(dir)) {
    if (item.path().extension() != ".ofd") continue;
    ++files;
    const std::string name = item.path().filename().string();
    OfdPackage package;
    ASSERT_EQ(package.LoadFromStream(StreamReader::CreateFileStreamReader(item.path().c_str()), 1), 0)
        << name;
    ASSERT_GE(package.CountDocuments(), 1) << name;
    for (int d = 0; d < package.CountDocuments(); ++d) {
      OfdDocument doc;
      ASSERT_EQ(doc.LoadDocument(&package, package.GetDocument(d), -1), 0) << name;
      ASSERT_GE(doc.CountPages(), 1) << name;
      for (int i = 0; i < doc.CountPages(); ++i) {
        auto page = ParsedPage(doc, i);
        ASSERT_NE(page, nullptr) << name << " page " << i;
        EXPECT_GT(page->CountObjects(), 0u) << name << " page " << i;
        EXPECT_GT(page->GetPageWidth(), 0) << name;
      }
    }
  }
  EXPECT_GT(files, 0);
}

// Details of particular real files that the model must get right.
TEST(OfdDocument_Fixtures, KnownDetails) {
  namespace fs = std::filesystem;
  const fs::path dir(TARVIK_FIXTURE_DIR);
  TARVIK_NEED_FIXTURE(dir);
  auto open = [&](const char* name) {
    Opened o;
    o.loadResult = o.package->LoadFromStream(
        StreamReader::CreateFileStreamReader((dir / name).c_str()), 1);
    o.doc = std::make_unique<OfdDocument>();
    EXPECT_EQ(o.doc->LoadDocument(o.package.get(), o.package->GetDocument(0), -1), 0) << name;
    return o;
  };
  {
    // The template is named "TPLS/..." but stored as "Tpls/...".
    Opened o = open("ofdrw__fapiao_shili.ofd");
    auto page = ParsedPage(*o.doc, 0);
    ASSERT_NE(page, nullptr);
    EXPECT_FLOAT_EQ(page->GetPageWidth(), 210);
    EXPECT_FLOAT_EQ(page->GetPageHeight(), 140);
    ASSERT_EQ(page->GetTemplates().size(), 1u);
    EXPECT_GT(page->GetTemplates()[0].content->CountObjects(), 50u);
    EXPECT_EQ(o.doc->GetSignaturesLocation(), "/Doc_0/Signs/Signatures.xml");
  }
  {
    // Resources in "Images&Fonts/": an embedded font and six images.
    Opened o = open("c5soft__6.2.004_3_path_with_ampersand.ofd");
    EXPECT_EQ(o.doc->FindPageIndexById(39), 1);
    const OfdFont* font = o.doc->FindFont(4);
    ASSERT_NE(font, nullptr);
    std::string bytes;
    EXPECT_TRUE(font->LoadFontFile(bytes));
    EXPECT_EQ(bytes.size(), 49596u);
    for (uint32_t id : {10u, 12u, 18u, 20u, 26u, 28u}) {
      ASSERT_NE(o.doc->FindMultiMedia(id), nullptr) << id;
      EXPECT_TRUE(o.doc->FindMultiMedia(id)->LoadData(bytes)) << id;
    }
    auto page = ParsedPage(*o.doc, 0);
    const auto* text = ChildAs<OfdTextObject>(*ChildAs<OfdPageBlock>(*page->GetContent(), 0), 0);
    ASSERT_EQ(text->GetType(), OfdPageObject::Type::kText);
    EXPECT_EQ(text->textCodes[0].glyphs, (std::vector<int32_t>{1, 2, 3}));
  }
  {
    // The seal is a watermark annotation with a PNG image.
    Opened o = open("ofdrw__20240531141733.ofd");
    auto page = ParsedPage(*o.doc, 0);
    ASSERT_FALSE(page->GetAnnotations().empty());
    const OfdAnnotation& watermark = *page->GetAnnotations()[0];
    EXPECT_EQ(watermark.type, "Watermark");
    EXPECT_EQ(watermark.boundary, GRect(90, 8, 120, 28));
    const auto* image = ChildAs<OfdImageObject>(*watermark.appearance, 0);
    ASSERT_NE(image->media, nullptr);
    std::string bytes;
    EXPECT_TRUE(image->media->LoadData(bytes));
  }
  {
    // A composite object inside an annotation, from DocumentRes.
    Opened o = open("ofdrw__csfapiao1.ofd");
    auto page = ParsedPage(*o.doc, 0);
    ASSERT_EQ(page->GetAnnotations().size(), 1u);
    const auto* composite = ChildAs<OfdCompositeObject>(*page->GetAnnotations()[0]->appearance, 0);
    ASSERT_NE(composite->unit, nullptr);
    ASSERT_EQ(composite->unit->content->children.size(), 1u);
    EXPECT_NE(ChildAs<OfdImageObject>(*composite->unit->content, 0)->media, nullptr);
  }
}

}  // namespace
}  // namespace host
