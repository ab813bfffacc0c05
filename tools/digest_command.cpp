// tarvik digest: the digest of a file, computed through the seal provider.
#include <cstdio>
#include <limits>
#include <string>

#include "command.h"
#include "host/base/binary_buf.h"
#include "host/oes/ses_plugin.h"
#include "tarvik/tarvik.h"

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
  if (bytes.size() > std::numeric_limits<unsigned int>::max()) {
    std::fprintf(stderr, "tarvik digest: %s is too large\n", input.c_str());
    return 1;
  }
  host::SesPlugin plugin;
  host::BinaryBuf digest;
  const int result = tarvik::CalcDigest(reinterpret_cast<unsigned char*>(bytes.data()),
                                        static_cast<unsigned int>(bytes.size()), algorithm.c_str(),
                                        &plugin, nullptr, digest);
  if (result != 0) {
    std::fprintf(stderr, "tarvik digest: unknown or failed algorithm '%s' (code %d)\n",
                 algorithm.c_str(), result);
    return 1;
  }
  for (int i = 0; i < digest.GetSize(); ++i) std::printf("%02x", digest.GetBuffer()[i]);
  std::printf("\n");
  return 0;
}

}  // namespace tools
