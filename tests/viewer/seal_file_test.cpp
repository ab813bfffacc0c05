// Seal bytes of every kind decoded by one call, and digests.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/sample_files.h"
#include "tarvik/viewer.h"

namespace {

using tarvik::viewer::SealFileKind;
using tarvik::viewer::Status;
using testing_support::ReadFileBytes;
using testing_support::SamplePath;

std::string Entry(const char* sample, const std::string& name) {
  return testing_support::EntryOf(testing_support::ReadZip(ReadFileBytes(SamplePath(sample))), name);
}

TEST(DecodeSeal, EveryKindOfSealBytes) {
  // A width of 0: any.
  const struct { std::string bytes; SealFileKind kind; int width; } cases[] = {
      {ReadFileBytes(SamplePath("sample_seal.png")), SealFileKind::kRaster, 0},
      {ReadFileBytes(SamplePath("sample_seal.ofd")), SealFileKind::kOfd, 472},  // 40 mm at 300 dpi
      {Entry("signed_v4_png.ofd", "Doc_0/Signs/Sign_0/Seal.esl"), SealFileKind::kSeal, 0},
      {Entry("signed_v1_png.ofd", "Doc_0/Signs/Sign_0/SignedValue.dat"), SealFileKind::kSignedValue, 0},
  };
  for (const auto& c : cases) {
    ASSERT_FALSE(c.bytes.empty());
    tarvik::viewer::Error error;
    SealFileKind kind = SealFileKind::kUnknown;
    const auto dib = tarvik::viewer::DecodeSeal(c.bytes.data(), c.bytes.size(), {}, &error, &kind);
    ASSERT_TRUE(dib) << error.message;
    EXPECT_EQ(std::make_pair(kind, c.width ? dib->GetWidth() : 0), std::make_pair(c.kind, c.width));

    // Adjusted: a 32-bit copy of the same size.
    tarvik::RenderSealParam::ImageParam image{.crossMark = 1};
    const auto crossed = tarvik::viewer::DecodeSeal(c.bytes.data(), c.bytes.size(), {.image = &image}, &error);
    ASSERT_TRUE(crossed) << error.message;
    EXPECT_EQ(crossed->GetWidth(), dib->GetWidth());
  }
}

TEST(DecodeSeal, FailuresSayWhy) {
  struct Case { std::string bytes; Status status; const char* message; } cases[] = {
      {"", Status::kBadArgument, "no seal bytes"},
      {"garbage", Status::kBadSeal, "neither a picture"},
      {std::string("\x89PNG\r\n\x1a\n", 8) + "broken", Status::kBadSeal, "damaged"},
  };
  for (const Case& c : cases) {
    tarvik::viewer::Error error;
    EXPECT_FALSE(tarvik::viewer::DecodeSeal(c.bytes.data(), c.bytes.size(), {}, &error));
    EXPECT_EQ(error.status, c.status);
    EXPECT_NE(error.message.find(c.message), std::string::npos) << error.message;
  }
}

}  // namespace
