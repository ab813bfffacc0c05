// Pictures kept across renders: bounded in bytes, least recently used first
// out.
#include <gtest/gtest.h>

#include "host/base/dib.h"
#include "host/base/shared_image_cache.h"

#include <memory>
#include <utility>
#include <vector>

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
  EXPECT_EQ(std::vector({cache.Find("b"), cache.Find("a"), cache.Find("c")}), std::vector({decltype(a)(), a, c}));
  EXPECT_EQ(cache.GetByteCount(), 800u);
  cache.Store("a", Picture(20));  // too large alone: dropped, a forgotten
  EXPECT_EQ(std::make_pair(cache.Find("a"), cache.GetCount()), std::make_pair(decltype(a)(), size_t{1}));
}

}  // namespace
