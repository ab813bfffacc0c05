// Replays every fuzz corpus (seeds and minimised crash inputs) through the
// job its fuzz target runs, so that a fixed crash stays fixed: each input is
// handled without breaking the job's checks and without printing. One seed
// of each corpus must get through to a result, so the replay cannot quietly
// turn into a test of the first check that refuses input.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

#include "fuzz/ofd_document_job.h"
#include "fuzz/parse_seal_image_job.h"
#include "fuzz/path_data_job.h"
#include "fuzz/seal_text_job.h"
#include "fuzz/ses_job.h"
#include "fuzz/verify_job.h"
#include "support/sample_files.h"

namespace {

namespace fs = std::filesystem;

struct Corpus {
  const char* folder;  // under fuzz/corpus/
  int (*job)(std::string);
  const char* through;  // a seed that must give a result
  const char* mayPrint = "";
};

const Corpus kCorpora[] = {
    {"parse_seal_image", fuzzjob::ParseSealImage, "rgba.png", "Found unknown seal image type\n"},
    {"ofd_document", fuzzjob::DrawOfdDocument, "one_page.ofd"},
    {"path_data", fuzzjob::ParsePathData, "curves"},
    {"ses", fuzzjob::ParseSes, "signature_v4.der"},
    {"verify", fuzzjob::Verify, "signed_v4_ofdseal"},
    {"seal_text", fuzzjob::DrawSealText, "ring"},
};

struct Input {
  const Corpus* corpus;
  fs::path file;
};

std::vector<Input> AllInputs() {
  std::vector<Input> inputs;
  for (const Corpus& c : kCorpora) {
    const fs::path dir = fs::path(TARVIK_SOURCE_DIR) / "fuzz/corpus" / c.folder;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(dir, ec))
      if (entry.is_regular_file()) inputs.push_back({&c, entry.path()});
    if (ec) inputs.push_back({&c, dir});  // fails: a corpus folder is missing
  }
  return inputs;
}

class FuzzCorpus : public ::testing::TestWithParam<Input> {};

TEST_P(FuzzCorpus, InputIsHandledQuietly) {
  const Input& in = GetParam();
  ASSERT_TRUE(fs::is_regular_file(in.file)) << in.file;
  std::string bytes = testing_support::ReadFileBytes(in.file);
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  const int result = in.corpus->job(std::move(bytes));
  const std::string printed =
      ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();
  EXPECT_GE(result, 0);
  EXPECT_TRUE(printed.empty() || printed == in.corpus->mayPrint) << printed;
  EXPECT_TRUE(in.file.filename() != in.corpus->through || result > 0) << "this seed must get through";
}

INSTANTIATE_TEST_SUITE_P(Corpora, FuzzCorpus, ::testing::ValuesIn(AllInputs()), [](const auto& info) {
  std::string name = std::string(info.param.corpus->folder) + "_" + info.param.file.filename().string();
  for (char& ch : name) ch = std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
  return name;
});

}  // namespace
