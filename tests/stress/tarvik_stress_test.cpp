// Many threads drawing signed pages through one Tarvik: every result must be
// pixel-identical to a single-threaded rendering, and a raster seal is read
// through the provider only by the threads that raced for the empty cache.
// Also the font manager's configuration loading racing its lookups.
// Built on its own so that a ThreadSanitizer build needs nothing else.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/base/bitmap_device.h"
#include "host/base/font_mgr.h"
#include "host/oes/ses_plugin.h"
#include "support/signed_page.h"
#include "tarvik/tarvik.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRendersPerThread = 40;
constexpr int kDpi = 30;

// The SES provider, counting the seal picture requests it answers.
class CountingPlugin : public host::SesPlugin {
 public:
  std::atomic<int> requests{0};
  int GetCombinedSealImage(const std::string& p, const std::string& s, std::string& picture,
                           std::string& type, int& width, int& height) override {
    ++requests;
    return SesPlugin::GetCombinedSealImage(p, s, picture, type, width, height);
  }
  int GetSecondarySealImage(void* user, const std::string& s, int mode, std::string& picture,
                            std::string& type, int& width, int& height) override {
    ++requests;
    return SesPlugin::GetSecondarySealImage(user, s, mode, picture, type, width, height);
  }
  int GetPrimarySealImage(void* user, const std::string& p, int mode, std::string& picture,
                          std::string& type, int& width, int& height) override {
    ++requests;
    return SesPlugin::GetPrimarySealImage(user, p, mode, picture, type, width, height);
  }
};

using ImageParam = tarvik::RenderSealParam::ImageParam;
using testing_support::SignedDocument;

// Seal pictures as decoded, crossed, grey, black, and crossed and grey.
const ImageParam kVariants[] = {
    {}, {.crossMark = 1}, {.colorMode = 1}, {.colorMode = 2}, {.crossMark = 1, .colorMode = 1}};
constexpr int kVariantCount = static_cast<int>(std::size(kVariants));

std::unique_ptr<host::Dib> Render(SignedDocument& doc, tarvik::Tarvik& tarvik, host::OESPlugin& plugin,
                                  ImageParam image) {
  return testing_support::RenderSignedPage(doc, tarvik, plugin, {.image = &image}, 0, kDpi);
}

// Pages are 32-bit: rows without padding.
bool SamePixels(const host::Dib& a, const host::Dib& b) {
  return a.GetWidth() == b.GetWidth() && a.GetHeight() == b.GetHeight() &&
         std::memcmp(a.GetBuffer(), b.GetBuffer(), static_cast<size_t>(a.GetPitch()) * a.GetHeight()) == 0;
}

struct StressCase {
  const char* file;
  bool raster;  // raster seals are cached; OFD seals are drawn afresh each time
};

class TarvikStress : public ::testing::TestWithParam<StressCase> {
 protected:
  void SetUp() override { tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr); }
  void TearDown() override { tarvik::SetDeviceCreator(nullptr, nullptr); }
};

TEST_P(TarvikStress, ThreadsDrawWhatOneThreadDraws) {
  const StressCase& c = GetParam();
  SignedDocument doc;
  ASSERT_TRUE(doc.Open(std::string(TARVIK_SOURCE_DIR) + "/testdata/" + c.file));

  std::vector<std::unique_ptr<host::Dib>> expected;
  int requestsPerRead = 0;  // the provider may be asked more than once per reading
  {
    tarvik::Tarvik single(&doc.document);
    CountingPlugin plugin;
    for (const ImageParam& v : kVariants) {
      expected.push_back(Render(doc, single, plugin, v));
      ASSERT_TRUE(expected.back());
      if (requestsPerRead == 0) requestsPerRead = plugin.requests.load();
    }
    ASSERT_GT(requestsPerRead, 0);
    // Without seals the page would look the same for every variant.
    ASSERT_FALSE(SamePixels(*expected[0], *expected[1]));
  }

  tarvik::Tarvik shared(&doc.document);
  CountingPlugin plugin;
  std::atomic<int> wrong{0};  // renders that failed or differ
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int k = 0; k < kRendersPerThread; ++k) {
        const int v = (t * 3 + k) % kVariantCount;
        std::unique_ptr<host::Dib> dib = Render(doc, shared, plugin, kVariants[v]);
        if (!dib || !SamePixels(*dib, *expected[v])) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);

  const int requests = plugin.requests.load();
  const int renders = kThreads * kRendersPerThread;
  if (c.raster) {
    // Only threads that found the cache empty asked; one of them won.
    EXPECT_GE(requests, requestsPerRead);
    EXPECT_LE(requests, kThreads * requestsPerRead);
    Render(doc, shared, plugin, kVariants[0]);
    EXPECT_EQ(plugin.requests.load(), requests);
  } else {
    EXPECT_EQ(requests, renders * requestsPerRead);
  }
}

INSTANTIATE_TEST_SUITE_P(Seals, TarvikStress,
                         ::testing::Values(StressCase{"signed_v4_png.ofd", true},
                                           StressCase{"signed_v1_png.ofd", true},
                                           StressCase{"signed_v4_ofdseal.ofd", false}),
                         [](const auto& info) {
                           return std::string(info.param.file, std::strchr(info.param.file, '.'));
                         });

}  // namespace

// Font configuration loading on a thread of its own while other threads
// look faces up, and a manager destroyed while it still loads.
TEST(FontMgrStress, PreparedWhileLookedUp) {
  host::FontMgr().Prepare();
  host::FontMgr fonts;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      fonts.Prepare();
      EXPECT_TRUE(fonts.FindFace("SimSun", 400, false));
    });
  }
  for (std::thread& thread : threads) thread.join();
}
