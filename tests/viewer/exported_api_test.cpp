// A program linked against the shared seal library, as a host links it:
// every exported class constructed and every exported function called once
// (a missing export, vtable or typeinfo fails the link or this run).
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>

#include "host/base/binary_buf.h"
#include "host/base/device.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "support/sample_files.h"
#include "tarvik/tarvik.h"

namespace {

TEST(ExportedApi, EveryEntryPointLinksAndRuns) {
  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  const std::string path = testing_support::SamplePath("signed_v4_png.ofd");
  host::OfdPackage package;
  ASSERT_EQ(package.LoadFromStream(host::StreamReader::CreateFileStreamReader(path.c_str()), 1), 0);
  host::OfdDocument document;
  ASSERT_EQ(document.LoadDocument(&package, package.GetDocument(0), -1), 0);
  std::unique_ptr<host::OfdPage> page(document.LoadPage(0, 1));
  ASSERT_TRUE(page && page->ParseContents());
  ASSERT_EQ(host::AttachSignatureSeals(page.get()), 1);
  host::OfdAnnotationSeal* seal = page->GetSealAnnotations()[0];
  host::SesPlugin plugin;

  auto tarvik = std::make_unique<tarvik::Tarvik>(&document);
  EXPECT_EQ(tarvik->GetDocument(), &document);
  const std::unique_ptr<host::Device> device = host::CreateBitmapDevice(100, 100, host::kDibArgb32, 0xFFFFFFFF);
  tarvik::RenderSealParam::ImageParam image;
  tarvik::RenderSealParam::TextParam text{.fontSize = 5, .text = U"OK", .fontName = {}};
  const tarvik::RenderSealParam param{&image, &text};
  tarvik->RenderSignature(page.get(), &plugin, nullptr, seal, param, device.get(),
                          page->GetDisplayMatrix(0, 0, 100, 100, 0));
  const host::OfdMultiMedia* media = seal->sealMedia.get();
  ASSERT_TRUE(tarvik->GetCachedSealImage(media));  // the render cached the raster seal
  tarvik->RemoveSealImageCache(media);
  EXPECT_FALSE(tarvik->GetCachedSealImage(media));

  bool isOfd = true;
  std::unique_ptr<host::Dib> picture(
      tarvik::ParseSealImage(media, 0, &plugin, nullptr, 0, 0, 300, isOfd));
  ASSERT_TRUE(picture);
  EXPECT_FALSE(isOfd);
  EXPECT_TRUE(tarvik->AddSealImageToCache(media, picture.release()));
  std::unique_ptr<host::Dib> copy(tarvik::Tarvik::GetSealImage(media, host::Size{10, 10}, nullptr));
  EXPECT_FALSE(copy);  // no request: nothing to draw for

  std::string png = testing_support::ReadFileBytes(testing_support::SamplePath("sample_seal.png"));
  auto* bytes = reinterpret_cast<unsigned char*>(png.data());
  std::unique_ptr<host::Dib> decoded(
      tarvik::ParseSealImage(bytes, static_cast<unsigned int>(png.size()), 0, 0, 300, isOfd));
  EXPECT_TRUE(decoded);
  std::unique_ptr<host::Dib> stamped(
      tarvik::RenderSealImageWithStamp(bytes, static_cast<unsigned int>(png.size()), param));
  EXPECT_TRUE(stamped);
  EXPECT_TRUE(tarvik::AddStampOnDevice(device.get(), text));
  std::vector<tarvik::TextObject> records;
  EXPECT_EQ(tarvik::GetSealImageTextRect(seal, text, records), 1);

  host::BinaryBuf digest;
  unsigned char abc[] = {'a', 'b', 'c'};
  EXPECT_EQ(tarvik::CalcDigest(abc, 3, "SM3", &plugin, nullptr, digest), 0);
  tarvik::OESDigestCalculator calculator(&plugin, nullptr);
  IDigestCalculator& base = calculator;
  EXPECT_EQ(base.CalcDigest(abc, 3, "SM3", digest), 0);
  EXPECT_EQ(digest.GetSize(), 64);
  EXPECT_NE(dynamic_cast<tarvik::OESDigestCalculator*>(&base), nullptr);
  EXPECT_NE(std::string(typeid(base).name()).find("OESDigestCalculator"), std::string::npos);

  tarvik.reset();
}

}  // namespace
