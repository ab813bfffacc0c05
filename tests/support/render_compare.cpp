#include "support/render_compare.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <tuple>

#include "host/base/app_context.h"
#include "host/base/codec.h"
#include "host/base/font_mgr.h"
#include "host/base/stream_reader.h"

namespace testing_support {

namespace {

int Channel(uint32_t argb, int shift) { return static_cast<int>((argb >> shift) & 0xFF); }

// The largest channel difference between two 0xAARRGGBB values.
int Difference(uint32_t a, uint32_t b) {
  int d = 0;
  for (int shift = 0; shift < 32; shift += 8) d = std::max(d, std::abs(Channel(a, shift) - Channel(b, shift)));
  return d;
}

// Red where pixels differ (brighter for larger differences), a faded grey
// copy of the reference elsewhere.
std::unique_ptr<host::Dib> DiffImage(const host::Dib& actual, const host::Dib& expected) {
  auto diff = host::Dib::Create(actual.GetWidth(), actual.GetHeight(), host::kDibArgb32);
  for (int y = 0; y < actual.GetHeight(); ++y) {
    for (int x = 0; x < actual.GetWidth(); ++x) {
      const uint32_t e = expected.GetPixel({x, y});
      const int d = Difference(actual.GetPixel({x, y}), e);
      const auto grey = static_cast<uint32_t>(192 + (Channel(e, 16) + Channel(e, 8) + Channel(e, 0)) / 12);
      diff->SetPixel({x, y}, d > 0 ? 0xFF000000u | static_cast<uint32_t>(std::min(255, 128 + d)) << 16
                                   : 0xFF000000u | grey * 0x010101u);
    }
  }
  return diff;
}

}  // namespace

bool HasReferenceCjkFont() {
  for (int weight : {400, 700}) {
    int faceIndex = 0;
    const std::string file = host::AppContext::Get()->GetFontMgr()->ResolveFile(
        "WenQuanYi Zen Hei", weight, false, &faceIndex);
    if (file.find("wqy-zenhei") == std::string::npos) return false;
  }
  return true;
}

::testing::AssertionResult CompareWithReference(const host::Dib& actual, const std::string& name,
                                                int tolerance) {
  namespace fs = std::filesystem;
  const fs::path reference = fs::path(TARVIK_REFERENCE_DIR) / (name + ".png");
  const fs::path outDir = fs::path(TARVIK_TEST_OUTPUT_DIR);
  const char* update = std::getenv("TARVIK_UPDATE_REFERENCES");
  const bool exists = fs::exists(reference);
  if (!exists || (update && std::string(update) == "1")) {
    std::error_code ec;
    fs::create_directories(reference.parent_path(), ec);
    if (!host::WritePng(actual, reference.c_str()))
      return ::testing::AssertionFailure() << "cannot write reference " << reference;
    if (!exists) return ::testing::AssertionFailure() << "reference was missing; wrote " << reference << " for review";
    return ::testing::AssertionSuccess() << "updated " << reference;
  }

  host::StreamReaderPtr reader(host::StreamReader::CreateFileStreamReader(reference.c_str()));
  std::unique_ptr<host::Dib> expected = reader ? host::DecodeImage(reader.get()) : nullptr;
  if (!expected) return ::testing::AssertionFailure() << "cannot decode " << reference;

  ::testing::AssertionResult result = ::testing::AssertionSuccess();
  if (expected->GetWidth() != actual.GetWidth() || expected->GetHeight() != actual.GetHeight()) {
    result = ::testing::AssertionFailure()
             << name << ": size " << actual.GetWidth() << "x" << actual.GetHeight()
             << ", reference " << expected->GetWidth() << "x" << expected->GetHeight();
  } else {
    int worst = 0, count = 0, worstX = 0, worstY = 0;
    for (int y = 0; y < actual.GetHeight(); ++y) {
      for (int x = 0; x < actual.GetWidth(); ++x) {
        const int d = Difference(actual.GetPixel({x, y}), expected->GetPixel({x, y}));
        count += d > tolerance;
        if (d > worst) std::tie(worst, worstX, worstY) = std::tuple(d, x, y);
      }
    }
    if (count == 0) return result;
    result = ::testing::AssertionFailure()
             << name << ": " << count << " pixels differ by more than " << tolerance
             << "; largest difference " << worst << " at (" << worstX << ", " << worstY << ")";
  }

  std::error_code ec;
  fs::create_directories(outDir, ec);
  const fs::path out = outDir / (name + ".out.png");
  host::WritePng(actual, out.c_str());
  result << "; wrote " << out;
  if (expected->GetWidth() == actual.GetWidth() && expected->GetHeight() == actual.GetHeight()) {
    const fs::path diffPath = outDir / (name + ".diff.png");
    if (host::WritePng(*DiffImage(actual, *expected), diffPath.c_str())) result << " and " << diffPath;
  }
  return result;
}

}  // namespace testing_support
