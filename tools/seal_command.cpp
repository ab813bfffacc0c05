// tarvik seal: decode one seal picture into a PNG.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "command.h"
#include "text_options.h"
#include "host/base/codec.h"
#include "host/base/device.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_package.h"
#include "tarvik/tarvik.h"

namespace tools {

bool ReadFile(const std::string& path, std::string& out) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "tarvik: cannot open %s\n", path.c_str());
    return false;
  }
  out.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

bool OpenPackage(const std::string& path, const char* command, host::OfdPackage& package) {
  host::StreamReader* reader = host::StreamReader::CreateFileStreamReader(path.c_str());
  if (!reader) {
    std::fprintf(stderr, "tarvik %s: cannot open %s\n", command, path.c_str());
    return false;
  }
  if (package.LoadFromStream(reader, 1) != 0 || package.CountDocuments() < 1) {
    std::fprintf(stderr, "tarvik %s: %s is not an OFD package\n", command, path.c_str());
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

  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  auto* data = reinterpret_cast<unsigned char*>(bytes.data());
  const auto length = static_cast<unsigned int>(bytes.size());
  bool isOfd = false;
  std::unique_ptr<host::Dib> dib;
  if (adjusted || stamp.haveText) {
    // The finished picture: adjusted, then stamped (an OFD seal at 300 dpi).
    tarvik::RenderSealParam param;
    param.image = &image;
    param.text = &stamp.param;
    dib.reset(tarvik::RenderSealImageWithStamp(data, length, param));
  } else {
    dib.reset(tarvik::ParseSealImage(data, length, width, height, dpi, isOfd));
  }
  if (!dib) {
    std::fprintf(stderr, "tarvik seal: %s is not a seal picture that can be decoded\n",
                 input.c_str());
    return 1;
  }
  if (!host::WritePng(*dib, output.c_str())) {
    std::fprintf(stderr, "tarvik seal: cannot write %s\n", output.c_str());
    return 1;
  }
  const char* kind = adjusted || stamp.haveText ? "finished" : isOfd ? "OFD" : "raster";
  std::printf("%s: %s seal, %d x %d pixels -> %s\n", input.c_str(), kind, dib->GetWidth(),
              dib->GetHeight(), output.c_str());
  return 0;
}

}  // namespace tools
