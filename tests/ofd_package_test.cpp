// Recognising OFD packages and reading their zip entries within bounds.
#include <gtest/gtest.h>

#include <string>

#include "host/base/stream_reader.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/zip_archive.h"
#include "support/zip_builder.h"

namespace host {
namespace {

using testing_support::BuildZip;

int Check(const std::string& bytes) {
  StreamReaderPtr reader(StreamReader::CreateMemoryStreamReader(bytes));
  reader->SetPosition(bytes.size() / 2);
  const int result = OfdPackage::CheckFileType(reader.get());
  EXPECT_EQ(reader->GetPosition(), 0u);  // callers read the stream again from the start
  return result;
}

TEST(OfdPackage_CheckFileType, Table) {
  const struct {
    const char* name;
    std::string bytes;
    int want;
  } cases[] = {
      {"minimal", testing_support::MinimalOfdPackage(), 1},
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
  };
  for (const auto& c : cases) EXPECT_EQ(Check(c.bytes), c.want) << c.name;
  EXPECT_EQ(OfdPackage::CheckFileType(nullptr), 0);
}

TEST(OfdPackage_CheckFileType, TruncatedPackagesAreRefused) {
  const std::string ofd = testing_support::MinimalOfdPackage();
  for (size_t n : {size_t{4}, size_t{30}, ofd.size() / 2, ofd.size() - 1}) {
    EXPECT_EQ(Check(ofd.substr(0, n)), 0) << n;
  }
}

TEST(ZipArchive_Limits, OversizedEntryIsNotRead) {
  // Deflates to a few tens of kilobytes, inflates past the per-entry cap.
  const std::string bomb(ZipArchive::kMaxEntryBytes + 1, '\0');
  const std::string zip = BuildZip({{"big.bin", bomb}, {"small.txt", "ok"}});
  ASSERT_LT(zip.size(), 1u << 20);
  StreamReaderPtr reader(StreamReader::CreateMemoryStreamReader(zip));
  auto archive = ZipArchive::Open(reader.get());
  ASSERT_NE(archive, nullptr);
  std::string out;
  EXPECT_FALSE(archive->ReadNamed("big.bin", out));
  EXPECT_TRUE(archive->ReadNamed("SMALL.TXT", out, true));
  EXPECT_EQ(out, "ok");
  EXPECT_FALSE(archive->ReadNamed("SMALL.TXT", out, false));
  EXPECT_EQ(archive->Find("missing"), -1);
}

}  // namespace
}  // namespace host
