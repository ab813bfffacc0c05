// Signatures of OFD documents: Signatures.xml and Signature.xml reading, the
// seal annotations they put on pages, malformed and hostile entries, the
// generated samples and the signed files of the fixture folder.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "support/fixtures.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using testing_support::BuildOfdPackage;
using testing_support::OfdDocumentXml;
using testing_support::OfdPageXml;
using testing_support::ZipEntries;

constexpr char kNs[] = " xmlns:ofd=\"http://www.ofdspec.org/2016\"";

using testing_support::Open;
using testing_support::Opened;
using testing_support::OpenFile;

std::string SignatureXml(const std::string& stamps, const std::string& seal = "Seal.esl",
                         const std::string& value = "SignedValue.dat") {
  return std::string("<ofd:Signature") + kNs + "><ofd:SignedInfo>" +
         "<ofd:Provider><ofd:ProviderName>P</ofd:ProviderName><ofd:Version>2</ofd:Version>" +
         "<ofd:Company>C</ofd:Company></ofd:Provider>" +
         "<ofd:References CheckMethod=\"SM3\"><ofd:Reference FileRef=\"/Doc_0/Document.xml\">" +
         "<ofd:CheckValue>YWJj</ofd:CheckValue></ofd:Reference><ofd:Reference FileRef=\"/x\">" +
         "<ofd:CheckValue>not base64!</ofd:CheckValue></ofd:Reference></ofd:References>" + stamps +
         "<ofd:Seal><ofd:BaseLoc>" + seal + "</ofd:BaseLoc></ofd:Seal></ofd:SignedInfo>" +
         "<ofd:SignedValue>" + value + "</ofd:SignedValue></ofd:Signature>";
}

std::string SignaturesXml(const std::string& entries) {
  return std::string("<ofd:Signatures") + kNs + ">" + entries + "</ofd:Signatures>";
}

std::string Entry(const std::string& baseLoc, const char* id = "1") {
  return std::string("<ofd:Signature ID=\"") + id + "\" BaseLoc=\"" + baseLoc + "\"/>";
}

// Two pages (IDs 5 and 9), a Signatures.xml holding `list`, Sign_0 with its
// seal and signed value, and `extra` files.
std::string SignedPackage(const std::string& list, const std::string& signature, ZipEntries extra = {}) {
  ZipEntries files = {
      {"Doc_0/Document.xml", OfdDocumentXml({{5, "Pages/Page_0/Content.xml"}, {9, "Pages/Page_1/Content.xml"}})},
      {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml("")},
      {"Doc_0/Pages/Page_1/Content.xml", OfdPageXml("")},
      {"Doc_0/Signs/Signatures.xml", list},
      {"Doc_0/Signs/Sign_0/Signature.xml", signature},
      {"Doc_0/Signs/Sign_0/Seal.esl", "seal"},
      {"Doc_0/Signs/Sign_0/SignedValue.dat", "value"},
  };
  files.insert(files.end(), extra.begin(), extra.end());
  return BuildOfdPackage(files, "Doc_0/Document.xml", "Doc_0/Signs/Signatures.xml");
}

size_t CountAnnots(const OfdSignatures& s) {
  size_t n = 0;
  for (const auto& sig : s.GetSignatures()) n += sig.stampAnnots.size();
  return n;
}

TEST(OfdSignature_Read, FieldsAndLocations) {
  const std::string stamps =
      "<ofd:StampAnnot ID=\"s7\" PageRef=\"9\" Boundary=\"10 20 40 30\" Clip=\"0 0 8 30\"/>"
      "<ofd:StampAnnot ID=\"8\" PageRef=\"77\" Boundary=\"1 2 3 4\"/>";
  Opened o = Open(SignedPackage(SignaturesXml(Entry("Sign_0/Signature.xml", "s1")), SignatureXml(stamps)));
  ASSERT_TRUE(o.doc);
  const auto sigs = OfdSignatures::Load(o.doc.get());
  ASSERT_TRUE(sigs);
  ASSERT_EQ(sigs->CountSignatures(), 1);
  const OfdSignatureInfo& s = sigs->GetSignatures()[0];
  EXPECT_EQ((std::vector<std::string>{s.id, s.type, s.providerName, s.providerCompany, s.checkMethod}),
            (std::vector<std::string>{"s1", "Seal", "P", "C", "SM3"}));
  EXPECT_EQ(s.location, "/Doc_0/Signs/Sign_0/Signature.xml");
  ASSERT_EQ(s.references.size(), 2u);
  EXPECT_EQ(s.references[0].fileRef, "/Doc_0/Document.xml");
  EXPECT_EQ(s.references[0].checkValue, "abc");
  EXPECT_EQ(s.references[1].checkValue, "");
  EXPECT_EQ(s.sealLocation, "/Doc_0/Signs/Sign_0/Seal.esl");
  EXPECT_EQ(s.signedValueLocation, "/Doc_0/Signs/Sign_0/SignedValue.dat");
  ASSERT_EQ(s.stampAnnots.size(), 2u);
  EXPECT_EQ(s.stampAnnots[0].id, "s7");
  EXPECT_EQ(s.stampAnnots[0].pageId, 9u);
  EXPECT_EQ(s.stampAnnots[0].pageIndex, 1);
  EXPECT_EQ(s.stampAnnots[0].boundary, GRect(10, 20, 50, 50));
  EXPECT_EQ(s.stampAnnots[0].clip, GRect(0, 0, 8, 30));
  EXPECT_EQ(s.stampAnnots[1].pageIndex, -1);  // no page with ID 77
  EXPECT_TRUE(s.stampAnnots[1].clip.IsRectNull());
}

TEST(OfdSignature_Read, BadEntriesAreSkipped) {
  const std::string one = Entry("Sign_0/Signature.xml");
  const std::string goodStamp = "<ofd:StampAnnot ID=\"1\" PageRef=\"5\" Boundary=\"0 0 40 40\"/>";
  const std::string good = SignatureXml(goodStamp);
  const auto stamp = [](const std::string& attrs) {
    return SignatureXml("<ofd:StampAnnot ID=\"1\" PageRef=\"5\" " + attrs + "/>");
  };
  const struct { const char* name; std::string list, signature; int signatures; size_t annots; } cases[] = {
      {"baseline", one, good, 1, 1},
      {"absolute BaseLoc", Entry("/Doc_0/Signs/Sign_0/Signature.xml"), good, 1, 1},
      {"list names itself", Entry("Signatures.xml"), good, 0, 0},
      {"climbs out", Entry("../../../../etc/passwd"), good, 0, 0},
      {"URL", Entry("file:///etc/passwd"), good, 0, 0},
      {"missing file", Entry("Sign_9/Signature.xml"), good, 0, 0},
      {"listed twice", one + Entry("/Doc_0/Signs/Sign_0/Signature.xml"), good, 1, 1},
      {"malformed XML", one, "<ofd:Signature><", 0, 0},
      {"wrong root", one, std::string("<ofd:Seal") + kNs + "/>", 0, 0},
      {"files name themselves", one, SignatureXml(goodStamp, "Signature.xml", "/Doc_0/Signs/Signatures.xml"), 0, 0},
      {"files outside", one, SignatureXml(goodStamp, "../../../../x", "C:/x.dat"), 0, 0},
      {"seal file alone", one, SignatureXml(goodStamp, "Seal.esl", "missing.dat"), 1, 1},
      {"NaN boundary", one, stamp("Boundary=\"nan 0 40 40\""), 1, 0},
      {"negative width", one, stamp("Boundary=\"0 0 -40 40\""), 1, 0},
      {"zero height", one, stamp("Boundary=\"0 0 40 0\""), 1, 0},
      {"three numbers", one, stamp("Boundary=\"1 2 3\""), 1, 0},
      {"five numbers", one, stamp("Boundary=\"1 2 3 4 5\""), 1, 0},
      {"huge", one, stamp("Boundary=\"3e38 0 3e38 1\""), 1, 0},
      {"no boundary", one, stamp(""), 1, 0},
      {"garbage clip", one, stamp("Boundary=\"0 0 40 40\" Clip=\"abc\""), 1, 0},
      {"negative clip", one, stamp("Boundary=\"0 0 40 40\" Clip=\"0 0 -8 40\""), 1, 0},
      {"bad PageRef", one, SignatureXml("<ofd:StampAnnot ID=\"1\" PageRef=\"p5\" Boundary=\"0 0 40 40\"/>"), 1, 0},
  };
  for (const auto& c : cases) {
    Opened o = Open(SignedPackage(SignaturesXml(c.list), c.signature));
    ASSERT_TRUE(o.doc) << c.name;
    const auto sigs = OfdSignatures::Load(o.doc.get());
    ASSERT_TRUE(sigs) << c.name;
    EXPECT_EQ(sigs->CountSignatures(), c.signatures) << c.name;
    EXPECT_EQ(CountAnnots(*sigs), c.annots) << c.name;
  }
}

TEST(OfdSignature_Read, MissingOrMalformedListGivesNull) {
  const std::string sig = SignatureXml("");
  for (const std::string& list : {std::string("<ofd:Signatures"), std::string("<ofd:Document") + kNs + "/>"}) {
    Opened o = Open(SignedPackage(list, sig));
    ASSERT_TRUE(o.doc);
    EXPECT_FALSE(OfdSignatures::Load(o.doc.get()));
  }
  Opened none = Open(BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({{1, "P.xml"}})}}));
  ASSERT_TRUE(none.doc);
  EXPECT_FALSE(OfdSignatures::Load(none.doc.get()));
  EXPECT_FALSE(OfdSignatures::Load(nullptr));
  EXPECT_EQ(AttachSignatureSeals(nullptr), 0);
}

TEST(OfdSignature_Read, CountsAreCapped) {
  std::string list = Entry("Sign_0/Signature.xml"), stamps;
  ZipEntries extra;
  for (int i = 2; i <= 1005; ++i) {
    // Built by appending: GCC 12 at -O3 warns falsely on "S" + to_string(i).
    std::string name = "S";
    name += std::to_string(i);
    name += ".xml";
    list += Entry(name);
    extra.emplace_back("Doc_0/Signs/" + name, SignatureXml("", "/Doc_0/Signs/Sign_0/Seal.esl", ""));
  }
  for (int i = 0; i < 5000; ++i) stamps += "<ofd:StampAnnot PageRef=\"5\" Boundary=\"0 0 1 1\"/>";
  Opened o = Open(SignedPackage(SignaturesXml(list), SignatureXml(stamps), extra));
  ASSERT_TRUE(o.doc);
  const auto sigs = OfdSignatures::Load(o.doc.get());
  ASSERT_TRUE(sigs);
  EXPECT_EQ(sigs->CountSignatures(), static_cast<int>(OfdSignatures::kMaxSignatures));
  EXPECT_EQ(CountAnnots(*sigs), OfdSignatures::kMaxStampAnnots);
}

TEST(OfdSignature_Attach, OneSealAnnotationPerStampOnItsPage) {
  const std::string first =
      "<ofd:StampAnnot ID=\"11\" PageRef=\"9\" Boundary=\"10 20 40 30\" Clip=\"8 0 8 30\"/>"
      "<ofd:StampAnnot ID=\"12\" PageRef=\"5\" Boundary=\"1 2 3 4\"/>";
  const std::string second = "<ofd:StampAnnot ID=\"21\" PageRef=\"9\" Boundary=\"50 60 10 10\"/>";
  Opened o = Open(SignedPackage(SignaturesXml(Entry("Sign_0/Signature.xml") + Entry("Sign_1/Signature.xml", "2")),
                                SignatureXml(first),
                                {{"Doc_0/Signs/Sign_1/Signature.xml", SignatureXml(second, "", "/Doc_0/Signs/Sign_0/SignedValue.dat")}}));
  ASSERT_TRUE(o.doc);
  const auto sigs = OfdSignatures::Load(o.doc.get());
  ASSERT_TRUE(sigs);
  ASSERT_EQ(sigs->CountSignatures(), 2);
  std::unique_ptr<OfdPage> page(o.doc->LoadPage(1, 1));
  ASSERT_TRUE(page);
  ASSERT_EQ(sigs->AttachSealAnnotations(page.get()), 2);
  ASSERT_EQ(page->CountSealAnnotations(), 2);
  const OfdAnnotationSeal* a = page->GetSealAnnotation(0);
  EXPECT_EQ(a->id, 11u);
  EXPECT_EQ(a->pageIndex, 1);
  EXPECT_EQ(a->Boundary, GRect(10, 20, 50, 50));
  EXPECT_EQ(a->Clip, GRect(8, 0, 16, 30));
  ASSERT_TRUE(a->sealMedia);
  EXPECT_TRUE(a->sealMedia->IsSeal());
  EXPECT_EQ(a->sealMedia->PrimaryLoc, "/Doc_0/Signs/Sign_0/Seal.esl");
  EXPECT_EQ(a->sealMedia->SecondaryLoc, "/Doc_0/Signs/Sign_0/SignedValue.dat");
  EXPECT_EQ(a->sealMedia->ResourceContainer, o.doc.get());
  ASSERT_TRUE(a->Appearance);
  ASSERT_EQ(a->Appearance->children.size(), 1u);
  std::string bytes;
  ASSERT_TRUE(a->sealMedia->LoadSecondaryData(bytes));
  EXPECT_EQ(bytes, "value");
  const OfdAnnotationSeal* b = page->GetSealAnnotation(1);
  EXPECT_EQ(b->id, 21u);
  EXPECT_TRUE(b->Clip.IsRectNull());
  EXPECT_TRUE(b->sealMedia->PrimaryLoc.IsEmpty());

  std::unique_ptr<OfdPage> other(o.doc->LoadPage(0, 1));
  ASSERT_TRUE(other);
  EXPECT_EQ(AttachSignatureSeals(other.get()), 1);
  EXPECT_EQ(other->GetSealAnnotation(0)->id, 12u);
}

}  // namespace
}  // namespace host
