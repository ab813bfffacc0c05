#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/base/app_context.h"
#include "host/base/bitmap_device.h"
#include "host/base/font.h"
#include "host/base/font_mgr.h"
#include "host/base/ft_face_source.h"
#include "host/base/memory_face_cache.h"
#include "support/fixed_metrics_face.h"
#include "support/fonts.h"

namespace {

using testing_support::FixedMetricsFace;

constexpr uint32_t kZhong = U'中';
constexpr uint32_t kWen = U'文';

std::vector<uint8_t> ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

host::FontMgr& Mgr() { return *host::AppContext::Get()->GetFontMgr(); }

std::shared_ptr<const host::FtFaceSource> FtFace(const char* family, int weight, bool italic) {
  return std::dynamic_pointer_cast<const host::FtFaceSource>(Mgr().FindFace(family, weight, italic));
}

// Each family loads a face with Chinese glyphs: the expected one (a substring
// of Describe()), or any CJK face for the unknown and absent ones.
TEST(FontTest, Font_FamilyLoadsFaceWithChineseGlyphs) {
  TARVIK_NEED_FONTS("AR PL UMing CN", "AR PL UKai CN", "Noto Sans CJK SC");
  const std::pair<const char32_t*, const char*> cases[] = {
      {U"宋体", "AR PL UMing CN"}, {U"黑体", "Noto Sans Mono CJK SC"}, {U"KaiTi_GB2312", "AR PL UKai CN"},
      {U"Microsoft YaHei", "Noto Sans CJK SC"}, {U"方正小标宋简体", "AR PL UMing CN"}, {U"Times New Roman", ""},
      {U"", ""}, {nullptr, ""}};
  for (const auto& [family, expect] : cases) {
    host::Font font(nullptr);
    ASSERT_TRUE(font.LoadFont(family, nullptr, 3, 400, 0) && font.GetFaceHandle());
    const std::string desc = font.GetFaceHandle()->Describe();
    EXPECT_TRUE(font.GetGlyphIndex(kZhong) && font.GetGlyphIndex(kWen) && desc.find(expect) != std::string::npos)
        << desc;
  }
}

TEST(FontMgrTest, FontMgr_LatinFamilyAsIsAndOneFacePerFile) {
  TARVIK_NEED_FONTS("DejaVu Serif");
  auto face = Mgr().FindFace("DejaVu Serif", 400, false), song = Mgr().FindFace("宋体", 400, false);
  ASSERT_TRUE(face && song);
  EXPECT_NE(face->Describe().find("DejaVu Serif"), std::string::npos) << face->Describe();
  EXPECT_EQ(face, Mgr().FindFace("dejavu serif", 400, false));
  // Different names for one file share the face.
  for (const char* name : {"宋体", "simsun", "NSimSun"}) EXPECT_EQ(song, Mgr().FindFace(name, 400, false)) << name;
}

TEST(FontMgrTest, FontMgr_WeightAndItalicPickStyledFaces) {
  TARVIK_NEED_FONTS("Noto Sans CJK SC", "DejaVu Serif");
  auto regular = FtFace("黑体", 400, false), bold = FtFace("黑体", 700, false);
  ASSERT_TRUE(regular && bold);
  EXPECT_TRUE(regular != bold && !regular->IsBold() && bold->IsBold() && bold->GlyphIndex(kZhong)) << bold->Describe();

  // An unknown family in bold falls back to a CJK face that is really bold.
  auto boldFallback = FtFace("No Such Family 42", 700, false);
  ASSERT_TRUE(boldFallback);
  EXPECT_TRUE(boldFallback->IsBold()) << boldFallback->Describe();

  EXPECT_TRUE(FtFace("DejaVu Serif", 400, true)->IsItalic());
}

TEST(FontMgrTest, FontMgr_AltFamilyUsedWhenFamilyUnknown) {
  TARVIK_NEED_FONTS("AR PL UKai CN", "Noto Sans CJK SC");
  host::Font font(nullptr);
  ASSERT_NE(font.LoadFont(U"No Such Family 42", U"楷体", 3, 400, 0), 0);
  EXPECT_NE(font.GetFaceHandle()->Describe().find("AR PL UKai CN"), std::string::npos);
  // A known family wins over the alternative.
  ASSERT_NE(font.LoadFont(U"黑体", U"楷体", 3, 400, 0), 0);
  EXPECT_NE(font.GetFaceHandle()->Describe().find("Noto Sans Mono CJK SC"), std::string::npos);
}

TEST(FontMetricsTest, FontMetrics_OutOfRangeGlyphsAndAnEmptyFontAnswerZero) {
  host::Font font(nullptr), empty(nullptr);
  ASSERT_NE(font.LoadFont(U"黑体", nullptr, 3, 400, 0), 0);
  EXPECT_EQ(std::vector({font.GetGlyphAdvance(0xFFFFFF), font.GetGlyphHeight(0xFFFFFF), empty.GetGlyphAdvance(1),
                         font.GetGlyphHeight(font.GetGlyphIndex(' '))}),
            std::vector({0, 0, 0, 0}));
  EXPECT_EQ(std::make_pair(empty.GetGlyphIndex(kZhong), Mgr().GetGlyphIndex(nullptr, kZhong)), std::make_pair(0u, 0u));
}

// The drawing device shares the face and leaves its glyph transform on it
// after turned text; measuring must not see that transform.
TEST(FontMetricsTest, FontMetrics_HeightsUnchangedByTurnedTextDrawnBefore) {
  host::Font font(nullptr);
  ASSERT_NE(font.LoadFont(U"黑体", nullptr, 3, 400, 0), 0);
  const uint32_t zhong = font.GetGlyphIndex(kZhong);
  const int before = font.GetGlyphHeight(zhong);
  std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(64, 64, host::kDibArgb32, 0xFFFFFFFF);
  const host::Matrix turned(0.5f, -0.866f, 0.866f, 0.5f, 10, 50);
  ASSERT_NE(device->DrawText(U"中", 1, &font, &turned, 0xFF000000, 40), 0);
  EXPECT_EQ(font.GetGlyphHeight(zhong), before);
  // And the device still turns what it draws after a measurement.
  ASSERT_NE(device->DrawText(U"中", 1, &font, &turned, 0xFF000000, 40), 0);
}

TEST(FontMemoryTest, FontMemory_LoadsInstalledFileAndRefusesGarbage) {
  TARVIK_NEED_FONTS("DejaVu Sans");
  int index = -1;
  const std::string path = Mgr().ResolveFile("DejaVu Sans", 400, false, &index);
  std::vector<uint8_t> bytes = ReadFile(path);
  ASSERT_EQ(std::make_pair(bytes.empty(), index), std::make_pair(false, 0));
  host::Font font(nullptr);
  ASSERT_NE(font.LoadFontFromMemory(bytes.data(), bytes.size()), 0);
  const uint32_t a = font.GetGlyphIndex('A');
  EXPECT_TRUE(a && font.GetGlyphAdvance(a) > 500 && font.GetGlyphHeight(a) > 600);
  EXPECT_NE(font.GetFaceHandle()->Describe().find("<memory>"), std::string::npos);
  const std::vector<uint8_t> real = bytes, garbage(4096, 0x5A);
  std::fill(bytes.begin(), bytes.end(), 0);
  EXPECT_EQ(font.GetGlyphIndex('A'), a);  // the bytes were copied
  // Garbage, nothing, a cut font and face indexes it does not have.
  host::Font bad(nullptr);
  EXPECT_EQ(std::vector({bad.LoadFontFromMemory(garbage.data(), garbage.size()), bad.LoadFontFromMemory(nullptr, 100),
                         bad.LoadFontFromMemory(garbage.data(), 0), bad.LoadFontFromMemory(real.data(), 64),
                         bad.LoadFontFromMemory(real.data(), real.size(), 5),
                         bad.LoadFontFromMemory(real.data(), real.size(), -1)}),
            std::vector<int>(6, 0));
  EXPECT_EQ(bad.GetFaceHandle(), nullptr);
}

// Faces from font bytes kept per process: the same bytes give the same face,
// other bytes or face indexes do not, and the byte bound evicts the least
// recently used.
TEST(MemoryFaceCacheTest, MemoryFaceCache_SameBytesAndIndexOnlyWithinTheBound) {
  const auto bytes = [](const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); };
  const auto found = [&](host::MemoryFaceCache& cache, const std::string& s, int index = 0) {
    return cache.Find(bytes(s), s.size(), index);
  };
  host::MemoryFaceCache cache(100);
  const std::string a(40, 'a'), b(40, 'b'), c(40, 'c'), huge(101, 'h'), copy = a;
  const std::shared_ptr<const host::FaceSource> faceA =
      std::make_shared<FixedMetricsFace>(std::map<uint32_t, testing_support::GlyphMetrics>{});
  cache.Add(bytes(a), a.size(), 0, faceA);
  EXPECT_EQ(std::make_pair(found(cache, a), found(cache, copy)), std::make_pair(faceA, faceA));
  EXPECT_FALSE(found(cache, b) || found(cache, a, 1) || cache.Find(bytes(a), a.size() - 1, 0) ||
               cache.Find(nullptr, 0, 0));
  cache.Add(bytes(b), b.size(), 0, faceA);
  ASSERT_TRUE(found(cache, a));  // a is now the most recent
  cache.Add(bytes(c), c.size(), 0, faceA);  // 120 bytes: b goes
  cache.Add(bytes(huge), huge.size(), 0, faceA);  // never kept
  EXPECT_EQ(std::vector({!!found(cache, a), !!found(cache, b), !!found(cache, c), !!found(cache, huge)}),
            std::vector({true, false, true, false}));
}

}  // namespace
