// Rendering the first page of each real document at 150 dpi, beside the
// floor for a page of that size: making the bitmap device, filling the whole
// page once with cairo and taking the bitmap. Pages/s in both.
// The documents are read from TARVIK_FIXTURE_DIR, else ../shared/fixtures/ofd
// beside the source tree; without them nothing is registered.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/base/device.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_page_render.h"

namespace {

constexpr int kDpi = 150;

// A parsed first page, kept for the whole run.
struct LoadedPage {
  std::unique_ptr<host::OfdPackage> package = std::make_unique<host::OfdPackage>();
  std::unique_ptr<host::OfdDocument> doc;
  std::unique_ptr<host::OfdPage> page;
  int width = 0, height = 0;
};

std::unique_ptr<LoadedPage> Load(const std::filesystem::path& file) {
  auto p = std::make_unique<LoadedPage>();
  if (p->package->LoadFromStream(host::StreamReader::CreateFileStreamReader(file.c_str()), 1) != 0 ||
      p->package->CountDocuments() < 1) {
    return nullptr;
  }
  p->doc = std::make_unique<host::OfdDocument>();
  if (p->doc->LoadDocument(p->package.get(), p->package->GetDocument(0), -1) != 0) return nullptr;
  p->page.reset(p->doc->LoadPage(0, 1));
  if (!p->page || !p->page->ParseContents()) return nullptr;
  p->width = static_cast<int>(p->page->GetPageWidth() * kDpi / 25.4);
  p->height = static_cast<int>(p->page->GetPageHeight() * kDpi / 25.4);
  if (!host::IsDibSizeAllowed(p->width, p->height)) return nullptr;
  return p;
}

void RenderPage(benchmark::State& state, const LoadedPage* p) {
  for (auto _ : state) {
    std::unique_ptr<host::Device> device =
        host::CreateBitmapDevice(p->width, p->height, host::kDibArgb32, 0xFFFFFFFF);
    const host::Matrix matrix = p->page->GetDisplayMatrix(0, 0, p->width, p->height, 0);
    host::RenderPageContent(p->page.get(), device.get(), matrix);
    std::unique_ptr<host::Dib> dib(device->TakeBitmap());
    benchmark::DoNotOptimize(dib.get());
  }
  state.SetItemsProcessed(state.iterations());
}

void ClearAndFill(benchmark::State& state, const LoadedPage* p) {
  host::Path rect;
  rect.AddRect(0, 0, static_cast<float>(p->width), static_cast<float>(p->height));
  for (auto _ : state) {
    std::unique_ptr<host::Device> device =
        host::CreateBitmapDevice(p->width, p->height, host::kDibArgb32, 0xFFFFFFFF);
    device->FillPath(rect, host::Matrix(), 0xFF808080, host::FillRule::kNonZero);
    std::unique_ptr<host::Dib> dib(device->TakeBitmap());
    benchmark::DoNotOptimize(dib.get());
  }
  state.SetItemsProcessed(state.iterations());
}

std::filesystem::path FixtureFolder() {
  if (const char* dir = std::getenv("TARVIK_FIXTURE_DIR")) return dir;
  return std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "shared" / "fixtures" / "ofd";
}

const bool kRegistered = [] {
  static std::vector<std::unique_ptr<LoadedPage>> pages;
  std::error_code ec;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(FixtureFolder(), ec))
    if (entry.path().extension() == ".ofd") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::unique_ptr<LoadedPage> page = Load(file);
    if (!page) continue;
    const std::string name = file.stem().string();
    benchmark::RegisterBenchmark(("BM_RenderPage/" + name).c_str(), RenderPage, page.get())
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("BM_ClearAndFillPage/" + name).c_str(), ClearAndFill, page.get())
        ->Unit(benchmark::kMillisecond);
    pages.push_back(std::move(page));
  }
  return true;
}();

}  // namespace
