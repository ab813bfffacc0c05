// tarvik seal: decode one seal picture, seal file or signed value into a PNG.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "command.h"
#include "text_options.h"
#include "host/base/codec.h"
#include "tarvik/viewer.h"

namespace tools {

bool ReadFile(const std::string& path, std::string& out) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    std::fprintf(stderr, "tarvik: %s: is a directory\n", path.c_str());
    return false;
  }
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    std::fprintf(stderr, "tarvik: %s: cannot open (%s)\n", path.c_str(), std::strerror(errno));
    return false;
  }
  out.clear();
  char buffer[65536];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) out.append(buffer, n);
  const bool failed = std::ferror(f) != 0;
  const int code = errno;
  std::fclose(f);
  if (failed) {
    std::fprintf(stderr, "tarvik: %s: cannot read (%s)\n", path.c_str(), std::strerror(code));
    return false;
  }
  return true;
}

int RunSeal(const std::vector<std::string>& args) {
  std::string input, output;
  int dpi = 300, width = 0, height = 0;
  tarvik::RenderSealParam::ImageParam image;
  TextOptions stamp;
  bool adjusted = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    const OptionResult textOption = ParseTextOption(args, i, stamp);
    if (textOption == OptionResult::kTaken) continue;
    if (textOption == OptionResult::kBad) {
      std::fprintf(stderr, "tarvik seal: bad value for '%s'\n%s", a.c_str(), kTextOptionsUsage);
      return 2;
    }
    double radius = 0;
    if (a == "--cross") {
      image.crossMark = adjusted = true;
    } else if (a == "--gray" || a == "--grey") {
      image.colorMode = 1;
      adjusted = true;
    } else if (a == "--black") {
      image.colorMode = 2;
      adjusted = true;
    } else if (a == "--blur" && hasValue && ParseNumber(args[i + 1], 0, 1000, radius)) {
      ++i;
      image.blur = adjusted = true;
      image.blurRadius = static_cast<int>(radius);
    } else if (a == "-o" && hasValue) {
      output = args[++i];
    } else if (a == "--dpi" && hasValue) {
      dpi = std::atoi(args[++i].c_str());
    } else if (a == "--size" && hasValue) {
      if (std::sscanf(args[++i].c_str(), "%dx%d", &width, &height) != 2) {
        std::fputs("tarvik seal: --size wants WxH\n", stderr);
        return 2;
      }
      dpi = 0;
    } else if (!a.empty() && a[0] != '-' && input.empty()) {
      input = a;
    } else {
      std::fprintf(stderr, "tarvik seal: unexpected argument '%s'\n", a.c_str());
      return 2;
    }
  }
  if (input.empty() || output.empty()) {
    std::fprintf(stderr,
                 "usage: tarvik seal FILE -o OUT.png [--dpi D] [--size WxH]\n"
                 "       tarvik seal FILE -o OUT.png [--cross] [--gray|--black] [--blur R]\n"
                 "                   [--text STAMP [seal text options]]\n%s",
                 kTextOptionsUsage);
    return 2;
  }
  std::string bytes;
  if (!ReadFile(input, bytes)) return 1;

  tarvik::viewer::SealDecodeOptions options;
  options.dpi = dpi;
  options.width = width;
  options.height = height;
  // The finished picture: adjusted, then stamped.
  if (adjusted || stamp.haveText) {
    options.image = &image;
    options.stamp = &stamp.param;
  }
  tarvik::viewer::Error error;
  tarvik::viewer::SealFileKind kind = tarvik::viewer::SealFileKind::kUnknown;
  const std::unique_ptr<host::Dib> dib =
      tarvik::viewer::DecodeSeal(bytes.data(), bytes.size(), options, &error, &kind);
  if (!dib) {
    std::fprintf(stderr, "tarvik seal: %s: %s\n", input.c_str(), error.message.c_str());
    return 1;
  }
  if (!host::WritePng(*dib, output.c_str())) {
    std::fprintf(stderr, "tarvik seal: cannot write %s\n", output.c_str());
    return 1;
  }
  static const char* const kKinds[] = {"unknown", "raster", "OFD", "seal file", "signed value"};
  std::printf("%s: %s seal%s, %d x %d pixels -> %s\n", input.c_str(), kKinds[static_cast<int>(kind)],
              adjusted || stamp.haveText ? ", finished" : "", dib->GetWidth(), dib->GetHeight(),
              output.c_str());
  return 0;
}

}  // namespace tools
