// The tarvik program: seal pictures and signed OFD documents from the command
// line.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"

namespace {

void Usage(std::FILE* out) {
  std::fputs(
      "usage: tarvik COMMAND [ARGS]\n"
      "\n"
      "commands:\n"
      "  seal FILE -o OUT.png [--dpi D] [--size WxH]\n"
      "      decode a seal picture (raster or OFD package) and write it as PNG\n"
      "  render FILE.ofd [--page N] [--dpi D] -o OUT.png\n"
      "      draw a document's pages (default: all, as OUT-1.png, OUT-2.png, ...;\n"
      "      150 dpi)\n"
      "  info FILE.ofd\n"
      "      list the signatures, where their seals lie and what the seals hold\n"
      "  digest FILE [--alg sm3|sha256|sha1|md5]\n"
      "      print a file's digest (default SM3) in hex\n"
      "  help\n"
      "      show this text\n",
      out);
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
  std::fprintf(stderr, "tarvik: unknown command '%s'\n", command.c_str());
  Usage(stderr);
  return 2;
}
