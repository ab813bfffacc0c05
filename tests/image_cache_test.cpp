#include "host/render/image_cache.h"

#include <gtest/gtest.h>

#include <tuple>

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_page_object.h"
#include "host/render/image_painter.h"
#include "support/image_samples.h"
#include "support/opened_document.h"
#include "support/recording_device.h"
#include "support/zip_builder.h"

namespace host {
namespace {

namespace ts = testing_support;

class ImageCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(opened_.doc);
    media_.PrimaryLoc = "/Doc_0/Res/a.jpg";
    media_.ResourceContainer = opened_.doc.get();
  }
  ts::Opened opened_ = ts::Open(ts::BuildOfdPackage(
      {{"Doc_0/Document.xml", ts::OfdDocumentXml({})},
       {"Doc_0/Res/a.jpg", ts::MakeJpeg(ts::GradientImage(64, 48, false), false)}}));
  OfdMultiMedia media_;
};

// A JPEG shown smaller than its pixels comes reduced by 8, 4 or 2, never
// below the size shown; a reduced copy serves smaller sizes only, and the
// whole picture, once decoded, every size, in this render and the next.
TEST_F(ImageCacheTest, JpegsComeNoFinerThanShown) {  const struct {
    Size shown;
    int width, height;
  } kRows[] = {
      {Size(8, 6), 8, 6},     {Size(9, 6), 16, 12},  {Size(4, 4), 16, 12},
      {Size(32, 25), 64, 48}, {Size(8, 6), 64, 48},
  };
  ImageCache render;
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.shown.width << "x" << row.shown.height);
    const Dib* dib = render.Get(&media_, nullptr, row.shown);
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(std::tuple(dib->GetWidth(), dib->GetHeight()), std::tuple(row.width, row.height));
  }
  ImageCache next;
  const Dib* dib = next.Get(&media_, nullptr, Size(8, 6));
  ASSERT_NE(dib, nullptr);
  EXPECT_EQ(dib->GetWidth(), 64);
  EXPECT_EQ(opened_.doc->GetImageCache().GetCount(), 2u);  // the last reduced copy and the whole
}

// Drawn at 8 x 6 pixels: reduced on a bitmap, whole where pictures keep
// their own resolution (PDF, SVG).
TEST_F(ImageCacheTest, OnlyRasterDevicesGetReducedPictures) {
  struct VectorRecording : ts::RecordingDevice {
    bool OnIsRaster() const override { return false; }
  };
  OfdImageObject object;
  object.media = &media_;
  for (bool raster : {true, false}) {
    ts::RecordingDevice bitmap;
    VectorRecording vector;
    ts::RecordingDevice& device = raster ? bitmap : vector;
    ImageCache images;
    PaintContext pc;
    pc.device = &device;
    pc.images = &images;
    PaintImage(pc, object, Matrix(8, 0, 0, 6, 0, 0), 255);
    const auto calls = device.Of(ts::DeviceCall::kDrawBitmapMatrix);
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].dibWidth, raster ? 8 : 64);
  }
}

}  // namespace
}  // namespace host
