// tarvik digest: the digest of a file, computed through the seal provider.
#include <cstdio>
#include <string>

#include "command.h"
#include "options.h"
#include "output.h"
#include "tarvik/viewer.h"

namespace tools {

int RunDigest(const std::vector<std::string>& args) {
  static const char* const kHelp =
      "usage: tarvik digest FILE [--alg sm3|sha256|sha1|md5]\n"
      "\n"
      "Prints the digest of a file in hexadecimal, computed by the bundled seal\n"
      "provider (default SM3).\n"
      "\n"
      "      --alg NAME   sm3, sha256, sha1 or md5\n"
      "  -h, --help       this text\n"
      "\n"
      "exit status: 0 printed, 1 the file could not be read, 2 a usage error\n";
  ParsedArgs parsed;
  static const std::vector<OptionSpec> kSpecs = {{"alg", 0, true, 1}};
  if (!ParseArgs("digest", args, kSpecs, parsed)) return kExitUsage;
  if (parsed.help) {
    std::fputs(kHelp, stdout);
    return kExitOk;
  }
  std::string algorithm = "sm3";
  for (const GivenOption& o : parsed.options) algorithm = o.value;
  if (parsed.operands.size() != 1) {
    return UsageError("digest", parsed.operands.empty() ? "no input file" : "one file at a time");
  }
  std::string unused;
  tarvik::viewer::Error error;
  if (!tarvik::viewer::Digest("", 0, algorithm, unused, &error) &&
      error.status == tarvik::viewer::Status::kUnsupported) {
    return UsageError("digest", "--alg: '" + algorithm + "' is not one of sm3, sha256, sha1, md5");
  }
  const std::string& input = parsed.operands[0];
  std::string bytes, why;
  if (!ReadWholeFile(input, bytes, why)) {
    std::fprintf(stderr, "tarvik digest: %s\n", why.c_str());
    return kExitFailure;
  }
  std::string digest;
  if (!tarvik::viewer::Digest(bytes.data(), bytes.size(), algorithm, digest, &error)) {
    std::fprintf(stderr, "tarvik digest: %s: %s\n", input.c_str(), error.message.c_str());
    return kExitFailure;
  }
  for (unsigned char c : digest) std::printf("%02x", c);
  std::printf("\n");
  return kExitOk;
}

}  // namespace tools
