// Seal data to pictures: telling the kinds apart, decoding raster seals,
// rendering OFD seal packages (sizes, failures, what is drawn), and pictures
// with stamp text (the order of the adjustments on copies, the fresh device,
// the failure results).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "decode/ofd_seal_renderer.h"
#include "decode/seal_data_type.h"
#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "support/seal_document.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

unsigned char* Bytes(std::string& s) { return reinterpret_cast<unsigned char*>(s.data()); }

struct ParseResult {
  std::unique_ptr<Dib> dib;
  int flag;  // -1: left unchanged
  std::string printed;
};

// Parses twice, starting from false and from true, to tell a flag that was
// left alone from one that was set.
ParseResult Parse(unsigned char* data, unsigned int length) {
  bool fromFalse = false, fromTrue = true;
  ::testing::internal::CaptureStdout();
  std::unique_ptr<Dib> dib(ParseSealImage(data, length, 100, 100, 300, fromFalse));
  std::unique_ptr<Dib> again(ParseSealImage(data, length, 100, 100, 300, fromTrue));
  ParseResult r{std::move(dib), -1, ::testing::internal::GetCapturedStdout()};
  if (fromFalse == fromTrue) r.flag = fromFalse ? 1 : 0;
  return r;
}

// What comes back, whether the flag is set and to what, and what is printed
// (the unknown-kind line once a parse); the raster check of the same bytes.
TEST(ParseSealImage_Kinds, ResultFlagMessageAndRasterCheck) {
  const std::string png = testing_support::SolidPng(7, 5, 0x80FF0000);
  const std::string bmp = "BM";  // a bitmap by its magic, though it will not decode
  const std::string unknown = "Found unknown seal image type\n";
  const struct { const char* name; std::string bytes; bool nullData; int length;  // -1: the bytes' own
                 bool decoded; int flag; std::string printed; } cases[] = {
      {"null data", "", true, 10, false, -1, ""},
      {"no length", png, false, 0, false, -1, ""},
      {"raster", png, false, -1, true, 0, ""},
      {"corrupt raster", png.substr(0, png.size() / 2), false, -1, false, 0, ""},
      {"bitmap magic", bmp, false, -1, false, 0, ""},
      {"junk", "neither a picture nor a package", false, -1, false, -1, unknown + unknown},
      {"zip that is no package", testing_support::BuildZip({{"hello.txt", "hi"}}), false, -1, false, -1,
       unknown + unknown},
      // A package with OFD.xml (root OFD, with or without a prefix) but no document cannot render.
      {"package without a document", testing_support::MinimalOfdPackage(), false, -1, false, 1, ""},
      {"unprefixed root", testing_support::BuildZip({{"OFD.xml", "<OFD/>"}}), false, -1, false, 1, ""},
      {"other root", testing_support::BuildZip({{"OFD.xml", "<ofd:Document/>"}}), false, -1, false, -1,
       unknown + unknown},
  };
  for (auto c : cases) {
    SCOPED_TRACE(c.name);
    const int length = c.length < 0 ? static_cast<int>(c.bytes.size()) : c.length;
    ParseResult r = Parse(c.nullData ? nullptr : Bytes(c.bytes), static_cast<unsigned>(length));
    EXPECT_EQ(std::make_tuple(r.dib != nullptr, r.flag, r.printed), std::make_tuple(c.decoded, c.flag, c.printed));
    // Only what decodes passes the raster check.
    EXPECT_EQ(CheckRasterImage(c.nullData ? nullptr : Bytes(c.bytes), length), c.decoded ? 1 : 0);
    if (c.decoded) {
      EXPECT_EQ(std::make_tuple(r.dib->GetWidth(), r.dib->GetHeight(), r.dib->GetPixel({3, 2})),
                std::make_tuple(7, 5, 0x80FF0000u));  // its own size, not the request's
    }
  }
}

// Channels chosen so that a radius-1 blur shows: 100 -> 99, 7 -> 6, 1 and
// 255 stay.
constexpr uint32_t kSeal = 0xFF640701;

// The seal picture with stamp text, cut to `length` bytes when not zero.
std::unique_ptr<Dib> RenderStamped(RenderSealParam::ImageParam image, unsigned length = 0) {
  std::string png = testing_support::SolidPng(9, 9, kSeal);
  RenderSealParam::TextParam text;  // no text: the stamp draws nothing
  text.fontName = U"WenQuanYi Zen Hei";
  const RenderSealParam param{.image = &image, .text = &text};
  if (length == 0) length = static_cast<unsigned>(png.size());
  return std::unique_ptr<Dib>(RenderSealImageWithStamp(Bytes(png), length, param));
}

struct StampCase {
  const char* name;
  int crossMark, colorMode, blur, blurRadius;
  uint32_t corner, middle;  // pixel (0, 0): on the cross when there is one; pixel (4, 1): off it
};

class SealWithStamp : public ::testing::TestWithParam<StampCase> {
 protected:
  void SetUp() override { SetDeviceCreator(host::BitmapDeviceCreator, nullptr); }
  void TearDown() override { SetDeviceCreator(nullptr, nullptr); }
};

TEST_P(SealWithStamp, AdjustsCrossThenColourThenBlur) {
  const StampCase& c = GetParam();
  const std::unique_ptr<Dib> dib =
      RenderStamped({.crossMark = c.crossMark, .blur = c.blur, .blurRadius = c.blurRadius, .colorMode = c.colorMode});
  ASSERT_TRUE(dib);
  EXPECT_EQ(std::make_tuple(dib->GetWidth(), dib->GetHeight(), dib->GetPixel({0, 0}), dib->GetPixel({4, 1})),
            std::make_tuple(9, 9, c.corner, c.middle));
}

constexpr uint32_t kGreySeal = 0xFF262626;  // (11*100 + 16*7 + 5*1) >> 5 = 38

// A uniform level after a radius-1 box blur: three taps of 1/3 over rows,
// then over columns, truncated.
constexpr uint32_t BlurredLevel(uint32_t v) {
  const double t = 1.0 / 3;
  const double rows = v * t + v * t + v * t;
  return static_cast<uint32_t>(rows * t + rows * t + rows * t);
}
constexpr uint32_t kBlurredGrey = 0xFF000000u | BlurredLevel(38) * 0x010101u;

INSTANTIATE_TEST_SUITE_P(
    Adjustments, SealWithStamp,
    ::testing::Values(StampCase{"Plain", 0, 0, 0, 0, kSeal, kSeal},
                      StampCase{"Cross", 1, 0, 0, 0, 0xFFFF0000, kSeal},
                      StampCase{"CrossGrey", 1, 1, 0, 0, 0xFF575757, kGreySeal},
                      StampCase{"CrossBlack", 1, 2, 0, 0, 0xFF000000, 0xFF000000},
                      StampCase{"OtherColourModeKeepsColours", 0, 3, 0, 0, kSeal, kSeal},
                      StampCase{"BlurRadiusOne", 0, 0, 1, 1, 0xFF630601, 0xFF630601},
                      StampCase{"BlurRadiusZero", 0, 0, 1, 0, kSeal, kSeal},
                      StampCase{"RadiusWithoutFlag", 0, 0, 0, 1, kSeal, kSeal},
                      StampCase{"GreyThenBlur", 0, 1, 1, 1, kBlurredGrey, kBlurredGrey}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SealWithStampFailures, NullWithoutCreatorOrDecodableData) {
  const auto render = [](DeviceCreator creator, unsigned length) {
    SetDeviceCreator(creator, nullptr);
    const bool made = RenderStamped({}, length) != nullptr;
    SetDeviceCreator(nullptr, nullptr);
    return made;
  };
  EXPECT_FALSE(render(nullptr, 0) || render(host::BitmapDeviceCreator, 20) ||  // truncated picture
               render([](int, int, DibFormat, uint32_t, void*) -> Device* { return nullptr; }, 0));
}

using testing_support::BuildOfdPackage;
using testing_support::OfdDocumentXml;
using testing_support::OfdPageXml;

// A filled rectangle over the whole page in the given colour ("r g b").
std::string FillPage(const char* rgb) {
  return std::string("<ofd:PathObject ID=\"2\" Boundary=\"0 0 40 30\" Fill=\"true\" "
                     "Stroke=\"false\"><ofd:FillColor Value=\"") +
         rgb + "\"/><ofd:AbbreviatedData>M 0 0 L 40 0 L 40 30 L 0 30 C</ofd:AbbreviatedData>"
               "</ofd:PathObject>";
}

// A 40 x 30 mm seal package of two pages, page 0 red, page 1 blue: only
// page 0 is drawn.
std::string SealPackage() {
  return BuildOfdPackage(
      {{"Doc_0/Pages/Page_0/Content.xml", OfdPageXml(FillPage("255 0 0"))},
       {"Doc_0/Pages/Page_1/Content.xml", OfdPageXml(FillPage("0 0 255"))},
       {"Doc_0/Document.xml",
        OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}, {3, "Pages/Page_1/Content.xml"}},
                       "<ofd:PageArea><ofd:PhysicalBox>0 0 40 30</ofd:PhysicalBox>"
                       "</ofd:PageArea><ofd:MaxUnitID>10</ofd:MaxUnitID>")}});
}

// The devices asked for: size, format, background and user data.
using Request = std::tuple<int, int, int, uint32_t, void*>;
std::vector<Request> gRequests;

host::Device* RecordingCreator(int w, int h, host::DibFormat f, uint32_t bg, void* user) {
  gRequests.emplace_back(w, h, f, bg, user);
  return host::BitmapDeviceCreator(w, h, f, bg, user);
}

class OfdSealRendererTest : public ::testing::Test {
 protected:
  void SetUp() override {
    gRequests.clear();
    SetDeviceCreator(RecordingCreator, &token_);
  }
  void TearDown() override { SetDeviceCreator(nullptr, nullptr); }
  std::unique_ptr<Dib> Render(const std::string& bytes, int w, int h, int dpi) {
    return std::unique_ptr<Dib>(RenderOfdSealImage(reinterpret_cast<const unsigned char*>(bytes.data()),
                                                   static_cast<int>(bytes.size()), w, h, dpi));
  }
  int token_ = 0;
};

TEST_F(OfdSealRendererTest, Sizes) {
  const std::string ofd = SealPackage();
  const struct { int w, h, dpi; bool asked; int askedW, askedH; bool result; } cases[] = {
      {0, 0, 300, true, 472, 354, true},     // 40 x 30 mm at 300 dpi
      {-1, -1, 300, true, 472, 354, true},   // negative sizes ignored with a resolution
      {100, 50, 0, true, 100, 50, true},     // pixel size as given
      {-1, 100, 0, false, 0, 0, false},      // refused before anything is made
      {100, -1, -3, false, 0, 0, false},
      {0, 0, 0, true, 0, 0, false},          // the creator decides: no 0 x 0 device
  };
  for (const auto& c : cases) {
    gRequests.clear();
    auto dib = Render(ofd, c.w, c.h, c.dpi);
    EXPECT_EQ(dib != nullptr, c.result) << c.w << "x" << c.h << "@" << c.dpi;
    ASSERT_EQ(gRequests.size(), c.asked ? 1u : 0u);
    if (!c.asked) continue;
    EXPECT_EQ(gRequests[0], Request(c.askedW, c.askedH, host::kDibArgb32, 0xFFFFFFu, &token_));
    EXPECT_TRUE(!dib || (dib->GetWidth() == c.askedW && dib->GetPixel({c.askedW / 2, c.askedH / 2}) == 0xFFFF0000u));
  }
}

TEST_F(OfdSealRendererTest, PackagesThatDoNotLoad) {
  const std::string onePage = OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}});
  // No pages, a missing page, a broken page.
  for (const std::string& bytes : {BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({})}}),
                                   BuildOfdPackage({{"Doc_0/Document.xml", onePage}}),
                                   BuildOfdPackage({{"Doc_0/Document.xml", onePage},
                                                    {"Doc_0/Pages/Page_0/Content.xml", "<ofd:Page><ofd:Content>"}})}) {
    EXPECT_TRUE(!Render(bytes, 10, 10, 0) && gRequests.empty());
  }
  SetDeviceCreator(nullptr, nullptr);
  EXPECT_FALSE(Render(SealPackage(), 10, 10, 0) || LoadSealDocument(nullptr, 1));
}

}  // namespace
}  // namespace tarvik
