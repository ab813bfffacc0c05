#include "host/base/codec.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/image_samples.h"

namespace {

using namespace host;  // NOLINT: the codecs and their formats
namespace ts = testing_support;

const std::vector<uint32_t> kPalette = {0xFF102030, 0xFFF0E0D0, 0xFF00FF00, 0xFF7F007F};
const std::vector<uint32_t> kTranslucentPalette = {0xFF102030, 0x80F0E0D0, 0x00000000, 0xFF7F007F};

StreamReaderPtr Reader(const std::string& bytes) {
  return StreamReaderPtr(StreamReader::CreateMemoryStreamReader(bytes));
}

std::unique_ptr<Dib> Load(const std::string& bytes, ImageFormat format = kImageUnknown,
                          Size* size = nullptr, const Rect* clip = nullptr, int* frame = nullptr) {
  StreamReaderPtr reader = Reader(bytes);
  return std::unique_ptr<Dib>(LoadBitmapFromStream(reader.get(), format, size, clip, frame));
}

// Pixels as seen with straight alpha, compared premultiplied, so that the
// colour of (nearly) transparent pixels hardly counts.
bool Near(uint32_t a, uint32_t b, int tolerance) {
  const int alphaA = static_cast<int>(a >> 24), alphaB = static_cast<int>(b >> 24);
  if (std::abs(alphaA - alphaB) > tolerance) return false;
  for (int shift = 0; shift < 24; shift += 8) {
    const int ca = static_cast<int>((a >> shift) & 0xFF) * alphaA / 255;
    const int cb = static_cast<int>((b >> shift) & 0xFF) * alphaB / 255;
    if (std::abs(ca - cb) > tolerance + 1) return false;
  }
  return true;
}

void ExpectPixels(const Dib& dib, const std::function<uint32_t(int, int)>& expected, int tolerance) {
  int bad = 0;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    for (int x = 0; x < dib.GetWidth(); ++x) {
      const uint32_t got = dib.GetPixel(Point(x, y)), want = expected(x, y);
      if (!Near(got, want, tolerance) && bad++ < 3)
        ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << std::hex << got << ", expected " << want;
    }
  }
  EXPECT_EQ(bad, 0);
}

ts::GifFrame FullFrame(int width, int height, int transparent = -1, bool interlaced = false) {
  ts::GifFrame f{0, 0, width, height, {}, transparent, interlaced};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) f.indices.push_back(static_cast<uint8_t>((x + 3 * y) % 4));
  return f;
}

// Replaces bytes of `s` at `offset`.
std::string Patch(std::string s, size_t offset, const std::string& bytes) {
  return s.replace(offset, bytes.size(), bytes);
}

// A 16 x 16 JBIG2 page, black with a white square at (2, 2) to (10, 10); its
// page size is at byte 24.
std::string Jbig2Page() {
  std::ifstream in(std::string(TARVIK_SOURCE_DIR) + "/fuzz/corpus/parse_seal_image/page.jb2", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// An 8-bit run-length BMP of a 4 x 2 picture: the bottom row a run of index
// 1, the top row the literal indices 0 to 3, then the end-of-bitmap marker.
std::string RleBmp() {
  std::string bmp = ts::MakeBmp(ts::PaletteImage(4, 2, kPalette), 8, false, kPalette);
  bmp.resize(14 + 40 + 4 * 4);
  return Patch(bmp, 30, ts::Le(1, 4)) + std::string("\x04\x01\x00\x00\x00\x04\x00\x01\x02\x03\x00\x01", 12);
}

struct DecodeCase {
  const char* name;
  std::string bytes;
  ImageFormat format;
  DibFormat dibFormat;
  ts::SampleImage expected;
  int tolerance;
};

ts::SampleImage Made(int width, int height, const std::function<uint32_t(int, int)>& at) {
  ts::SampleImage im{width, height, {}};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) im.argb.push_back(at(x, y));
  return im;
}

std::vector<DecodeCase> DecodeCases() {
  const ts::SampleImage rgb = ts::GradientImage(13, 11, false), rgba = ts::GradientImage(13, 11, true);
  const ts::SampleImage big = ts::GradientImage(40, 30, false);
  const ts::SampleImage paletted = ts::PaletteImage(9, 7, kPalette);
  const ts::SampleImage translucent = ts::PaletteImage(9, 7, kTranslucentPalette);
  auto grey = [](const ts::SampleImage& im) {
    // The green channel as an opaque grey.
    return Made(im.width, im.height, [&](int x, int y) { return 0xFF000000u | (im.At(x, y) >> 8 & 0xFF) * 0x010101u; });
  };
  const ts::SampleImage gifTransparent =
      Made(9, 7, [&](int x, int y) { return (x + 3 * y) % 4 == 2 ? 0u : paletted.At(x, y); });
  const ts::SampleImage gifInside = Made(9, 7, [&](int x, int y) {
    return x >= 2 && x < 7 && y >= 1 && y < 4 ? paletted.At(x - 2, y - 1) : 0u;
  });
  const ts::SampleImage rle = Made(4, 2, [](int x, int y) { return kPalette[y == 1 ? 1 : x]; });
  const ts::SampleImage jbig2 = Made(16, 16, [](int x, int y) {
    return x >= 2 && x < 10 && y >= 2 && y < 10 ? 0xFFFFFFFFu : 0xFF000000u;
  });
  ts::GifFrame inside = FullFrame(5, 3);
  inside.left = 2;
  inside.top = 1;
  using enum ts::PngKind;
  return {
      {"PngRgb", ts::MakePng(rgb, kRgb), kImagePng, kDibRgb24, rgb, 0},
      {"PngRgba", ts::MakePng(rgba, kRgba), kImagePng, kDibArgb32, rgba, 0},
      {"PngPalette", ts::MakePng(paletted, kIndexed, kPalette), kImagePng, kDibIndexed8, paletted, 0},
      {"PngPaletteTrns", ts::MakePng(translucent, kIndexed, kTranslucentPalette), kImagePng, kDibArgb32, translucent, 0},
      {"PngGrey", ts::MakePng(rgb, kGrey), kImagePng, kDibIndexed8, grey(rgb), 0},
      {"JpegRgb", ts::MakeJpeg(big, false), kImageJpeg, kDibRgb24, big, 12},
      {"JpegGrey", ts::MakeJpeg(big, true), kImageJpeg, kDibIndexed8, grey(big), 6},
      {"GifOpaque", ts::MakeGif(9, 7, kPalette, {FullFrame(9, 7)}), kImageGif, kDibIndexed8, paletted, 0},
      {"GifInterlaced", ts::MakeGif(9, 7, kPalette, {FullFrame(9, 7, -1, true)}), kImageGif, kDibIndexed8, paletted, 0},
      {"GifTransparent", ts::MakeGif(9, 7, kPalette, {FullFrame(9, 7, 2)}), kImageGif, kDibArgb32, gifTransparent, 0},
      {"GifFrameInsideScreen", ts::MakeGif(9, 7, kPalette, {inside}), kImageGif, kDibArgb32, gifInside, 0},
      {"Bmp24BottomUp", ts::MakeBmp(rgb, 24, false), kImageBmp, kDibRgb24, rgb, 0},
      {"Bmp32", ts::MakeBmp(rgb, 32, false), kImageBmp, kDibRgb24, rgb, 0},
      {"Bmp8TopDown", ts::MakeBmp(paletted, 8, true, kPalette), kImageBmp, kDibIndexed8, paletted, 0},
      {"Bmp8RunLength", RleBmp(), kImageBmp, kDibIndexed8, rle, 0},
      {"TiffRgba", ts::MakeTiff(rgba, true), kImageTiff, kDibArgb32, rgba, 1},
      {"Jbig2", Jbig2Page(), kImageJbig2, kDibIndexed8, jbig2, 0},
  };
}

class CodecDecodeTest : public testing::TestWithParam<DecodeCase> {};

TEST_P(CodecDecodeTest, Decode_FormatSizeAndPixels) {
  const DecodeCase& c = GetParam();
  ASSERT_FALSE(c.bytes.empty());
  StreamReaderPtr reader = Reader(c.bytes);
  EXPECT_EQ(GetImageFormat(reader.get()), c.format);
  std::unique_ptr<Dib> dib = DecodeImage(reader.get());
  ASSERT_TRUE(dib);
  EXPECT_EQ(dib->GetFormat(), c.dibFormat);
  ASSERT_EQ(std::make_pair(dib->GetWidth(), dib->GetHeight()), std::make_pair(c.expected.width, c.expected.height));
  ExpectPixels(*dib, [&](int x, int y) { return c.expected.At(x, y); }, c.tolerance);
}

INSTANTIATE_TEST_SUITE_P(Codec, CodecDecodeTest, testing::ValuesIn(DecodeCases()),
                         [](const testing::TestParamInfo<DecodeCase>& info) { return info.param.name; });

TEST(Codec_Sniff, MagicBytesAndPosition) {
  const std::pair<std::string, ImageFormat> cases[] = {
      {"BM", kImageBmp}, {std::string("\xFF\xD8\xFF\xE0", 4), kImageJpeg}, {"GIF87a", kImageGif},
      {std::string("\xFF\xD8\x00", 3), kImageUnknown}, {"GIF90a", kImageUnknown}, {"\x89PNG\r\n\x1a\n", kImagePng},
      {"\x89PNG\r\n\x1a", kImageUnknown}, {std::string("II*\0", 4), kImageTiff}, {"", kImageUnknown},
      {std::string("MM\0*", 4), kImageTiff}, {"B", kImageUnknown}, {"\x97JB2\r\n\x1a\n", kImageJbig2},
  };
  for (const auto& [bytes, format] : cases) {
    StreamReaderPtr reader = Reader(bytes);
    if (bytes.size() > 1) reader->SetPosition(1);
    EXPECT_EQ(std::make_pair(GetImageFormat(reader.get()), reader->GetPosition()),
              std::make_pair(format, uint64_t{bytes.size() > 1 ? 1u : 0u})) << bytes;
  }
  EXPECT_EQ(GetImageFormat(nullptr), kImageUnknown);
}

// In memory every format comes back as it was (a translucent palette as
// alpha); a file of an opaque 32-bit bitmap (a rendered page) drops the alpha.
TEST(Codec_PngEncode, RoundTripsThroughMemoryAndFiles) {
  const ts::SampleImage image = ts::GradientImage(13, 11, true);
  const struct { DibFormat format; bool opaque; DibFormat fromMemory, fromFile; } cases[] = {
      {kDibIndexed8, false, kDibArgb32, kDibArgb32}, {kDibRgb24, true, kDibRgb24, kDibRgb24},
      {kDibArgb32, false, kDibArgb32, kDibArgb32}, {kDibArgb32, true, kDibArgb32, kDibRgb24}};
  const std::string path = ::testing::TempDir() + "codec_round_trip.png";
  for (const auto& c : cases) {
    std::unique_ptr<Dib> dib = Dib::Create(13, 11, c.format);
    if (c.format == kDibIndexed8) dib->SetPalette(kTranslucentPalette.data(), 4);
    for (int i = 0; i < 13 * 11; ++i) {
      const uint32_t argb = c.format == kDibIndexed8 ? kTranslucentPalette[i % 4] : image.argb[i];
      dib->SetPixel(Point(i % 13, i / 13), c.opaque ? argb | 0xFF000000u : argb);
    }
    std::string png;
    ASSERT_TRUE(EncodePng(*dib, png) && WritePng(*dib, path.c_str()));
    StreamReaderPtr file(StreamReader::CreateFileStreamReader(path.c_str()));
    ASSERT_TRUE(file);  // read back by a reader without a buffer
    const std::unique_ptr<Dib> back[] = {Load(png), DecodeImage(file.get())};
    for (int i = 0; i < 2; ++i) {
      ASSERT_TRUE(back[i]);
      EXPECT_EQ(back[i]->GetFormat(), i == 0 ? c.fromMemory : c.fromFile) << c.format << c.opaque;
      ExpectPixels(*back[i], [&](int x, int y) { return dib->GetPixel(Point(x, y)); }, 0);
    }
  }
  std::remove(path.c_str());
  EXPECT_FALSE(WritePng(*Dib::Create(2, 2, kDibRgb24), "/nonexistent-dir/x.png"));
}

TEST(Codec_Options, ClipImageSizeAndFrame) {
  const ts::SampleImage image = ts::GradientImage(16, 12, false);
  const std::string png = ts::MakePng(image, ts::PngKind::kRgb);
  Size size(-1, -1);
  const Rect clip(4, 3, 10, 9);
  std::unique_ptr<Dib> dib = Load(png, kImageUnknown, &size, &clip);
  ASSERT_TRUE(dib);
  EXPECT_EQ(std::make_tuple(size.width, size.height, dib->GetWidth(), dib->GetHeight()),
            std::make_tuple(16, 12, 6, 6));
  ExpectPixels(*dib, [&](int x, int y) { return image.At(x + 4, y + 3); }, 0);

  const Rect overhang(12, 10, 40, 40), outside(20, 20, 30, 30);
  dib = Load(png, kImageUnknown, nullptr, &overhang);
  EXPECT_TRUE(dib && dib->GetWidth() == 4 && dib->GetHeight() == 2);
  size = Size(-1, -1);
  EXPECT_FALSE(Load(png, kImageUnknown, &size, &outside));
  EXPECT_EQ(size.width, -1);  // untouched on failure

  // GIF frames compose; PNG has one.
  ts::GifFrame patch{3, 2, 2, 2, {3, 3, 3, 3}, -1, false};
  const std::string gif = ts::MakeGif(9, 7, kPalette, {FullFrame(9, 7), patch});
  const ts::SampleImage first = ts::PaletteImage(9, 7, kPalette);
  int frame = 1;
  dib = Load(gif, kImageUnknown, nullptr, nullptr, &frame);
  ASSERT_TRUE(dib);
  ExpectPixels(*dib, [&](int x, int y) {
    return x >= 3 && x < 5 && y >= 2 && y < 4 ? kPalette[3] : first.At(x, y);
  }, 0);
  int bad[] = {2, -1};
  EXPECT_FALSE(Load(gif, kImageUnknown, nullptr, nullptr, &bad[0]) || Load(gif, kImageUnknown, nullptr, nullptr, &bad[1]));
  EXPECT_FALSE(Load(png, kImageUnknown, nullptr, nullptr, &frame));
}

TEST(Codec_BadInput, NullWithoutPrinting) {
  const ts::SampleImage rgb = ts::GradientImage(24, 20, false);
  const std::string png = ts::MakePng(rgb, ts::PngKind::kRgb), jpeg = ts::MakeJpeg(rgb, false),
                    gif = ts::MakeGif(24, 20, kPalette, {FullFrame(24, 20, 1)}), bmp = ts::MakeBmp(rgb, 24, false),
                    bmp8 = ts::MakeBmp(ts::PaletteImage(24, 20, kPalette), 8, true, kPalette),
                    tiff = ts::MakeTiff(rgb, false), jbig2 = Jbig2Page();
  const size_t sof = jpeg.find("\xFF\xC0"), gifImage = gif.find(',', 13 + 3 * 4);
  ASSERT_TRUE(sof != std::string::npos && gifImage != std::string::npos);

  std::vector<std::pair<std::string, std::string>> cases = {
      {"empty", ""},
      {"png zero width", ts::WithPngSize(png, 0, 20)},
      {"png 100000 square", ts::WithPngSize(png, 100000, 100000)},
      {"png too many pixels", ts::WithPngSize(png, 16384, 16384)},
      {"jpeg zero height", Patch(jpeg, sof + 5, ts::Be(0, 2))},
      {"jpeg 60000 square", Patch(jpeg, sof + 5, ts::Be(60000, 2) + ts::Be(60000, 2))},
      {"gif huge screen", Patch(gif, 6, ts::Le(65535, 2) + ts::Le(65535, 2))},
      {"gif zero-width frame", Patch(gif, gifImage + 5, ts::Le(0, 2))},
      {"bmp 7 bpp", Patch(bmp, 28, ts::Le(7, 2))},
      {"bmp zero width", Patch(bmp, 18, ts::Le(0, 4))},
      {"bmp 100000 high", Patch(bmp, 22, ts::Le(100000, 4))},
      {"bmp pixels past end", Patch(bmp, 10, ts::Le(0x7FFFFFF0, 4))},
      {"bmp header past end", Patch(bmp, 14, ts::Le(0x10000, 4))},
      {"bmp top-down run-length", Patch(bmp8, 30, ts::Le(1, 4))},
      {"jbig2 huge page", Patch(jbig2, 24, ts::Be(100000, 4) + ts::Be(100000, 4))},
      {"jbig2 zero page", Patch(jbig2, 24, ts::Be(0, 4) + ts::Be(0, 4))},
      {"bmp run-length without end", RleBmp().substr(0, RleBmp().size() - 2)},
      {"garbage", std::string(64, '\x5A')},
  };
  for (const std::string& sample : {png, jpeg, gif, bmp, bmp8, tiff, jbig2}) {
    for (size_t cut : {size_t{7}, sample.size() / 2, sample.size() - 14})
      cases.emplace_back(sample.substr(0, 4) + " cut at " + std::to_string(cut), sample.substr(0, cut));
  }
  for (const auto& [name, bytes] : cases) {
    testing::internal::CaptureStderr();
    Size size(-1, -1);
    EXPECT_FALSE(Load(bytes, kImageUnknown, &size)) << name;
    EXPECT_EQ(std::make_pair(size.width, testing::internal::GetCapturedStderr()), std::make_pair(-1, std::string()))
        << name;
  }
  EXPECT_FALSE(LoadBitmapFromStream(nullptr, kImageUnknown, nullptr, nullptr, nullptr));
}

}  // namespace
