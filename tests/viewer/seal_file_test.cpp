// Seal bytes of every kind decoded by one call, and digests.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "support/zip_builder.h"
#include "tarvik/viewer.h"

namespace {

using tarvik::viewer::SealFileKind;
using tarvik::viewer::Status;

std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string Entry(const char* sample, const std::string& name) {
  for (const auto& [entry, content] :
       testing_support::ReadZip(ReadBytes(std::string(TARVIK_SOURCE_DIR) + "/testdata/" + sample))) {
    if (entry == name) return content;
  }
  return {};
}

TEST(DecodeSeal, EveryKindOfSealBytes) {
  const std::string dir = std::string(TARVIK_SOURCE_DIR) + "/testdata/";
  struct Case {
    std::string bytes;
    SealFileKind kind;
    int width;  // 0: any
  } cases[] = {
      {ReadBytes(dir + "sample_seal.png"), SealFileKind::kRaster, 0},
      {ReadBytes(dir + "sample_seal.ofd"), SealFileKind::kOfd, 472},  // 40 mm at 300 dpi
      {Entry("signed_v4_png.ofd", "Doc_0/Signs/Sign_0/Seal.esl"), SealFileKind::kSeal, 0},
      {Entry("signed_v1_png.ofd", "Doc_0/Signs/Sign_0/SignedValue.dat"), SealFileKind::kSignedValue, 0},
  };
  for (const Case& c : cases) {
    ASSERT_FALSE(c.bytes.empty());
    tarvik::viewer::Error error;
    SealFileKind kind = SealFileKind::kUnknown;
    const auto dib = tarvik::viewer::DecodeSeal(c.bytes.data(), c.bytes.size(), {}, &error, &kind);
    ASSERT_TRUE(dib) << error.message;
    EXPECT_EQ(kind, c.kind);
    if (c.width) {
      EXPECT_EQ(dib->GetWidth(), c.width);
    }

    // Adjusted: a 32-bit copy of the same size.
    tarvik::RenderSealParam::ImageParam image;
    image.crossMark = 1;
    tarvik::viewer::SealDecodeOptions options;
    options.image = &image;
    const auto crossed = tarvik::viewer::DecodeSeal(c.bytes.data(), c.bytes.size(), options, &error);
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
