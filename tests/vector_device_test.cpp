// The vector device: pages and sizes of its PDF output, recordings played in
// order, blend modes that survive clip changes, and the JPEG writer beside it.
#include "host/base/vector_device.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <regex>
#include <string>

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

// Every Flate stream of a PDF, inflated and joined.
std::string InflatedStreams(const std::string& pdf) {
  std::string all;
  for (size_t at = pdf.find("stream\n"); at != std::string::npos; at = pdf.find("stream\n", at + 1)) {
    const size_t begin = at + 7;
    z_stream z{};
    if (inflateInit(&z) != Z_OK) break;
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(pdf.data() + begin));
    z.avail_in = static_cast<uInt>(pdf.size() - begin);
    char buffer[65536];
    int status = Z_OK;
    while (status == Z_OK) {
      z.next_out = reinterpret_cast<Bytef*>(buffer);
      z.avail_out = sizeof buffer;
      status = inflate(&z, Z_NO_FLUSH);
      all.append(buffer, sizeof buffer - z.avail_out);
    }
    inflateEnd(&z);
    all += '\n';
  }
  return all;
}

std::vector<std::string> MediaBoxes(const std::string& pdf) {
  std::vector<std::string> boxes;
  const std::regex box(R"(/MediaBox \[ ([^\]]*) \])");
  for (auto it = std::sregex_iterator(pdf.begin(), pdf.end(), box); it != std::sregex_iterator(); ++it) {
    boxes.push_back((*it)[1]);
  }
  return boxes;
}

std::unique_ptr<host::Dib> WhiteWithRedDot() {
  auto dib = host::Dib::Create(8, 8, host::kDibArgb32);
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) dib->SetPixel(host::Point(x, y), 0xFFFFFFFF);
  }
  dib->SetPixel(host::Point(4, 4), 0xFFFF0000);
  return dib;
}

TEST(VectorDevice, RefusesWhatCannotBeAPage) {
  std::string out;
  EXPECT_FALSE(Make(VectorFormat::kPdf, out, 0, 297));
  EXPECT_FALSE(Make(VectorFormat::kPdf, out, 210, -1));
  EXPECT_FALSE(Make(VectorFormat::kPdf, out, 6000, 297));
  EXPECT_FALSE(VectorDevice::Create(VectorFormat::kPdf, nullptr, 210, 297, 300));
  EXPECT_TRUE(VectorDevice::Create(VectorFormat::kRecording, nullptr, 210, 297, 300));
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
    square.MoveTo(10, 10);
    square.LineTo(20, 10);
    square.LineTo(20, 20);
    square.Close();
    EXPECT_TRUE(page->FillPath(square, host::Matrix(), 0xFF0000FF, host::FillRule::kNonZero));
    if (i > 0) {
      EXPECT_TRUE(pdf->NextPage(sizes[i][0], sizes[i][1]));
    }
    EXPECT_TRUE(pdf->Play(*page));
  }
  EXPECT_TRUE(pdf->Finish());
  EXPECT_EQ(out.rfind("%PDF-", 0), 0u);
  const std::vector<std::string> boxes = MediaBoxes(out);
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0], "0 0 595.275591 841.889764");
  EXPECT_EQ(boxes[1], "0 0 283.464567 141.732283");
}

// Two seals drawn with multiply, each under its own clip: both must be
// drawn with the multiply blend mode in the PDF's content.
TEST(VectorDevice, BlendModeSurvivesClipChanges) {
  std::string out;
  auto pdf = Make(VectorFormat::kPdf, out);
  ASSERT_TRUE(pdf);
  const auto seal = WhiteWithRedDot();
  for (int i = 0; i < 2; ++i) {
    pdf->SaveState();
    pdf->ClipRect(host::GRect(100.0f + 300 * i, 100, 300.0f + 300 * i, 300));
    EXPECT_TRUE(pdf->DrawBitmapMatrix(seal.get(), host::Matrix(200, 0, 0, 200, 100.0f + 300 * i, 100),
                                      255, host::BlendMode::kMultiply));
    pdf->RestoreState();
  }
  ASSERT_TRUE(pdf->Finish());
  std::smatch state;
  ASSERT_TRUE(std::regex_search(out, state, std::regex(R"((/\w+) << /BM /Multiply >>)")));
  const std::string content = InflatedStreams(out);
  const std::string use = state[1].str() + " gs";
  size_t uses = 0;
  for (size_t at = content.find(use); at != std::string::npos; at = content.find(use, at + 1)) ++uses;
  EXPECT_EQ(uses, 2u) << content;
}

TEST(JpegWriter, ComposesOverWhiteAndKeepsTheSize) {
  const struct {
    host::DibFormat format;
    uint32_t pixel;
    uint32_t expected;  // after decoding, within the tolerance below
  } cases[] = {
      {host::kDibArgb32, 0x00000000, 0xFFFFFFFF},  // transparent: white
      {host::kDibArgb32, 0xFF2040C0, 0xFF2040C0},
      {host::kDibRgb24, 0xFF2040C0, 0xFF2040C0},
  };
  for (const auto& c : cases) {
    auto dib = host::Dib::Create(16, 8, c.format);
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 16; ++x) dib->SetPixel(host::Point(x, y), c.pixel);
    }
    std::string jpeg;
    ASSERT_TRUE(host::EncodeJpeg(*dib, 95, jpeg));
    std::unique_ptr<host::StreamReader> reader(host::StreamReader::CreateMemoryStreamReader(jpeg));
    auto back = host::DecodeImage(reader.get());
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetWidth(), 16);
    EXPECT_EQ(back->GetHeight(), 8);
    const uint32_t got = back->GetPixel(host::Point(5, 3));
    for (int shift : {0, 8, 16}) {
      EXPECT_NEAR(static_cast<int>((got >> shift) & 0xFF), static_cast<int>((c.expected >> shift) & 0xFF), 4)
          << std::hex << c.pixel;
    }
  }
  auto empty = host::Dib::Create(1, 1, host::kDibArgb32);
  std::string out;
  EXPECT_TRUE(host::EncodeJpeg(*empty, 0, out)) << "quality is clamped";
}

}  // namespace
