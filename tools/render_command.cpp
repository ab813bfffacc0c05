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
#include "tarvik/viewer.h"

namespace tools {

namespace {

constexpr const char* kUsage =
    "usage: tarvik render FILE.ofd [--page N] [--dpi D] [--no-seals] [--cross] [--gray|--black]\n"
    "                     [--render-mode N] [seal text options] -o OUT.png\n";

// OUT.png -> OUT-<n>.png
std::string NumberedName(const std::string& output, int number) {
  const size_t dot = output.rfind('.');
  const size_t slash = output.rfind('/');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::string stem = hasExtension ? output.substr(0, dot) : output;
  const std::string extension = hasExtension ? output.substr(dot) : ".png";
  return stem + "-" + std::to_string(number) + extension;
}

// Renders page `index` into `path`; false with a message on failure. Seals
// that cannot be read are named and the page is written without them.
bool RenderPage(const tarvik::viewer::Document& doc, const tarvik::viewer::RenderOptions& options,
                int index, const std::string& path) {
  tarvik::viewer::RenderReport report;
  std::unique_ptr<host::Dib> dib = doc.RenderPage(index, options, &report);
  for (const tarvik::viewer::SealResult& seal : report.seals) {
    if (!seal.drawn) {
      std::fprintf(stderr, "tarvik render: %s: page %d: the seal of StampAnnot %s cannot be shown: %s\n",
                   doc.Name().c_str(), index + 1, seal.stampId.c_str(), seal.reason.c_str());
    }
  }
  for (const std::string& warning : report.warnings) {
    std::fprintf(stderr, "tarvik render: %s: %s\n", doc.Name().c_str(), warning.c_str());
  }
  if (!dib) {
    std::fprintf(stderr, "tarvik render: %s\n", report.error.message.c_str());
    return false;
  }
  if (!host::WritePng(*dib, path.c_str())) {
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

  tarvik::viewer::Error error;
  const std::unique_ptr<tarvik::viewer::Document> doc = tarvik::viewer::Document::Open(input, &error);
  if (!doc) {
    std::fprintf(stderr, "tarvik render: %s\n", error.message.c_str());
    return 1;
  }
  const int count = doc->PageCount();
  if (pageNumber > count) {
    std::fprintf(stderr, "tarvik render: %s has %d page(s)\n", input.c_str(), count);
    return 1;
  }
  tarvik::viewer::RenderOptions options;
  options.dpi = dpi;
  options.seals = seals;
  options.cross = image.crossMark != 0;
  options.colorMode = image.colorMode;
  options.renderMode = image.renderMode;
  if (text.haveText) options.sealText = &text.param;

  const bool progress = isatty(STDERR_FILENO) != 0;
  const int first = pageNumber ? pageNumber - 1 : 0;
  const int last = pageNumber ? pageNumber : count;
  int failures = 0;
  for (int i = first; i < last; ++i) {
    if (progress) std::fprintf(stderr, "\rrendering page %d of %d", i + 1, count);
    const std::string path = pageNumber ? output : NumberedName(output, i + 1);
    if (!RenderPage(*doc, options, i, path)) ++failures;
  }
  if (progress) std::fputc('\n', stderr);
  return failures ? 1 : 0;
}

}  // namespace tools
