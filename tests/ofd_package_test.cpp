// OFD packages: recognising them, loading their documents, who owns the
// reader, resolving locations, and reading zip entries within bounds.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "host/base/stream_reader.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/zip_archive.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using testing_support::BuildOfdPackage;
using testing_support::BuildZip;

std::string SmallPackage() {
  return BuildOfdPackage({{"Doc_0/Document.xml", testing_support::OfdDocumentXml({{1, "P.xml"}})},
                          {"Doc_0/Res/img.png", "PNGDATA"}, {"Doc_0/Res/font.ttf", "FONT"}},
                         "Doc_0/Document.xml", "Doc_0/Signs/Signatures.xml");
}

int Check(const std::string& bytes) {
  StreamReaderPtr reader(StreamReader::CreateMemoryStreamReader(bytes));
  reader->SetPosition(bytes.size() / 2);
  const int result = OfdPackage::CheckFileType(reader.get());
  EXPECT_EQ(reader->GetPosition(), 0u);  // callers read the stream again from the start
  return result;
}

TEST(OfdPackage_CheckFileType, Table) {
  const std::string ofd = testing_support::MinimalOfdPackage();
  const struct { const char* name; std::string bytes; int want; } cases[] = {
      {"minimal", ofd, 1},
      {"no prefix", BuildZip({{"OFD.xml", "<OFD Version=\"1.0\"/>"}}), 1},
      {"other prefix", BuildZip({{"OFD.xml", "<x:OFD xmlns:x=\"urn:x\"/>"}}), 1},
      {"entry name case", BuildZip({{"ofd.XML", "<OFD/>"}}), 1},
      {"leading slash", BuildZip({{"/OFD.xml", "<OFD/>"}}), 1},
      {"wrong root", BuildZip({{"OFD.xml", "<ofd:Document/>"}}), 0},
      {"root prefix only", BuildZip({{"OFD.xml", "<ofd:OFDX/>"}}), 0},
      {"broken xml", BuildZip({{"OFD.xml", "<ofd:OFD><a></ofd:OFD>"}}), 0},
      {"empty OFD.xml", BuildZip({{"OFD.xml", ""}}), 0},
      {"no OFD.xml", BuildZip({{"Doc_0/Document.xml", "<Document/>"}}), 0},
      {"not a zip", "PK\x03\x04 but then nothing useful", 0},
      {"empty", "", 0},
      {"truncated to 4", ofd.substr(0, 4), 0},    {"truncated to 30", ofd.substr(0, 30), 0},
      {"truncated to half", ofd.substr(0, ofd.size() / 2), 0}, {"truncated by 1", ofd.substr(0, ofd.size() - 1), 0},
  };
  for (const auto& c : cases) EXPECT_EQ(Check(c.bytes), c.want) << c.name;
  EXPECT_EQ(OfdPackage::CheckFileType(nullptr), 0);
}

TEST(OfdPackage_Load, ResultsAndDocumentEntries) {
  const struct { const char* name; std::string bytes; int result, documents; } cases[] = {
      {"sample", SmallPackage(), 0, 1},
      {"no DocBody", BuildZip({{"OFD.xml", "<ofd:OFD xmlns:ofd=\"x\"/>"}}), 0, 0},
      {"not a zip", "not a zip at all", kOfdLoadNotZip, 0},
      {"no OFD.xml", BuildZip({{"a.xml", "<OFD/>"}}), kOfdLoadMissingFile, 0},
      {"broken OFD.xml", BuildZip({{"OFD.xml", "<OFD><DocBody>"}}), kOfdLoadBadXml, 0},
      {"wrong root", BuildZip({{"OFD.xml", "<Document/>"}}), kOfdLoadBadXml, 0},
  };
  for (const auto& c : cases) {
    OfdPackage package;
    EXPECT_EQ(package.LoadFromStream(StreamReader::CreateMemoryStreamReader(c.bytes), 1), c.result) << c.name;
    EXPECT_EQ(package.CountDocuments(), c.documents) << c.name;
    EXPECT_EQ(package.GetDocument(c.documents), nullptr) << c.name;
    EXPECT_EQ(package.GetDocument(-1), nullptr) << c.name;
  }
  OfdPackage package;
  EXPECT_EQ(package.LoadFromStream(nullptr, 1), kOfdLoadBadArgument);
  ASSERT_EQ(package.LoadFromStream(StreamReader::CreateMemoryStreamReader(SmallPackage()), 1), 0);
  const OfdDocBody* body = package.GetDocument(0);
  ASSERT_NE(body, nullptr);
  EXPECT_EQ(std::tuple(body->docRoot, body->signatures, body->docId),
            std::tuple("/Doc_0/Document.xml", "/Doc_0/Signs/Signatures.xml", "test"));
  package.ClosePackage();
  EXPECT_EQ(package.CountDocuments(), 0);
  package.ClosePackage();  // twice is harmless
}

TEST(OfdPackage_LoadRawStream, ResolvesAbsoluteRelativeAndCase) {
  testing_support::Opened o = testing_support::Open(SmallPackage());
  ASSERT_NE(o.doc, nullptr);
  const OfdDocument* doc = o.doc.get();
  const struct { const OfdDocument* doc; const char* location; const char* want; } cases[] = {
      {doc, "Res/img.png", "PNGDATA"},       {doc, "/Doc_0/Res/img.png", "PNGDATA"},
      {doc, "./Pages/../Res/IMG.PNG", "PNGDATA"}, {doc, "/doc_0/res/font.ttf", "FONT"},
      {nullptr, "Doc_0/Res/img.png", "PNGDATA"}, {nullptr, "Res/img.png", nullptr},
      {doc, "Res/missing.png", nullptr},     {doc, "", nullptr},
  };
  for (const auto& c : cases) {
    StreamReaderPtr stream(o.package->LoadRawStream(c.doc, c.location, 1));
    const std::string got =
        stream ? std::string(reinterpret_cast<const char*>(stream->GetBuffer()), stream->GetSize()) : "(none)";
    EXPECT_EQ(got, c.want ? c.want : "(none)") << c.location;
  }
  o.package->ClosePackage();
  EXPECT_EQ(o.package->LoadRawStream(doc, "Res/img.png", 1), nullptr);
}

}  // namespace
}  // namespace host
