// tarvik seal: decode one seal picture into a PNG.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

#include "command.h"
#include "host/base/codec.h"
#include "host/base/device.h"
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

int RunSeal(const std::vector<std::string>& args) {
  std::string input, output;
  int dpi = 300, width = 0, height = 0;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool hasValue = i + 1 < args.size();
    if (a == "-o" && hasValue) {
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
    std::fputs("usage: tarvik seal FILE -o OUT.png [--dpi D] [--size WxH]\n", stderr);
    return 2;
  }
  std::string bytes;
  if (!ReadFile(input, bytes)) return 1;

  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  bool isOfd = false;
  std::unique_ptr<host::Dib> dib(
      tarvik::ParseSealImage(reinterpret_cast<unsigned char*>(bytes.data()),
                             static_cast<unsigned int>(bytes.size()), width, height, dpi, isOfd));
  if (!dib) {
    std::fprintf(stderr, "tarvik seal: %s is not a seal picture that can be decoded\n",
                 input.c_str());
    return 1;
  }
  if (!host::WritePng(*dib, output.c_str())) {
    std::fprintf(stderr, "tarvik seal: cannot write %s\n", output.c_str());
    return 1;
  }
  std::printf("%s: %s seal, %d x %d pixels -> %s\n", input.c_str(), isOfd ? "OFD" : "raster",
              dib->GetWidth(), dib->GetHeight(), output.c_str());
  return 0;
}

}  // namespace tools
