#include "support/seal_document.h"

#include <gtest/gtest.h>

#include "host/base/codec.h"
#include "support/zip_builder.h"

namespace testing_support {

std::string SolidPng(int width, int height, uint32_t argb) {
  auto dib = host::Dib::Create(width, height, host::kDibArgb32);
  dib->Fill(argb);
  std::string png;
  EXPECT_TRUE(host::EncodePng(*dib, png));
  return png;
}

SealDocument::SealDocument(const std::string& seal, const std::string& signedValue)
    : opened_(Open(BuildOfdPackage({
          {"Doc_0/Document.xml", OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}})},
          {"Doc_0/Pages/Page_0/Content.xml", OfdPageXml("")},
          {kSealFile + 1, seal}, {kSignedFile + 1, signedValue}}))) {
  EXPECT_TRUE(opened_.doc);
  if (opened_.doc) page_ = ParsedPage(*opened_.doc, 0);
  EXPECT_TRUE(page_);
}

std::unique_ptr<host::OfdMultiMedia> SealDocument::Media(const char* primary, const char* secondary) {
  auto media = std::make_unique<host::OfdMultiMedia>();
  media->type = "Seal";
  media->PrimaryLoc = primary;
  media->SecondaryLoc = secondary;
  media->ResourceContainer = opened_.doc.get();
  return media;
}

}  // namespace testing_support
