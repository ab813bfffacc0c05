// Signatures of OFD documents: Signatures.xml and Signature.xml reading, the
// seal annotations they put on pages, malformed and hostile entries, the
// generated samples and the signed files of the fixture folder.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using testing_support::BuildOfdPackage;
using testing_support::OfdDocumentXml;
using testing_support::OfdPageXml;
using testing_support::ZipEntries;

constexpr char kNs[] = " xmlns:ofd=\"http://www.ofdspec.org/2016\"";

using testing_support::Open;
using testing_support::Opened;

std::string SignatureXml(const std::string& stamps, const std::string& seal = "Seal.esl",
                         const std::string& value = "SignedValue.dat") {
  return std::string("<ofd:Signature") + kNs + "><ofd:SignedInfo><ofd:Provider><ofd:ProviderName>P</ofd:ProviderName>" +
         R"(<ofd:Version>2</ofd:Version><ofd:Company>C</ofd:Company></ofd:Provider><ofd:References CheckMethod="SM3">)"
         R"(<ofd:Reference FileRef="/Doc_0/Document.xml"><ofd:CheckValue>YWJj</ofd:CheckValue></ofd:Reference>)"
         R"(<ofd:Reference FileRef="/x"><ofd:CheckValue>not base64!</ofd:CheckValue></ofd:Reference>)"
         "</ofd:References>" + stamps + "<ofd:Seal><ofd:BaseLoc>" + seal + "</ofd:BaseLoc></ofd:Seal>" +
         "</ofd:SignedInfo><ofd:SignedValue>" + value + "</ofd:SignedValue></ofd:Signature>";
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
    EXPECT_EQ(std::make_pair(sigs->CountSignatures(), CountAnnots(*sigs)), std::make_pair(c.signatures, c.annots))
        << c.name;
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
    const std::string name = std::to_string(i) + ".xml";
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

// The fields of a signature as read, and the seal annotations its stamps and
// a second signature's put on each page.
TEST(OfdSignature_Attach, FieldsAndOneSealAnnotationPerStampOnItsPage) {
  const std::string first = R"(<ofd:StampAnnot ID="11" PageRef="9" Boundary="10 20 40 30" Clip="8 0 8 30"/>)"
                            R"(<ofd:StampAnnot ID="12" PageRef="5" Boundary="1 2 3 4"/>)"
                            R"(<ofd:StampAnnot ID="s8" PageRef="77" Boundary="1 2 3 4"/>)";
  const std::string second = R"(<ofd:StampAnnot ID="21" PageRef="9" Boundary="50 60 10 10"/>)";
  Opened o = Open(SignedPackage(
      SignaturesXml(Entry("Sign_0/Signature.xml", "s1") + Entry("Sign_1/Signature.xml", "2")), SignatureXml(first),
      {{"Doc_0/Signs/Sign_1/Signature.xml", SignatureXml(second, "", "/Doc_0/Signs/Sign_0/SignedValue.dat")}}));
  ASSERT_TRUE(o.doc);
  const auto sigs = OfdSignatures::Load(o.doc.get());
  ASSERT_TRUE(sigs);
  ASSERT_EQ(sigs->CountSignatures(), 2);
  const OfdSignatureInfo& s = sigs->GetSignatures()[0];
  EXPECT_EQ((std::vector<std::string>{s.id, s.type, s.providerName, s.providerCompany, s.checkMethod, s.location.str(),
                                      s.sealLocation.str(), s.signedValueLocation.str()}),
            (std::vector<std::string>{"s1", "Seal", "P", "C", "SM3", "/Doc_0/Signs/Sign_0/Signature.xml",
                                      "/Doc_0/Signs/Sign_0/Seal.esl", "/Doc_0/Signs/Sign_0/SignedValue.dat"}));
  ASSERT_EQ(std::make_pair(s.references.size(), s.stampAnnots.size()), std::make_pair(size_t{2}, size_t{3}));
  EXPECT_EQ(std::make_tuple(s.references[0].fileRef, s.references[0].checkValue, s.references[1].checkValue),
            std::make_tuple("/Doc_0/Document.xml", "abc", ""));
  const OfdStampAnnotInfo &stamp = s.stampAnnots[0], &astray = s.stampAnnots[2];
  EXPECT_EQ(std::make_tuple(stamp.id, stamp.pageId, stamp.pageIndex, stamp.boundary, stamp.clip),
            std::make_tuple("11", 9u, 1, GRect(10, 20, 50, 50), GRect(8, 0, 16, 30)));
  EXPECT_TRUE(astray.id == "s8" && astray.pageIndex == -1 && astray.clip.IsRectNull());  // no page with ID 77

  std::unique_ptr<OfdPage> page(o.doc->LoadPage(1, 1));
  ASSERT_TRUE(page);
  ASSERT_EQ(sigs->AttachSealAnnotations(page.get()), 2);
  ASSERT_EQ(page->CountSealAnnotations(), 2);
  const OfdAnnotationSeal *a = page->GetSealAnnotation(0), *b = page->GetSealAnnotation(1);
  ASSERT_TRUE(a->sealMedia && a->Appearance && b->sealMedia);
  EXPECT_EQ(std::make_tuple(a->id, a->pageIndex, a->Boundary, a->Clip, a->Appearance->children.size()),
            std::make_tuple(11u, 1, GRect(10, 20, 50, 50), GRect(8, 0, 16, 30), size_t{1}));
  EXPECT_EQ(std::make_tuple(a->sealMedia->IsSeal(), a->sealMedia->PrimaryLoc.str(), a->sealMedia->SecondaryLoc.str(),
                            a->sealMedia->ResourceContainer),
            std::make_tuple(true, "/Doc_0/Signs/Sign_0/Seal.esl", "/Doc_0/Signs/Sign_0/SignedValue.dat", o.doc.get()));
  std::string bytes;
  EXPECT_TRUE(a->sealMedia->LoadSecondaryData(bytes) && bytes == "value");
  EXPECT_TRUE(b->id == 21u && b->Clip.IsRectNull() && b->sealMedia->PrimaryLoc.IsEmpty());

  std::unique_ptr<OfdPage> other(o.doc->LoadPage(0, 1));
  ASSERT_TRUE(other);
  EXPECT_EQ(AttachSignatureSeals(other.get()), 1);
  EXPECT_EQ(other->GetSealAnnotation(0)->id, 12u);
}

}  // namespace
}  // namespace host
