// The document library: opening (and why opening fails), pages, rendering
// with seals, and the signature list, through the shared libraries.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

#include "support/fonts.h"
#include "support/fixtures.h"
#include "support/render_compare.h"
#include "support/sample_files.h"
#include "support/zip_builder.h"
#include "tarvik/viewer.h"

namespace {

using tarvik::viewer::Document;
using tarvik::viewer::Error;
using tarvik::viewer::Status;
using testing_support::BuildZip;
using testing_support::EntryOf;
using testing_support::SamplePath;
using testing_support::WithEntry;
using testing_support::ZipEntries;

std::unique_ptr<Document> OpenBytes(const std::string& bytes, Error* error) {
  return Document::OpenMemory(bytes.data(), bytes.size(), "test.ofd", error);
}

ZipEntries SignedEntries() {
  return testing_support::ReadZip(testing_support::ReadFileBytes(SamplePath("signed_v4_png.ofd")));
}

tarvik::viewer::RenderOptions AtDpi(double dpi) {
  tarvik::viewer::RenderOptions options;
  options.dpi = dpi;
  return options;
}

constexpr const char* kSignature = "Doc_0/Signs/Sign_0/Signature.xml";

TEST(DocumentOpen, BadPackagesNameTheCause) {
  using testing_support::BuildOfdPackage;
  const struct { std::string bytes; Status status; const char* message; } cases[] = {
      {"", Status::kBadArgument, "no bytes"},
      {"hello, world", Status::kNotOfd, "not a zip archive"},
      {BuildZip({{"a.txt", "x"}}), Status::kNotOfd, "OFD.xml: missing"},
      {BuildZip({{"OFD.xml", "<ofd:OFD><DocBody>"}}), Status::kNotOfd, "OFD.xml: malformed XML"},
      {BuildZip({{"OFD.xml", "<Other/>"}}), Status::kNotOfd, "root element is not OFD"},
      {BuildZip({{"OFD.xml", "<ofd:OFD/>"}}), Status::kBadDocument, "lists no document"},
      {BuildOfdPackage({{"Doc_0/Other.xml", "x"}}), Status::kBadDocument, "Doc_0/Document.xml: missing"},
      {BuildOfdPackage({{"Doc_0/Document.xml", "<ofd:Document><a>"}}), Status::kBadDocument,
       "Doc_0/Document.xml: malformed XML ("},
      {BuildOfdPackage({{"Doc_0/Document.xml", "<ofd:Document>\n<ofd:CommonData></ofd:Common>"}}),
       Status::kBadDocument, "at offset 3"},
  };
  for (const auto& c : cases) {
    Error error;
    EXPECT_FALSE(OpenBytes(c.bytes, &error));
    EXPECT_EQ(error.status, c.status) << c.message;
    // The message names the cause and the document.
    EXPECT_NE(error.message.find(c.message), std::string::npos) << error.message;
    EXPECT_NE(error.message.find("test.ofd"), std::string::npos) << error.message;
  }
}

TEST(DocumentOpen, FileErrorsGiveTheSystemReason) {
  Error error;
  EXPECT_FALSE(Document::Open("/nonexistent/x.ofd", &error));
  EXPECT_EQ(error.status, Status::kIoError);
  EXPECT_NE(error.message.find("No such file"), std::string::npos) << error.message;
  EXPECT_FALSE(Document::Open(TARVIK_SOURCE_DIR, &error));
  EXPECT_NE(error.message.find("is a directory"), std::string::npos) << error.message;
  EXPECT_FALSE(Document::Open("", &error));
  EXPECT_EQ(error.status, Status::kBadArgument);
}

TEST(DocumentRender, BadPagesAndResolutionsSayWhy) {
  const auto doc = Document::Open(SamplePath("signed_v4_png.ofd"));
  ASSERT_TRUE(doc);
  const struct { int page; double dpi; Status status; } cases[] = {
      {1, 50, Status::kPageOutOfRange}, {-1, 50, Status::kPageOutOfRange}, {0, 0, Status::kBadArgument},
      {0, -3, Status::kBadArgument},    {0, std::nan(""), Status::kBadArgument}, {0, 1e6, Status::kTooLarge}};
  for (const auto& c : cases) {
    tarvik::viewer::RenderReport report;
    EXPECT_FALSE(doc->RenderPage(c.page, AtDpi(c.dpi), &report)) << c.page << " " << c.dpi;
    EXPECT_EQ(report.error.status, c.status) << report.error.message;
    EXPECT_FALSE(report.error.message.empty());
  }
}

// The one-call render draws what a host drawing page content and then each
// seal through the seal library draws (the same reference pictures).
TEST(DocumentRender, SignedSamplesMatchTheirReferences) {
  if (!testing_support::HasReferenceCjkFont()) GTEST_SKIP() << "WenQuanYi Zen Hei is not installed";
  TARVIK_NEED_FONTS("AR PL UMing CN");  // the pages' text
  const tarvik::RenderSealParam::TextParam text{.fontSize = 9, .outside = 1, .verticalAlign = 1, .horizontalAlign = 2,
                                                .text = U"已验证", .fontName = U"WenQuanYi Zen Hei"};
  const struct { const char *reference, *file; bool cross; int colorMode; bool withText; } cases[] = {
      {"signed_v4_png", "signed_v4_png.ofd", false, 0, false},
      {"signed_ofdseal_black", "signed_v4_ofdseal.ofd", false, 2, false},
      {"signed_cross_grey_text", "signed_v4_png.ofd", true, 1, true}};
  for (const auto& c : cases) {
    const auto doc = Document::Open(SamplePath(c.file));
    ASSERT_TRUE(doc);
    tarvik::viewer::RenderOptions options = AtDpi(50);
    options.cross = c.cross, options.colorMode = c.colorMode;
    options.sealText = c.withText ? &text : nullptr;
    tarvik::viewer::RenderReport report;
    const auto page = doc->RenderPage(0, options, &report);
    ASSERT_TRUE(page) << report.error.message;
    EXPECT_TRUE(testing_support::CompareWithReference(*page, c.reference, 24));
    ASSERT_EQ(report.seals.size(), 1u);
    EXPECT_EQ(std::tie(report.seals[0].drawn, report.seals[0].signature, report.seals[0].stampId),
              std::make_tuple(true, 0, std::string("30")));
  }
}

TEST(DocumentRender, UnreadableSealIsReportedAndThePageStillDrawn) {
  const ZipEntries entries = WithEntry(WithEntry(SignedEntries(), "Doc_0/Signs/Sign_0/SignedValue.dat", "garbage"),
                                       "Doc_0/Signs/Sign_0/Seal.esl", "more garbage");
  Error error;
  const auto doc = OpenBytes(BuildZip(entries), &error);
  ASSERT_TRUE(doc) << error.message;
  tarvik::viewer::RenderOptions options = AtDpi(20);
  tarvik::viewer::RenderReport report;
  for (int render = 0; render < 2; ++render) {  // the second from what the first found
    ASSERT_TRUE(doc->RenderPage(0, options, &report));
    ASSERT_EQ(report.seals.size(), 1u);
    EXPECT_FALSE(report.seals[0].drawn);
    EXPECT_NE(report.seals[0].reason.find("SignedValue.dat is not a seal signature"), std::string::npos)
        << report.seals[0].reason;
  }
  options.seals = false;
  ASSERT_TRUE(doc->RenderPage(0, options, &report));
  EXPECT_TRUE(report.seals.empty());
}

TEST(DocumentRender, ABudgetStopsThePageWithAReason) {
  const auto doc = Document::Open(SamplePath("signed_v4_png.ofd"));
  ASSERT_TRUE(doc);
  tarvik::viewer::RenderOptions options = AtDpi(20);
  options.limits.maxObjects = 1;
  tarvik::viewer::RenderReport report;
  ASSERT_TRUE(doc->RenderPage(0, options, &report));
  ASSERT_EQ(report.warnings.size(), 1u);
  EXPECT_NE(report.warnings[0].find("page 1: too many objects"), std::string::npos) << report.warnings[0];
  EXPECT_EQ(report.seals.size(), 1u);  // seals are still drawn
}

TEST(DocumentVerify, VerdictsReachThePicture) {
  if (!testing_support::HasReferenceCjkFont()) GTEST_SKIP() << "WenQuanYi Zen Hei is not installed";
  TARVIK_NEED_FONTS("AR PL UMing CN");  // the pages' text
  // One signed file changed after signing: invalid, named, and crossed.
  const ZipEntries entries = SignedEntries();
  const std::string res = EntryOf(entries, "Doc_0/PublicRes.xml") + " ";
  const std::string tampered = BuildZip(WithEntry(entries, "Doc_0/PublicRes.xml", res.c_str()));
  struct Case { bool verify; tarvik::viewer::Verdict verdict; bool crossed; } cases[] = {
      {true, tarvik::viewer::Verdict::kInvalid, true},
      {false, tarvik::viewer::Verdict::kNotChecked, false},
  };
  for (const Case& c : cases) {
    const tarvik::viewer::OpenOptions open{.verify = c.verify, .trustAnchors = {}};
    const auto doc = Document::OpenMemory(tampered.data(), tampered.size(), "t.ofd", nullptr, open);
    ASSERT_TRUE(doc);
    const tarvik::viewer::SignatureInfo& sig = doc->Signatures()[0];
    EXPECT_EQ(sig.verdict, c.verdict);
    // An invalid verdict names the changed file.
    EXPECT_EQ(sig.verdictReason.find("PublicRes.xml") != std::string::npos, c.crossed) << sig.verdictReason;
    tarvik::viewer::RenderReport report;
    const auto page = doc->RenderPage(0, AtDpi(50), &report);
    ASSERT_TRUE(page && report.seals.size() == 1);
    EXPECT_EQ(report.seals[0].crossed, c.crossed);
    if (c.crossed) {
      EXPECT_TRUE(testing_support::CompareWithReference(*page, "viewer_invalid_crossed", 24));
    }
  }
  // The untouched sample: intact without trust anchors, valid with its root.
  tarvik::viewer::OpenOptions open;
  EXPECT_EQ(Document::Open(SamplePath("signed_v4_png.ofd"), nullptr, open)->Signatures()[0].verdict,
            tarvik::viewer::Verdict::kIntact);
  open.trustAnchors = SamplePath("sample_root.pem");
  EXPECT_EQ(Document::Open(SamplePath("signed_v4_png.ofd"), nullptr, open)->Signatures()[0].verdict,
            tarvik::viewer::Verdict::kValid);
}

// A paletted seal picture cannot take the seal library's cross; the cross
// of an invalid signature is then drawn over it on the page.
TEST(DocumentVerify, InvalidPalettedSealIsCrossedToo) {
  const std::string path = std::string(TARVIK_FIXTURE_DIR) + "/ofdrw__anzhengtong_manual_seal.ofd";
  TARVIK_NEED_FIXTURE(path);
  std::string pixels[2];
  for (int verify = 0; verify < 2; ++verify) {
    const auto doc = Document::Open(path, nullptr, {.verify = verify == 1, .trustAnchors = {}});
    ASSERT_TRUE(doc);
    const auto page = doc->RenderPage(0, AtDpi(30));
    ASSERT_TRUE(page);
    pixels[verify].assign(reinterpret_cast<const char*>(page->GetBuffer()),
                          static_cast<size_t>(page->GetPitch()) * page->GetHeight());
  }
  EXPECT_NE(pixels[0], pixels[1]);
}

TEST(DocumentSignatures, ListsSealFieldsAndProblems) {
  const auto doc = Document::Open(SamplePath("signed_v4_png.ofd"));
  ASSERT_TRUE(doc);
  ASSERT_EQ(doc->Signatures().size(), 1u);
  const tarvik::viewer::SignatureInfo& sig = doc->Signatures()[0];
  ASSERT_EQ(sig.stamps.size(), 1u);
  EXPECT_EQ(std::tie(sig.usable, sig.sesVersion, sig.pictureFormat, sig.referenceCount, sig.stamps[0].page),
            std::make_tuple(true, 4, std::string("PNG"), 5, 0));
  EXPECT_TRUE(!sig.sealName.empty() && sig.problems.empty());

  // A second signature whose file is missing, and a stamp on no page.
  ZipEntries entries = SignedEntries();
  std::string list = EntryOf(entries, "Doc_0/Signs/Signatures.xml"), xml = EntryOf(entries, kSignature);
  list.replace(list.find("</ofd:Signatures>"), 0,
               "<ofd:Signature ID=\"2\" BaseLoc=\"Sign_9/Signature.xml\"/>");
  xml.replace(xml.find("PageRef=\"2\""), 11, "PageRef=\"77\"");
  xml.replace(xml.find("<ofd:Seal>"), 0, "<ofd:StampAnnot ID=\"31\" PageRef=\"2\" Boundary=\"1 2\"/>");
  entries = WithEntry(entries, "Doc_0/Signs/Signatures.xml", list.c_str());
  const auto changed = OpenBytes(BuildZip(WithEntry(entries, kSignature, xml.c_str())), nullptr);
  ASSERT_TRUE(changed);
  ASSERT_EQ(changed->Signatures().size(), 2u);
  const auto& first = changed->Signatures()[0];
  ASSERT_EQ(first.problems.size(), 2u);
  EXPECT_NE(first.problems[0].find("StampAnnot 31: missing or malformed Boundary"), std::string::npos);
  EXPECT_NE(first.problems[1].find("PageRef 77 names no page"), std::string::npos);
  EXPECT_EQ(first.stamps[0].page, -1);
  const auto& second = changed->Signatures()[1];
  EXPECT_FALSE(second.usable);
  EXPECT_NE(second.problems[0].find("Sign_9/Signature.xml is missing"), std::string::npos);
}

}  // namespace
