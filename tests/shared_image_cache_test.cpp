// Pictures kept across renders: bounded in bytes, least recently used first
// out, and a document's pages drawing a picture decoded once.
#include <gtest/gtest.h>

#include "host/base/dib.h"
#include "host/base/shared_image_cache.h"
#include "host/render/ofd_page_render.h"
#include "host/base/device.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

#include <fstream>
#include <iterator>

namespace {

std::shared_ptr<const host::Dib> Picture(int side) {
  return host::Dib::Create(side, side, host::kDibArgb32);
}

TEST(SharedImageCache, KeepsTheRecentlyUsedWithinItsBound) {
  // 10x10 ARGB is 400 bytes: room for two.
  host::SharedImageCache cache(800);
  const auto a = Picture(10), b = Picture(10), c = Picture(10);
  cache.Store("a", a);
  cache.Store("b", b);
  EXPECT_EQ(cache.Find("a"), a);  // a is now the most recent
  cache.Store("c", c);            // b goes
  EXPECT_EQ(cache.Find("b"), nullptr);
  EXPECT_EQ(cache.Find("a"), a);
  EXPECT_EQ(cache.Find("c"), c);
  EXPECT_EQ(cache.GetByteCount(), 800u);
  cache.Store("a", Picture(20));  // too large alone: dropped, a forgotten
  EXPECT_EQ(cache.Find("a"), nullptr);
  EXPECT_EQ(cache.GetCount(), 1u);
}

TEST(SharedImageCache, PagesOfADocumentShareDecodedPictures) {
  std::ifstream in(std::string(TARVIK_SOURCE_DIR) + "/testdata/sample_seal.png", std::ios::binary);
  const std::string png((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  using namespace testing_support;
  Opened o = Open(BuildOfdPackage({
      {"Doc_0/Document.xml", OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}},
                                            "<ofd:PublicRes>PublicRes.xml</ofd:PublicRes>")},
      {"Doc_0/PublicRes.xml",
       OfdResXml("<ofd:MultiMedias><ofd:MultiMedia ID=\"10\" Type=\"Image\">"
                 "<ofd:MediaFile>img.png</ofd:MediaFile></ofd:MultiMedia></ofd:MultiMedias>",
                 "Res")},
      {"Doc_0/Res/img.png", png},
      {"Doc_0/Pages/Page_0/Content.xml",
       OfdPageXml("<ofd:ImageObject ID=\"20\" ResourceID=\"10\" Boundary=\"0 0 50 50\" "
                  "CTM=\"50 0 0 50 0 0\"/>")},
  }));
  ASSERT_TRUE(o.doc);
  for (int round = 0; round < 2; ++round) {
    std::unique_ptr<host::OfdPage> page = testing_support::ParsedPage(*o.doc, 0);
    ASSERT_TRUE(page);
    auto device = host::CreateBitmapDevice(60, 80, host::kDibArgb32, 0xFFFFFFFF);
    host::RenderPageContent(page.get(), device.get(), page->GetDisplayMatrix(0, 0, 60, 80, 0));
  }
  // One picture, drawn by two renders: decoded once and kept.
  EXPECT_EQ(o.doc->GetImageCache().GetCount(), 1u);
}

}  // namespace
