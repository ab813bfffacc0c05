// Renders one page of an OFD document, with its seals, into a PNG file.
//   render_page FILE.ofd OUT.png [PAGE] [DPI]
#include <cstdio>
#include <cstdlib>

#include <host/base/codec.h>
#include <tarvik/viewer.h>

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: %s FILE.ofd OUT.png [PAGE] [DPI]\n", argv[0]);
    return 2;
  }
  const int page = argc > 3 ? std::atoi(argv[3]) : 1;
  tarvik::viewer::RenderOptions options;
  options.dpi = argc > 4 ? std::atof(argv[4]) : 150;

  tarvik::viewer::Error error;
  auto doc = tarvik::viewer::Document::Open(argv[1], &error);
  if (!doc) {
    std::fprintf(stderr, "%s\n", error.message.c_str());
    return 1;
  }
  tarvik::viewer::RenderReport report;
  auto bitmap = doc->RenderPage(page - 1, options, &report);
  if (!bitmap) {
    std::fprintf(stderr, "%s\n", report.error.message.c_str());
    return 1;
  }
  for (const auto& seal : report.seals) {
    std::printf("seal %s: %s%s\n", seal.stampId.c_str(), seal.drawn ? "drawn" : "not drawn: ",
                seal.reason.c_str());
  }
  if (!host::WritePng(*bitmap, argv[2])) {
    std::fprintf(stderr, "cannot write %s\n", argv[2]);
    return 1;
  }
  std::printf("%s: page %d of %d, %d x %d pixels\n", argv[2], page, doc->PageCount(), report.width,
              report.height);
  return 0;
}
