// The per-document object: its seal image cache (and the hash map under it),
// the seal pictures it hands to the page renderer, and what RenderSignature
// asks of the device.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "front/seal_image_request.h"
#include "host/base/app_context.h"
#include "host/base/bitmap_device.h"
#include "host/base/font_mgr.h"
#include "host/ofd/ofd_annotation.h"
#include "image/color_ops.h"
#include "support/fixed_metrics_face.h"
#include "support/recording_device.h"
#include "support/scripted_plugin.h"
#include "support/seal_document.h"
#include "tarvik/obj_map.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::DeviceCall;
using testing_support::RecordingDevice;
using testing_support::ScriptedPlugin;
using testing_support::SealDocument;

constexpr uint32_t kGreen = 0xFF00CC00;

std::unique_ptr<Dib> Solid(int w, int h, uint32_t colour) {
  auto dib = host::Dib::Create(w, h, host::kDibArgb32);
  dib->Fill(colour);
  return dib;
}

TEST(TarvikCache, KeyIsTheSignedValueLocationElseTheSealLocation) {
  SealDocument doc;
  Tarvik tarvik(doc.document());
  auto a = doc.Media("/a/Seal.esl", "/a/Signed.dat");
  auto sameSigned = doc.Media("/b/Seal.esl", "/a/Signed.dat");
  auto sealOnly = doc.Media("/a/Signed.dat", "");
  auto other = doc.Media("/a/Seal.esl", "/c/Signed.dat");

  Dib* first = Solid(2, 2, kGreen).release();
  ASSERT_TRUE(tarvik.AddSealImageToCache(a.get(), first));
  // A seal without a signed-value file is known by its seal file, which here
  // happens to spell the same location.
  EXPECT_EQ(std::vector({tarvik.GetCachedSealImage(sameSigned.get()), tarvik.GetCachedSealImage(sealOnly.get()),
                         tarvik.GetCachedSealImage(other.get())}),
            std::vector<const Dib*>({first, first, nullptr}));
}

TEST(TarvikCache, AddNeverReplacesABitmapAndNullEntriesFillLater) {
  SealDocument doc;
  Tarvik tarvik(doc.document());
  auto media = doc.Media();

  EXPECT_TRUE(tarvik.AddSealImageToCache(media.get(), nullptr) && !tarvik.GetCachedSealImage(media.get()));
  Dib* first = Solid(2, 2, kGreen).release();
  auto second = Solid(3, 3, kGreen);
  EXPECT_TRUE(tarvik.AddSealImageToCache(media.get(), first));
  EXPECT_FALSE(tarvik.AddSealImageToCache(media.get(), second.get()));
  tarvik.RemoveSealImageCache(doc.Media("/absent", "").get());
  EXPECT_EQ(tarvik.GetCachedSealImage(media.get()), first);
  tarvik.RemoveSealImageCache(media.get());  // deletes `first`; a sanitizer build sees a leak or double delete
  EXPECT_TRUE(!tarvik.GetCachedSealImage(media.get()) && tarvik.AddSealImageToCache(media.get(), second.release()));
}

// Enough entries to grow the cache's table twice; removals keep the others.
// Destruction frees the rest (the sanitizer build reports a leak or a double
// delete).
TEST(TarvikCache, ManyEntriesSurviveGrowthAndDestructionFreesThem) {
  SealDocument doc;
  auto tarvik = std::make_unique<Tarvik>(doc.document());
  std::vector<std::unique_ptr<host::OfdMultiMedia>> media;
  std::vector<const Dib*> dibs;
  for (int i = 0; i < 40; ++i) {
    media.push_back(doc.Media(testing_support::kSealFile, ("/Sign_" + std::to_string(i) + "/SignedValue.dat").c_str()));
    dibs.push_back(Solid(1, 1, kGreen).release());
    ASSERT_TRUE(tarvik->AddSealImageToCache(media.back().get(), dibs.back()));
  }
  for (int i = 0; i < 40; i += 2) tarvik->RemoveSealImageCache(media[i].get());
  for (int i = 0; i < 40; ++i) EXPECT_EQ(tarvik->GetCachedSealImage(media[i].get()), i % 2 ? dibs[i] : nullptr);
}

// GetSealImage as the page renderer calls it.
class TarvikSealImage : public ::testing::Test {
 protected:
  TarvikSealImage() : tarvik_(doc_.document()), media_(doc_.Media()) {
    plugin_.primary = {0, testing_support::SolidPng(8, 8, kGreen), "PNG", 40, 40};
  }
  std::unique_ptr<Dib> Get(const RenderSealParam::ImageParam& image) {
    SealImageRequest request{&plugin_, nullptr, &image, nullptr, &tarvik_};
    return std::unique_ptr<Dib>(Tarvik::GetSealImage(media_.get(), Size(8, 8), &request));
  }
  SealDocument doc_;
  Tarvik tarvik_;
  std::unique_ptr<host::OfdMultiMedia> media_;
  ScriptedPlugin plugin_;
};

struct Adjustment {
  const char* name;
  int renderMode, crossMark, colorMode;
  uint32_t corner;  // pixel (0, 0): on the cross's stroke when there is one
  uint32_t edge;    // pixel (4, 0): off the cross
  bool cached;
};

class TarvikAdjustments : public TarvikSealImage,
                          public ::testing::WithParamInterface<Adjustment> {};

// A repaint is served from the cache unless the render mode bypasses it.
TEST_P(TarvikAdjustments, AppliesCrossThenColourOnCopiesOnly) {
  const Adjustment& a = GetParam();
  const RenderSealParam::ImageParam image{.renderMode = a.renderMode, .crossMark = a.crossMark,
                                          .colorMode = a.colorMode};
  for (int paint = 1; paint <= 2; ++paint) {
    std::unique_ptr<Dib> dib = Get(image);
    ASSERT_TRUE(dib);
    EXPECT_EQ(std::make_pair(dib->GetPixel({0, 0}), dib->GetPixel({4, 0})), std::make_pair(a.corner, a.edge));
    ASSERT_EQ(static_cast<int>(plugin_.calls.size()), a.cached ? 1 : paint);
    EXPECT_EQ(plugin_.calls[0].renderMode, a.renderMode);
    // The cache keeps the seal as decoded, whatever was asked, and lends copies.
    const Dib* cached = tarvik_.GetCachedSealImage(media_.get());
    ASSERT_EQ(cached != nullptr, a.cached);
    EXPECT_TRUE(!cached || (cached->GetPixel({0, 0}) == kGreen && cached != dib.get()));
  }
}

constexpr uint32_t kRed = 0xFFFF0000;
const uint32_t kGreyGreen = GrayOf(kGreen);
const uint32_t kGreyRed = GrayOf(kRed);

INSTANTIATE_TEST_SUITE_P(
    Modes, TarvikAdjustments,
    ::testing::Values(Adjustment{"Plain", 0, 0, 0, kGreen, kGreen, true},
                      Adjustment{"Cross", 0, 1, 0, kRed, kGreen, true},
                      Adjustment{"CrossGrey", 0, 1, 1, kGreyRed, kGreyGreen, true},
                      Adjustment{"Black", 0, 0, 2, 0xFF000000, 0xFF000000, true},
                      Adjustment{"OtherColourModeIsGrey", 0, 0, 3, kGreyGreen, kGreyGreen, true},
                      Adjustment{"RenderMode1BypassesCache", 1, 0, 0, kGreen, kGreen, false},
                      Adjustment{"RenderMode2BypassesCache", 2, 1, 2, 0xFF000000, 0xFF000000,
                                 false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(TarvikSealImage, FailuresAnswerNullAndCacheNothing) {
  plugin_.primary = plugin_.secondary = plugin_.combined = {7};
  EXPECT_EQ(Get(RenderSealParam::ImageParam()), nullptr);
  EXPECT_EQ(tarvik_.GetCachedSealImage(media_.get()), nullptr);

  // Seal data of no known kind: nothing to cache either.
  plugin_.primary = {0, "not a picture", "PNG", 1, 1};
  testing::internal::CaptureStdout();
  EXPECT_FALSE(Get(RenderSealParam::ImageParam()) || tarvik_.GetCachedSealImage(media_.get()) ||
               Tarvik::GetSealImage(media_.get(), Size(8, 8), nullptr));
  testing::internal::GetCapturedStdout();
}

// RenderSignature's calls on the device.
class TarvikRenderSignature : public ::testing::Test {
 protected:
  static constexpr const char* kFamily = "TarvikTestFixed";
  void SetUp() override {
    host::AppContext::Get()->GetFontMgr()->RegisterFace(
        kFamily, std::make_shared<testing_support::FixedMetricsFace>(
                     std::map<uint32_t, testing_support::GlyphMetrics>{}, 1000, 700));
    SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
    plugin_.primary = {0, testing_support::SolidPng(8, 8, kGreen), "PNG", 40, 40};
    annotation_.Boundary = GRect(10, 20, 50, 60);
    annotation_.BindSealImage(doc_.Media());
    text_ = {.fontSize = 12, .text = U"ABCD", .fontName = WideString::FromUtf8(kFamily)};
  }
  void TearDown() override {
    host::AppContext::Get()->GetFontMgr()->UnregisterFace(kFamily);
    SetDeviceCreator(nullptr, nullptr);
  }
  void Render(RenderSealParam::ImageParam* image, RenderSealParam::TextParam* text) {
    tarvik_.RenderSignature(doc_.page(), &plugin_, nullptr, &annotation_, {image, text}, &device_,
                            Matrix(2, 0, 0, 2, 0, 0));
  }

  SealDocument doc_;
  Tarvik tarvik_{doc_.document()};
  ScriptedPlugin plugin_;
  host::OfdAnnotationSeal annotation_;
  RenderSealParam::TextParam text_;
  RecordingDevice device_{200, 200};
};

TEST_F(TarvikRenderSignature, PictureOnlyDrawsTheSealInsideTheBoundary) {
  RenderSealParam::ImageParam image;
  Render(&image, nullptr);
  const std::vector<DeviceCall> bitmaps = device_.Of(DeviceCall::kDrawBitmapMatrix);
  ASSERT_EQ(bitmaps.size(), 1u);
  // The seal fills the boundary: 40 x 40 mm at 2 units per millimetre.
  EXPECT_EQ(std::make_tuple(bitmaps[0].matrix, device_.Of(DeviceCall::kDrawText).size(),
                            device_.Of(DeviceCall::kSave).size() - device_.Of(DeviceCall::kRestore).size()),
            std::make_tuple(Matrix(80, 0, 0, 80, 20, 40), size_t{0}, size_t{0}));
}

// Text is clipped only when an ellipse is drawn on a clipped seal; the clip is
// relative to the boundary's corner, then taken to the device.
TEST_F(TarvikRenderSignature, ClipsOnlyAnEllipseOnAClippedSeal) {
  const struct { GRect clip; uint32_t layoutKind; bool clipped; } cases[] = {
      {GRect(), 0, false}, {GRect(0, 0, 20, 40), 0, false}, {GRect(), 1, false}, {GRect(5, 0, 40, 30), 7, true}};
  for (const auto& c : cases) {
    device_.Clear();
    std::tie(annotation_.Clip, text_.layoutKind) = std::tie(c.clip, c.layoutKind);
    Render(nullptr, &text_);
    const std::vector<std::string> names = device_.Names();
    ASSERT_GE(names.size(), c.clipped ? 4u : 1u);
    std::vector<std::string> expected(names.size(), "text");
    if (c.clipped) std::tie(expected.front(), expected[1], expected.back()) = std::tuple("save", "clip", "restore");
    EXPECT_EQ(names, expected) << c.layoutKind;
    const std::vector<DeviceCall> clips = device_.Of(DeviceCall::kClipRect);
    EXPECT_TRUE(clips.empty() || clips[0].rect == GRect(30, 40, 100, 100));
  }
  EXPECT_TRUE(plugin_.calls.empty());
}

TEST_F(TarvikRenderSignature, ARidingSealShowsOnlyTheSliceItsClipNames) {
  // Boundary 10..50 mm across, one device pixel per millimetre.
  annotation_.Clip = GRect(8, 0, 16, 40);
  annotation_.BindSealImage(doc_.Media());  // the clip is taken when bound
  std::unique_ptr<host::Device> device = host::CreateBitmapDevice(60, 60, host::kDibArgb32, 0xFFFFFFFF);
  RenderSealParam::ImageParam image;
  tarvik_.RenderSignature(doc_.page(), &plugin_, nullptr, &annotation_, {&image, nullptr}, device.get(), Matrix());
  std::unique_ptr<Dib> page(device->TakeBitmap());
  for (int x : {12, 17, 19, 24, 27, 45}) {
    const bool inSlice = x >= 18 && x < 26;  // 10 + 8 .. 10 + 16
    EXPECT_EQ(page->GetPixel({x, 40}) != 0xFFFFFFFF, inSlice) << x;
  }
}

TEST_F(TarvikRenderSignature, NothingToDrawLeavesTheDeviceAlone) {
  Render(nullptr, nullptr);
  EXPECT_TRUE(device_.calls().empty() && plugin_.calls.empty());
  // A seal whose data cannot be read still lets the text be drawn.
  plugin_.primary = plugin_.secondary = plugin_.combined = {9};
  RenderSealParam::ImageParam image;
  Render(&image, &text_);
  EXPECT_TRUE(device_.Of(DeviceCall::kDrawBitmapMatrix).empty() && !device_.Of(DeviceCall::kDrawText).empty());
}

using Map = ObjMap<host::ByteString, const int*>;

Map::Assoc* Insert(Map& map, const std::string& key, const int* value) {
  uint32_t hash = 0;
  EXPECT_EQ(map.Lookup(key, hash), nullptr);
  EXPECT_EQ(hash, host::HashKey(host::ByteString(key)));  // given even when not found
  Map::Assoc* a = map.NewAssoc(key, hash);
  if (a) a->value = value;
  return a;
}

// Keys are exact (case counts, the empty one too); 17 buckets grow to 25, 37,
// 55; removing the last entry frees the table, and a new one allocates again.
// (Lookups after growth: ManyEntriesSurviveGrowthAndDestructionFreesThem.)
TEST(ObjMap, ExactKeysGrowthAndRemoval) {
  Map map;
  EXPECT_EQ(std::make_pair(map.HasBuckets(), map.GetBucketCount()), std::make_pair(false, 17u));
  map.RemoveKey(host::ByteString("absent"));  // no buckets yet
  std::vector<int> values(40);
  std::vector<std::string> keys = {"/Doc_0/Signs/Sign_0/SignedValue.dat", "/doc_0/signs/sign_0/signedvalue.dat", ""};
  for (int i = 3; i < 40; ++i) keys.push_back("key" + std::to_string(i));
  std::vector<unsigned> buckets;
  for (int i = 0; i < 40; ++i) {
    Insert(map, keys[i], &values[i]);
    if (i == 16 || i == 17 || i == 39) buckets.push_back(map.GetBucketCount());
  }
  EXPECT_EQ(buckets, std::vector<unsigned>({17, 25, 55}));
  for (int i = 0; i < 39; ++i) map.RemoveKey(host::ByteString(keys[i]));
  EXPECT_TRUE(map.HasBuckets());
  map.RemoveKey(host::ByteString(keys[39]));
  EXPECT_EQ(std::make_pair(map.GetCount(), map.HasBuckets()), std::make_pair(0, false));
  EXPECT_TRUE(Insert(map, "c", &values[0]) && map.HasBuckets());  // allocates again
}

}  // namespace
}  // namespace tarvik
