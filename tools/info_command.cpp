// tarvik info: the signatures of an OFD document, where their seals lie and
// what the seal files hold.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "command.h"
#include "options.h"
#include "tarvik/viewer.h"

namespace tools {

namespace {

std::string Box(const host::GRect& r) {
  char buf[128];
  std::snprintf(buf, sizeof buf, "%g %g %g %g", static_cast<double>(r.left), static_cast<double>(r.top),
                static_cast<double>(r.Width()), static_cast<double>(r.Height()));
  return buf;
}

void PrintSignature(const tarvik::viewer::SignatureInfo& sig) {
  if (!sig.usable) {
    std::printf("signature %s, %s: cannot be used\n", sig.id.c_str(), sig.location.c_str());
    for (const std::string& p : sig.problems) std::printf("  %s\n", p.c_str());
    return;
  }
  std::printf("signature %s (%s), %s\n", sig.id.c_str(), sig.type.c_str(), sig.location.c_str());
  std::printf("  provider \"%s\", method %s, date %s, %d reference(s) by %s\n", sig.provider.c_str(),
              sig.signatureMethod.c_str(), sig.signatureDateTime.c_str(), sig.referenceCount,
              sig.checkMethod.c_str());
  for (const tarvik::viewer::StampInfo& a : sig.stamps) {
    const std::string page = a.page >= 0 ? "page " + std::to_string(a.page + 1) : "no such page";
    std::printf("  stamp %s: %s (ID %u), boundary %s, clip %s\n", a.id.c_str(), page.c_str(), a.pageId,
                Box(a.boundary).c_str(), a.clip.IsRectNull() ? "none" : Box(a.clip).c_str());
  }
  if (!sig.sealLocation.empty()) std::printf("  seal file %s\n", sig.sealLocation.c_str());
  if (!sig.signedValueLocation.empty()) std::printf("  signed value %s\n", sig.signedValueLocation.c_str());
  if (sig.sesVersion != 0) {
    std::printf("  seal v%d \"%s\", esID %s, valid %s to %s\n", sig.sesVersion, sig.sealName.c_str(),
                sig.sealId.c_str(), sig.validStart.c_str(), sig.validEnd.c_str());
    std::printf("  picture \"%s\" (%s), %dx%d mm\n", sig.pictureType.c_str(), sig.pictureFormat.c_str(),
                sig.pictureWidth, sig.pictureHeight);
    if (!sig.signingTime.empty()) std::printf("  signing time %s\n", sig.signingTime.c_str());
  }
  for (const std::string& p : sig.problems) std::printf("  problem: %s\n", p.c_str());
}

}  // namespace

int RunInfo(const std::vector<std::string>& args) {
  static const char* const kHelp =
      "usage: tarvik info FILE.ofd\n"
      "\n"
      "Lists the signatures of an OFD document, where their seals lie and what the\n"
      "seal files hold.\n"
      "\n"
      "  -h, --help   this text\n"
      "\n"
      "exit status: 0 listed, 1 the file could not be opened, 2 a usage error\n";
  ParsedArgs parsed;
  if (!ParseArgs("info", args, {}, parsed)) return kExitUsage;
  if (parsed.help) {
    std::fputs(kHelp, stdout);
    return kExitOk;
  }
  if (parsed.operands.size() != 1) {
    return UsageError("info", parsed.operands.empty() ? "no input file" : "one file at a time");
  }
  const std::string& input = parsed.operands[0];
  std::error_code ec;
  if (std::filesystem::is_directory(input, ec)) {
    std::fprintf(stderr, "tarvik info: %s: is a folder, not an OFD file\n", input.c_str());
    return kExitFailure;
  }
  tarvik::viewer::Error error;
  const std::unique_ptr<tarvik::viewer::Document> doc = tarvik::viewer::Document::Open(input, &error);
  if (!doc) {
    std::fprintf(stderr, "tarvik info: %s\n", error.message.c_str());
    return kExitFailure;
  }
  const auto& signatures = doc->Signatures();
  std::printf("%s: %d page(s), %zu signature(s)\n", doc->Name().c_str(), doc->PageCount(),
              signatures.size());
  for (const tarvik::viewer::SignatureInfo& sig : signatures) PrintSignature(sig);
  return kExitOk;
}

}  // namespace tools
