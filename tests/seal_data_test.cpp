// Telling seal data kinds apart and decoding raster seals.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "decode/seal_data_type.h"
#include "support/seal_document.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

std::string SmallPng(int width, int height) { return testing_support::SolidPng(width, height, 0x80FF0000); }

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

// What comes back, whether the flag is set and to what, and what is printed
// (the unknown-kind line once a parse).
TEST(ParseSealImage_Kinds, ResultFlagAndMessage) {
  const std::string png = SmallPng(7, 5);
  const std::string unknown = "Found unknown seal image type\n";
  const struct {
    const char* name;
    std::string bytes;
    bool nullData;
    int length;  // -1: the bytes' own
    bool decoded;
    int flag;
    std::string printed;
  } cases[] = {
      {"null data", "", true, 10, false, -1, ""},
      {"no length", png, false, 0, false, -1, ""},
      {"raster", png, false, -1, true, 0, ""},
      {"corrupt raster", png.substr(0, png.size() / 2), false, -1, false, 0, ""},
      {"junk", "neither a picture nor a package", false, -1, false, -1, unknown + unknown},
      {"zip that is no package", testing_support::BuildZip({{"hello.txt", "hi"}}), false, -1, false, -1,
       unknown + unknown},
      // A package with OFD.xml but no document cannot render.
      {"package without a document", testing_support::MinimalOfdPackage(), false, -1, false, 1, ""},
  };
  for (auto c : cases) {
    SCOPED_TRACE(c.name);
    const int length = c.length < 0 ? static_cast<int>(c.bytes.size()) : c.length;
    ParseResult r = Parse(c.nullData ? nullptr : Bytes(c.bytes), static_cast<unsigned>(length));
    EXPECT_EQ(r.dib != nullptr, c.decoded);
    EXPECT_EQ(r.flag, c.flag);
    EXPECT_EQ(r.printed, c.printed);
    if (c.decoded) {
      EXPECT_EQ(std::make_tuple(r.dib->GetWidth(), r.dib->GetHeight(), r.dib->GetPixel({3, 2})),
                std::make_tuple(7, 5, 0x80FF0000u));  // its own size, not the request's
    }
  }
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
