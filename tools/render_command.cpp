// tarvik render: draw the pages of an OFD document into PNG files.
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "command.h"
#include "text_options.h"
#include "host/base/codec.h"
#include "host/base/device.h"
#include "host/base/bitmap_device.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "host/render/ofd_page_render.h"
#include "tarvik/tarvik.h"

namespace tools {

namespace {

constexpr const char* kUsage =
    "usage: tarvik render FILE.ofd [--page N] [--dpi D] [--no-seals] [--cross] [--gray|--black]\n"
    "                     [--render-mode N] [seal text options] -o OUT.png\n";

// What the whole run shares: the document's seal drawing and its signatures.
struct SealRun {
  tarvik::Tarvik* tarvik = nullptr;
  const host::OfdSignatures* signatures = nullptr;  // null: draw no seals
  host::OESPlugin* plugin = nullptr;
  tarvik::RenderSealParam param;
};

// Reads a seal's picture once before drawing, so that a seal that cannot be
// shown is named; a raster picture read here goes straight into the cache.
bool SealReadable(const SealRun& run, const host::OfdAnnotationSeal& seal) {
  if (!seal.sealMedia) return false;
  const host::OfdMultiMedia* media = seal.sealMedia.get();
  const int mode = run.param.image->renderMode;
  if (mode == 0 && run.tarvik->GetCachedSealImage(media)) return true;
  bool isOfd = false;
  std::unique_ptr<host::Dib> dib(
      tarvik::ParseSealImage(media, mode, run.plugin, nullptr, 1, 1, 0, isOfd));
  if (!dib) return false;
  if (!isOfd && mode == 0 && run.tarvik->AddSealImageToCache(media, dib.get())) dib.release();
  return true;
}

// Draws the seals that signatures put on `page`, above its content.
void DrawSeals(const SealRun& run, host::OfdPage* page, host::Device* device,
               const host::Matrix& matrix) {
  if (!run.signatures || run.signatures->AttachSealAnnotations(page) == 0) return;
  for (host::OfdAnnotationSeal* seal : page->GetSealAnnotations()) {
    if (!SealReadable(run, *seal)) {
      std::fprintf(stderr, "tarvik render: the seal of signature annotation %u on page %d cannot be read\n",
                   seal->id, page->GetPageIndex() + 1);
    }
    run.tarvik->RenderSignature(page, run.plugin, nullptr, seal, run.param, device, matrix);
  }
}

// OUT.png -> OUT-<n>.png
std::string NumberedName(const std::string& output, int number) {
  const size_t dot = output.rfind('.');
  const size_t slash = output.rfind('/');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::string stem = hasExtension ? output.substr(0, dot) : output;
  const std::string extension = hasExtension ? output.substr(dot) : ".png";
  return stem + "-" + std::to_string(number) + extension;
}

// Renders page `index` at `dpi` into `path`; false with a message on failure.
bool RenderPage(host::OfdDocument& doc, const SealRun& run, int index, int dpi,
                const std::string& path) {
  std::unique_ptr<host::OfdPage> page(doc.LoadPage(index, 1));
  if (!page || !page->ParseContents()) {
    std::fprintf(stderr, "tarvik render: page %d cannot be read\n", index + 1);
    return false;
  }
  const double width = std::trunc(page->GetPageWidth() * dpi / 25.4);
  const double height = std::trunc(page->GetPageHeight() * dpi / 25.4);
  if (!host::IsDibSizeAllowed(static_cast<int64_t>(width), static_cast<int64_t>(height))) {
    std::fprintf(stderr, "tarvik render: page %d is too large at %d dpi\n", index + 1, dpi);
    return false;
  }
  const int w = static_cast<int>(width), h = static_cast<int>(height);
  std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(w, h, host::kDibArgb32, 0xFFFFFFFF);
  if (!device) {
    std::fputs("tarvik render: out of memory\n", stderr);
    return false;
  }
  const host::Matrix matrix = page->GetDisplayMatrix(0, 0, w, h, 0);
  std::string stopped;
  if (host::RenderPageContent(page.get(), device.get(), matrix, host::RenderLimits(), &stopped) !=
      host::RenderStop::kNone) {
    std::fprintf(stderr, "tarvik render: %s; the page is drawn only in part\n", stopped.c_str());
  }
  DrawSeals(run, page.get(), device.get(), matrix);
  std::unique_ptr<host::Dib> dib(device->TakeBitmap());
  if (!dib || !host::WritePng(*dib, path.c_str())) {
    std::fprintf(stderr, "tarvik render: cannot write %s\n", path.c_str());
    return false;
  }
  return true;
}

}  // namespace

int RunRender(const std::vector<std::string>& args) {
  std::string input, output;
  int dpi = 150, pageNumber = 0;
  bool seals = true;
  tarvik::RenderSealParam::ImageParam image;
  TextOptions text;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    const OptionResult textOption = ParseTextOption(args, i, text);
    if (textOption == OptionResult::kTaken) continue;
    if (textOption == OptionResult::kBad) {
      std::fprintf(stderr, "tarvik render: bad value for '%s'\n%s", a.c_str(), kTextOptionsUsage);
      return 2;
    }
    if (a == "-o" && hasValue) {
      output = args[++i];
    } else if (a == "--dpi" && hasValue) {
      dpi = std::atoi(args[++i].c_str());
    } else if (a == "--page" && hasValue) {
      pageNumber = std::atoi(args[++i].c_str());
      if (pageNumber < 1) {
        std::fputs("tarvik render: --page counts from 1\n", stderr);
        return 2;
      }
    } else if (a == "--no-seals") {
      seals = false;
    } else if (a == "--cross") {
      image.crossMark = 1;
    } else if (a == "--gray" || a == "--grey") {
      image.colorMode = 1;
    } else if (a == "--black") {
      image.colorMode = 2;
    } else if (a == "--render-mode" && hasValue) {
      image.renderMode = std::atoi(args[++i].c_str());
    } else if (!a.empty() && a[0] != '-' && input.empty()) {
      input = a;
    } else {
      std::fprintf(stderr, "tarvik render: unexpected argument '%s'\n", a.c_str());
      return 2;
    }
  }
  if (input.empty() || output.empty()) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  if (dpi < 1 || dpi > 2400) {
    std::fputs("tarvik render: --dpi wants 1 to 2400\n", stderr);
    return 2;
  }

  host::OfdPackage package;
  if (!OpenPackage(input, "render", package)) return 1;
  host::OfdDocument doc;
  if (doc.LoadDocument(&package, package.GetDocument(0), -1) != 0) {
    std::fprintf(stderr, "tarvik render: %s is not a readable OFD document\n", input.c_str());
    return 1;
  }
  const int count = doc.CountPages();
  if (pageNumber > count) {
    std::fprintf(stderr, "tarvik render: the document has %d page(s)\n", count);
    return 1;
  }
  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  tarvik::Tarvik sealDrawing(&doc);
  host::SesPlugin plugin;
  std::unique_ptr<host::OfdSignatures> signatures;
  if (seals) signatures = host::OfdSignatures::Load(&doc);
  SealRun run;
  run.tarvik = &sealDrawing;
  run.signatures = signatures.get();
  run.plugin = &plugin;
  run.param.image = &image;
  if (text.haveText) run.param.text = &text.param;

  const bool progress = isatty(STDERR_FILENO) != 0;
  const int first = pageNumber ? pageNumber - 1 : 0;
  const int last = pageNumber ? pageNumber : count;
  int failures = 0;
  for (int i = first; i < last; ++i) {
    if (progress) std::fprintf(stderr, "\rrendering page %d of %d", i + 1, count);
    const std::string path = pageNumber ? output : NumberedName(output, i + 1);
    if (!RenderPage(doc, run, i, dpi, path)) ++failures;
  }
  if (progress) std::fputc('\n', stderr);
  return failures ? 1 : 0;
}

}  // namespace tools
