// A whole signed page drawn again and again with one allocation through the
// host's memory functions (host::AllocMemory and ReallocMemory: bitmap
// pixels, the device's picture copies, codec and filter buffers) failing
// each time: every run ends cleanly, with no page or a page without what
// failed, and leaks nothing (checked by the AddressSanitizer build). Memory
// taken with new, by the standard containers or inside third-party libraries
// (cairo, FreeType, libpng, libzip, OpenSSL) does not go through these
// functions and is not made to fail here.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "host/base/allocation_failure.h"
#include "host/base/bitmap_device.h"
#include "host/oes/ses_plugin.h"
#include "support/signed_page.h"
#include "tarvik/tarvik.h"

namespace {

class AllocationFailure : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override { tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr); }
  void TearDown() override { tarvik::SetDeviceCreator(nullptr, nullptr); }
};

TEST_P(AllocationFailure, EachFailedAllocationOfASignedPageEndsCleanly) {
  // The cross and grey copies allocate too.
  tarvik::RenderSealParam::ImageParam image{.crossMark = 1, .colorMode = 1};
  const tarvik::RenderSealParam param{.image = &image};
  // Everything anew each time, so that every run allocates the same way.
  auto render = [&]() -> std::unique_ptr<host::Dib> {
    testing_support::SignedDocument doc;
    if (!doc.Open(std::string(TARVIK_SOURCE_DIR) + "/testdata/" + GetParam())) return nullptr;
    tarvik::Tarvik tarvik(&doc.document);
    host::SesPlugin plugin;
    return testing_support::RenderSignedPage(doc, tarvik, plugin, param, 0, 30);
  };
  constexpr int64_t kAll = INT64_MAX;
  host::FailNthAllocation(kAll);
  const std::unique_ptr<host::Dib> full = render();
  const int64_t count = kAll - host::FailNthAllocation(0);
  ASSERT_TRUE(full);
  ASSERT_GT(count, 0) << "the render no longer allocates through the memory functions";
  RecordProperty("allocations", std::to_string(count));
  for (int64_t n = 1; n <= count; n += std::max<int64_t>(1, count / 200)) {
    host::FailNthAllocation(n);
    const std::unique_ptr<host::Dib> page = render();
    EXPECT_EQ(host::FailNthAllocation(0), 0) << n;  // the failure did happen
    EXPECT_TRUE(!page || (page->GetWidth() == full->GetWidth() && page->GetHeight() == full->GetHeight()))
        << n;
  }
}

// A raster seal picture, and a seal that is itself an OFD package.
INSTANTIATE_TEST_SUITE_P(Samples, AllocationFailure,
                         ::testing::Values("signed_v4_png.ofd", "signed_v4_ofdseal.ofd"));

}  // namespace
