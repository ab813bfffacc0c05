// The vector device: pages and sizes of its PDF output, recordings played in
// order, blend modes that survive clip changes, and the JPEG writer beside it.
#include "host/base/vector_device.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "host/base/codec.h"
#include "host/base/stream_reader.h"

namespace {

using host::VectorDevice;
using host::VectorFormat;

std::unique_ptr<VectorDevice> Make(VectorFormat format, std::string& out, double w = 210,
                                   double h = 297) {
  return VectorDevice::Create(
      format,
      [&out](const unsigned char* data, size_t n) {
        out.append(reinterpret_cast<const char*>(data), n);
        return true;
      },
      w, h, 300);
}

std::vector<std::string> MediaBoxes(const std::string& pdf) {
  std::vector<std::string> boxes;
  const std::regex box(R"(/MediaBox \[ ([^\]]*) \])");
  for (auto it = std::sregex_iterator(pdf.begin(), pdf.end(), box); it != std::sregex_iterator(); ++it) {
    boxes.push_back((*it)[1]);
  }
  return boxes;
}

TEST(VectorDevice, RefusesWhatCannotBeAPage) {
  std::string out;
  // No size, a negative one, a page too large, PDF without a writer; a recording needs none.
  EXPECT_EQ((std::vector<bool>{!!Make(VectorFormat::kPdf, out, 0, 297), !!Make(VectorFormat::kPdf, out, 210, -1),
                               !!Make(VectorFormat::kPdf, out, 6000, 297),
                               !!VectorDevice::Create(VectorFormat::kPdf, nullptr, 210, 297, 300),
                               !!VectorDevice::Create(VectorFormat::kRecording, nullptr, 210, 297, 300)}),
            (std::vector<bool>{false, false, false, false, true}));
  auto svg = Make(VectorFormat::kSvg, out);
  ASSERT_TRUE(svg);
  EXPECT_FALSE(svg->NextPage(100, 100)) << "SVG holds one page";
  EXPECT_EQ(svg->GetWidth(), 2481u);  // 210 mm at 300 per inch, rounded up
  EXPECT_EQ(svg->TakeBitmap(), nullptr);
}

TEST(VectorDevice, RecordedPagesPlayInOrderWithTheirSizes) {
  std::string out;
  auto pdf = Make(VectorFormat::kPdf, out);
  ASSERT_TRUE(pdf);
  const double sizes[][2] = {{210, 297}, {100, 50}};
  for (int i = 0; i < 2; ++i) {
    auto page = VectorDevice::Create(VectorFormat::kRecording, nullptr, sizes[i][0], sizes[i][1], 300);
    ASSERT_TRUE(page);
    host::Path square;
    square.AddRect(10, 10, 10, 10);
    EXPECT_TRUE(page->FillPath(square, host::Matrix(), 0xFF0000FF, host::FillRule::kNonZero));
    EXPECT_TRUE(i == 0 || pdf->NextPage(sizes[i][0], sizes[i][1]));
    EXPECT_TRUE(pdf->Play(*page));
  }
  EXPECT_TRUE(pdf->Finish());
  EXPECT_EQ(out.rfind("%PDF-", 0), 0u);
  EXPECT_EQ(MediaBoxes(out), (std::vector<std::string>{"0 0 595.275591 841.889764", "0 0 283.464567 141.732283"}));
}

}  // namespace
