// Replays the fuzz corpora (seeds and minimised crash inputs) through the
// entry points they were found with, so that a fixed crash stays fixed.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "fuzz/ofd_document_job.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(FuzzCorpus_ParseSealImage, EveryInputIsHandled) {
  const fs::path dir = fs::path(TARVIK_SOURCE_DIR) / "fuzz" / "corpus" / "parse_seal_image";
  int count = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    std::string bytes = ReadAll(entry.path());
    bool isOfd = false;
    ::testing::internal::CaptureStdout();
    std::unique_ptr<Dib> dib(ParseSealImage(reinterpret_cast<unsigned char*>(bytes.data()),
                                            static_cast<unsigned>(bytes.size()), 64, 64, 0, isOfd));
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(printed.empty() || printed == "Found unknown seal image type\n")
        << entry.path();
    ++count;
  }
  EXPECT_GT(count, 0) << "no corpus in " << dir;
}

// Whole packages, hostile ones among them: each is opened and drawn to the
// end without a crash or a hang (seeds made with tests/support/hostile_documents
// and zip_builder, and a seal picture package).
TEST(FuzzCorpus_OfdDocument, EveryPackageIsHandled) {
  const fs::path dir = fs::path(TARVIK_SOURCE_DIR) / "fuzz" / "corpus" / "ofd_document";
  int count = 0, drawn = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    drawn += fuzzjob::DrawOfdDocument(ReadAll(entry.path())) > 0;
    ++count;
  }
  EXPECT_GT(count, 0) << "no corpus in " << dir;
  EXPECT_GT(drawn, 0) << "no seed drew a page";
}

}  // namespace
}  // namespace tarvik
