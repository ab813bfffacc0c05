// tarvik digest: the digest of a file, computed through the seal provider.
#include <cstdio>
#include <limits>
#include <string>

#include "command.h"
#include "tarvik/viewer.h"

namespace tools {

int RunDigest(const std::vector<std::string>& args) {
  std::string input, algorithm = "sm3";
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--alg" && i + 1 < args.size()) {
      algorithm = args[++i];
    } else if (!args[i].empty() && args[i][0] != '-' && input.empty()) {
      input = args[i];
    } else {
      std::fprintf(stderr, "tarvik digest: unexpected argument '%s'\n", args[i].c_str());
      return 2;
    }
  }
  if (input.empty()) {
    std::fputs("usage: tarvik digest FILE [--alg sm3|sha256|sha1|md5]\n", stderr);
    return 2;
  }
  std::string bytes;
  if (!ReadFile(input, bytes)) return 1;
  std::string digest;
  tarvik::viewer::Error error;
  if (!tarvik::viewer::Digest(bytes.data(), bytes.size(), algorithm, digest, &error)) {
    std::fprintf(stderr, "tarvik digest: %s\n", error.message.c_str());
    return 1;
  }
  for (unsigned char c : digest) std::printf("%02x", c);
  std::printf("\n");
  return 0;
}

}  // namespace tools
