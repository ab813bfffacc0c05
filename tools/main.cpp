// The tarvik program: seal pictures and signed OFD documents from the command
// line.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "text_options.h"

namespace {

void Usage(std::FILE* out) {
  std::fputs(
      "usage: tarvik COMMAND [ARGS]\n"
      "\n"
      "commands:\n"
      "  seal FILE -o OUT.png [--dpi D] [--size WxH]\n"
      "      decode a seal picture (raster or OFD package) and write it as PNG\n"
      "  seal FILE -o OUT.png [--cross] [--gray|--black] [--blur R] [--text STAMP ...]\n"
      "      the finished seal picture: adjusted, with stamp text over it\n"
      "  render FILE.ofd [--page N] [--dpi D] [--no-seals] [--cross] [--gray|--black]\n"
      "       [--render-mode N] [seal text options] -o OUT.png\n"
      "      draw a document's pages with their signatures' seals (default: all\n"
      "      pages, as OUT-1.png, OUT-2.png, ...; 150 dpi)\n"
      "  info FILE.ofd\n"
      "      list the signatures, where their seals lie and what the seals hold\n"
      "  digest FILE [--alg sm3|sha256|sha1|md5]\n"
      "      print a file's digest (default SM3) in hex\n"
      "  text FILE.ofd --text TEXT [seal text options]\n"
      "      print where the text goes on each seal, as JSON (page millimetres)\n"
      "  help\n"
      "      show this text\n"
      "\n",
      out);
  std::fputs(tools::kTextOptionsUsage, out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    Usage(stderr);
    return 2;
  }
  const std::string command = argv[1];
  std::vector<std::string> args(argv + 2, argv + argc);
  if (command == "help" || command == "--help" || command == "-h") {
    Usage(stdout);
    return 0;
  }
  if (command == "seal") return tools::RunSeal(args);
  if (command == "render") return tools::RunRender(args);
  if (command == "info") return tools::RunInfo(args);
  if (command == "digest") return tools::RunDigest(args);
  if (command == "text") return tools::RunText(args);
  std::fprintf(stderr, "tarvik: unknown command '%s'\n", command.c_str());
  Usage(stderr);
  return 2;
}
