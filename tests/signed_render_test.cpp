// The bundled signed samples drawn with their seals, compared with frozen
// pictures: raster and OFD seals, version 1 and 4, and the seal adjustments.
#include <gtest/gtest.h>

#include <string>

#include "host/base/bitmap_device.h"
#include "host/oes/ses_plugin.h"
#include "support/fonts.h"
#include "support/render_compare.h"
#include "support/signed_page.h"
#include "tarvik/tarvik.h"

namespace {

struct SignedCase {
  const char* name;  // reference picture
  const char* file;  // under testdata/
  int crossMark;
  int colorMode;
  bool withText;
};

class SignedRender : public ::testing::TestWithParam<SignedCase> {
 protected:
  void SetUp() override { tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr); }
  void TearDown() override { tarvik::SetDeviceCreator(nullptr, nullptr); }
};

TEST_P(SignedRender, MatchesReference) {
  const SignedCase& c = GetParam();
  if (!testing_support::HasReferenceCjkFont()) GTEST_SKIP() << "WenQuanYi Zen Hei is not installed";
  TARVIK_NEED_FONTS("AR PL UMing CN");  // the pages' text
  testing_support::SignedDocument doc;
  ASSERT_TRUE(doc.Open(std::string(TARVIK_SOURCE_DIR) + "/testdata/" + c.file));
  tarvik::Tarvik tarvik(&doc.document);
  host::SesPlugin plugin;
  tarvik::RenderSealParam::ImageParam image;
  image.crossMark = c.crossMark;
  image.colorMode = c.colorMode;
  tarvik::RenderSealParam::TextParam text;
  text.fontSize = 9;
  text.fontName = U"WenQuanYi Zen Hei";
  text.text = host::WideString::FromUtf8("已验证");
  text.verticalAlign = 1;
  text.horizontalAlign = 2;
  text.outside = 1;
  tarvik::RenderSealParam param;
  param.image = &image;
  param.text = c.withText ? &text : nullptr;
  std::unique_ptr<host::Dib> page =
      testing_support::RenderSignedPage(doc, tarvik, plugin, param, 0, 50);
  ASSERT_TRUE(page);
  EXPECT_TRUE(testing_support::CompareWithReference(*page, c.name, 24));
}

INSTANTIATE_TEST_SUITE_P(
    Samples, SignedRender,
    ::testing::Values(SignedCase{"signed_v4_png", "signed_v4_png.ofd", 0, 0, false},
                      SignedCase{"signed_v1_png", "signed_v1_png.ofd", 0, 0, false},
                      SignedCase{"signed_v4_ofdseal", "signed_v4_ofdseal.ofd", 0, 0, false},
                      SignedCase{"signed_cross_grey_text", "signed_v4_png.ofd", 1, 1, true},
                      SignedCase{"signed_ofdseal_black", "signed_v4_ofdseal.ofd", 0, 2, false}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
