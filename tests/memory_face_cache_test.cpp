// Faces from font bytes kept per process: the same bytes give the same face,
// other bytes or face indexes do not, and the byte bound evicts the least
// recently used.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/base/memory_face_cache.h"
#include "support/fixed_metrics_face.h"

namespace host {
namespace {

std::shared_ptr<const FaceSource> NewFace() {
  return std::make_shared<testing_support::FixedMetricsFace>(std::map<uint32_t, testing_support::GlyphMetrics>{});
}

const uint8_t* Bytes(const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); }

TEST(MemoryFaceCache, SameBytesAndIndexOnly) {
  MemoryFaceCache cache(100);
  const std::string a(40, 'a'), b(40, 'b');
  const auto faceA = NewFace();
  cache.Add(Bytes(a), a.size(), 0, faceA);
  EXPECT_EQ(cache.Find(Bytes(a), a.size(), 0), faceA);
  const std::string copy = a;  // equal bytes elsewhere in memory
  EXPECT_EQ(cache.Find(Bytes(copy), copy.size(), 0), faceA);
  EXPECT_EQ(cache.Find(Bytes(b), b.size(), 0), nullptr);
  EXPECT_EQ(cache.Find(Bytes(a), a.size(), 1), nullptr);
  EXPECT_EQ(cache.Find(Bytes(a), a.size() - 1, 0), nullptr);
  EXPECT_EQ(cache.Find(nullptr, 0, 0), nullptr);
}

TEST(MemoryFaceCache, BoundEvictsLeastRecentlyUsed) {
  MemoryFaceCache cache(100);
  const std::string a(40, 'a'), b(40, 'b'), c(40, 'c'), huge(101, 'h');
  cache.Add(Bytes(a), a.size(), 0, NewFace());
  cache.Add(Bytes(b), b.size(), 0, NewFace());
  ASSERT_TRUE(cache.Find(Bytes(a), a.size(), 0));  // a is now the most recent
  cache.Add(Bytes(c), c.size(), 0, NewFace());     // 120 bytes: b goes
  EXPECT_TRUE(cache.Find(Bytes(a), a.size(), 0));
  EXPECT_FALSE(cache.Find(Bytes(b), b.size(), 0));
  EXPECT_TRUE(cache.Find(Bytes(c), c.size(), 0));
  cache.Add(Bytes(huge), huge.size(), 0, NewFace());
  EXPECT_FALSE(cache.Find(Bytes(huge), huge.size(), 0));
  EXPECT_TRUE(cache.Find(Bytes(a), a.size(), 0));
}

}  // namespace
}  // namespace host
