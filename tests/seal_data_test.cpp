// Telling seal data kinds apart and decoding raster seals.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "decode/seal_data_type.h"
#include "host/base/codec.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

std::string SmallPng(int width, int height) {
  auto dib = host::Dib::Create(width, height, host::kDibArgb32);
  dib->Fill(0x80FF0000);
  std::string png;
  EXPECT_TRUE(host::EncodePng(*dib, png));
  return png;
}

unsigned char* Bytes(std::string& s) { return reinterpret_cast<unsigned char*>(s.data()); }

struct ParseResult {
  std::unique_ptr<Dib> dib;
  int flag;  // -1: left unchanged
  std::string printed;
};

// Parses twice, starting from false and from true, to tell a flag that was
// left alone from one that was set.
ParseResult Parse(unsigned char* data, unsigned int length) {
  bool fromFalse = false;
  bool fromTrue = true;
  ::testing::internal::CaptureStdout();
  std::unique_ptr<Dib> dib(ParseSealImage(data, length, 100, 100, 300, fromFalse));
  std::unique_ptr<Dib> again(ParseSealImage(data, length, 100, 100, 300, fromTrue));
  ParseResult r{std::move(dib), -1, ::testing::internal::GetCapturedStdout()};
  if (fromFalse == fromTrue) r.flag = fromFalse ? 1 : 0;
  return r;
}

TEST(ParseSealImage_Empty, NullWithoutPrintingOrFlag) {
  std::string png = SmallPng(2, 2);
  for (auto [data, length] : {std::pair<unsigned char*, unsigned>{nullptr, 10},
                              {Bytes(png), 0}, {nullptr, 0}}) {
    ParseResult r = Parse(data, length);
    EXPECT_EQ(r.dib, nullptr);
    EXPECT_EQ(r.flag, -1);
    EXPECT_EQ(r.printed, "");
  }
}

TEST(ParseSealImage_Unknown, PrintsOnceAndLeavesFlag) {
  std::string junk = "this is neither a picture nor a package";
  bool isOfd = true;
  ::testing::internal::CaptureStdout();
  std::unique_ptr<Dib> dib(ParseSealImage(Bytes(junk), junk.size(), 0, 0, 300, isOfd));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Found unknown seal image type\n");
  EXPECT_EQ(dib, nullptr);
  EXPECT_TRUE(isOfd);

  // A zip that is not an OFD package is unknown too.
  std::string zip = testing_support::BuildZip({{"hello.txt", "hi"}});
  ParseResult r = Parse(Bytes(zip), zip.size());
  EXPECT_EQ(r.dib, nullptr);
  EXPECT_EQ(r.flag, -1);
  EXPECT_EQ(r.printed, "Found unknown seal image type\nFound unknown seal image type\n");
}

TEST(ParseSealImage_Raster, KeepsOwnSizeAndClearsFlag) {
  std::string png = SmallPng(7, 5);
  ParseResult r = Parse(Bytes(png), png.size());
  ASSERT_NE(r.dib, nullptr);
  EXPECT_EQ(r.dib->GetWidth(), 7);
  EXPECT_EQ(r.dib->GetHeight(), 5);
  EXPECT_EQ(r.dib->GetPixel({3, 2}), 0x80FF0000u);
  EXPECT_EQ(r.flag, 0);
  EXPECT_EQ(r.printed, "");
}

TEST(ParseSealImage_Raster, CorruptPictureIsNullButKindKnown) {
  std::string png = SmallPng(16, 16);
  png.resize(png.size() / 2);
  ParseResult r = Parse(Bytes(png), png.size());
  EXPECT_EQ(r.dib, nullptr);
  EXPECT_EQ(r.flag, 0);  // the kind was known: the flag says raster
  EXPECT_EQ(r.printed, "");
}

TEST(ParseSealImage_Ofd, FailedRenderingStillSetsFlag) {
  // A package with OFD.xml but no document cannot render.
  std::string ofd = testing_support::MinimalOfdPackage();
  ParseResult r = Parse(Bytes(ofd), ofd.size());
  EXPECT_EQ(r.dib, nullptr);
  EXPECT_EQ(r.flag, 1);
  EXPECT_EQ(r.printed, "");
}

TEST(DetectSealDataType_Kinds, ImageBeforeOfdAndCaseOfRoot) {
  struct Case {
    std::string bytes;
    bool known;
    const char* kind;
  };
  const Case cases[] = {
      {SmallPng(1, 1), true, "image"},
      {testing_support::MinimalOfdPackage(), true, "ofd"},
      {testing_support::BuildZip({{"OFD.xml", "<OFD/>"}}), true, "ofd"},  // no prefix
      {testing_support::BuildZip({{"OFD.xml", "<ofd:Document/>"}}), false, "keep"},
      {testing_support::BuildZip({{"OFD.xml", "<ofd:OFD"}}), false, "keep"},  // broken XML
      {"BM", true, "image"},  // recognised by its magic even if it will not decode
  };
  for (const Case& c : cases) {
    host::ByteString kind("keep");
    ::testing::internal::CaptureStdout();
    const bool known = DetectSealDataType(reinterpret_cast<const unsigned char*>(c.bytes.data()),
                                          c.bytes.size(), kind);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(known, c.known) << c.kind;
    EXPECT_EQ(kind.str(), c.kind);
    EXPECT_EQ(printed, c.known ? "" : "Found unknown seal image type\n");
  }
}

TEST(CheckRasterImage_Result, OneOnlyForDecodablePictures) {
  std::string png = SmallPng(3, 3);
  std::string truncated = png.substr(0, png.size() - 20);
  std::string ofd = testing_support::MinimalOfdPackage();
  EXPECT_EQ(CheckRasterImage(Bytes(png), png.size()), 1);
  EXPECT_EQ(CheckRasterImage(Bytes(truncated), truncated.size()), 0);
  EXPECT_EQ(CheckRasterImage(Bytes(ofd), ofd.size()), 0);
  EXPECT_EQ(CheckRasterImage(nullptr, 0), 0);
  EXPECT_EQ(CheckRasterImage(nullptr, 12), 0);
}

}  // namespace
}  // namespace tarvik
