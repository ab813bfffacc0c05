// Seal pictures that are OFD packages: sizes, failures, and what is drawn.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "decode/ofd_seal_renderer.h"
#include "host/base/device.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

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

// A 40 x 30 mm seal package; page 0 red, page 1 (when asked) blue.
std::string SealPackage(int pages = 1) {
  std::vector<std::pair<int, std::string>> list = {{1, "Pages/Page_0/Content.xml"}};
  testing_support::ZipEntries files = {
      {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml(FillPage("255 0 0"))}};
  if (pages == 2) {
    list.push_back({3, "Pages/Page_1/Content.xml"});
    files.push_back({"Doc_0/Pages/Page_1/Content.xml", OfdPageXml(FillPage("0 0 255"))});
  }
  files.push_back(
      {"Doc_0/Document.xml",
       OfdDocumentXml(list, "<ofd:PageArea><ofd:PhysicalBox>0 0 40 30</ofd:PhysicalBox>"
                            "</ofd:PageArea><ofd:MaxUnitID>10</ofd:MaxUnitID>")});
  return BuildOfdPackage(files);
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
    return std::unique_ptr<Dib>(RenderOfdSealImage(
        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()), w,
        h, dpi));
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
    if (dib) {
      EXPECT_EQ(dib->GetWidth(), c.askedW);
      EXPECT_EQ(dib->GetPixel({c.askedW / 2, c.askedH / 2}), 0xFFFF0000u);
    }
  }
}

TEST_F(OfdSealRendererTest, PackagesThatDoNotLoad) {
  const std::string noPages = BuildOfdPackage({{"Doc_0/Document.xml", OfdDocumentXml({})}});
  const std::string missingPage = BuildOfdPackage(
      {{"Doc_0/Document.xml", OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}})}});
  const std::string brokenPage = BuildOfdPackage(
      {{"Doc_0/Document.xml", OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}})},
       {"Doc_0/Pages/Page_0/Content.xml", "<ofd:Page><ofd:Content>"}});
  for (const std::string* bytes : {&noPages, &missingPage, &brokenPage}) {
    EXPECT_EQ(Render(*bytes, 10, 10, 0), nullptr);
    EXPECT_TRUE(gRequests.empty());
  }
  const std::string ofd = SealPackage();
  SetDeviceCreator(nullptr, nullptr);
  EXPECT_EQ(Render(ofd, 10, 10, 0), nullptr);
  EXPECT_EQ(LoadSealDocument(nullptr, 1), nullptr);
}

// Through the seal-data entry, with a second (blue) page that is never drawn.
TEST_F(OfdSealRendererTest, ParseSealImageRendersPageZeroOfOfdData) {
  std::string ofd = SealPackage(2);
  bool isOfd = false;
  std::unique_ptr<Dib> dib(ParseSealImage(reinterpret_cast<unsigned char*>(ofd.data()),
                                          static_cast<unsigned>(ofd.size()), 1, 1, 150, isOfd));
  ASSERT_NE(dib, nullptr);
  EXPECT_TRUE(isOfd);
  EXPECT_EQ(std::make_pair(dib->GetWidth(), dib->GetHeight()), std::make_pair(236, 177));  // 40 mm at 150 dpi = 236.2
  EXPECT_EQ(dib->GetPixel({118, 88}), 0xFFFF0000u);
  EXPECT_EQ(gRequests.size(), 1u);
}

}  // namespace
}  // namespace tarvik
