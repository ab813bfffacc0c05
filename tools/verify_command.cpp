// tarvik verify: the verdict on every signature of a document, and why.
#include <cstdio>
#include <memory>
#include <string>

#include "command.h"
#include "json_text.h"
#include "options.h"
#include "tarvik/viewer.h"

namespace tools {

namespace {

using tarvik::viewer::CheckResult;
using tarvik::viewer::SignatureInfo;
using tarvik::viewer::Verdict;

constexpr const char* kHelp =
    "usage: tarvik verify FILE.ofd [--json] [--trust CERTS]\n"
    "\n"
    "Verifies every signature of a document: the signed files against their\n"
    "digests, the signature value, the seal and its validity, the certificates.\n"
    "Verdicts: valid (everything holds and the signer chains to a trust anchor),\n"
    "intact (everything holds; no trust anchors given), invalid (a file changed\n"
    "or missing, a signature that does not verify, a seal out of date), unknown\n"
    "(cannot be checked; the reason says why).\n"
    "\n"
    "      --json          one JSON object with every check\n"
    "      --trust CERTS   trust anchors: a PEM file or a directory of them\n"
    "  -h, --help          this text\n"
    "\n"
    "exit status: 0 every signature valid or intact, 1 any other verdict or a\n"
    "file that cannot be read, 2 a usage error\n";

const char* OutcomeName(CheckResult::Outcome o) {
  switch (o) {
    case CheckResult::Outcome::kPassed: return "passed";
    case CheckResult::Outcome::kFailed: return "failed";
    case CheckResult::Outcome::kNotChecked: break;
  }
  return "not checked";
}

std::string List(const std::vector<std::string>& items) {
  std::string out = "[";
  for (size_t i = 0; i < items.size(); ++i) out += (i ? ", " : "") + JsonQuote(items[i]);
  return out + "]";
}

// References checked: those that neither changed nor are missing, of all.
std::string ReferencesLine(const SignatureInfo& sig) {
  const int bad = static_cast<int>(sig.changedFiles.size() + sig.missingFiles.size());
  return std::to_string(sig.referenceCount - bad) + " of " + std::to_string(sig.referenceCount) +
         " signed files match";
}

void PrintText(const SignatureInfo& sig) {
  std::printf("signature %s (%s): %s\n", sig.id.c_str(), sig.location.c_str(),
              tarvik::viewer::VerdictName(sig.verdict));
  if (!sig.verdictReason.empty()) std::printf("  reason: %s\n", sig.verdictReason.c_str());
  if (!sig.signer.empty()) std::printf("  signer: %s\n", sig.signer.c_str());
  if (!sig.sealName.empty()) {
    std::printf("  seal: %s, valid %s to %s\n", sig.sealName.c_str(), sig.validStart.c_str(),
                sig.validEnd.c_str());
  }
  const std::string& time = sig.verifiedSigningTime.empty() ? sig.signatureDateTime : sig.verifiedSigningTime;
  if (!time.empty()) std::printf("  signed: %s\n", time.c_str());
  if (!sig.timeStampTime.empty()) std::printf("  time stamp: %s\n", sig.timeStampTime.c_str());
  if (sig.usable) std::printf("  files: %s\n", ReferencesLine(sig).c_str());
  for (const std::string& f : sig.changedFiles) std::printf("    changed: %s\n", f.c_str());
  for (const std::string& f : sig.missingFiles) std::printf("    missing: %s\n", f.c_str());
  for (const CheckResult& c : sig.checks) {
    if (c.outcome == CheckResult::Outcome::kPassed) continue;
    std::printf("  %s %s: %s\n", c.name.c_str(), OutcomeName(c.outcome), c.detail.c_str());
  }
}

std::string Json(const SignatureInfo& sig) {
  std::string out = "{\"id\": " + JsonQuote(sig.id) + ", \"location\": " + JsonQuote(sig.location) +
                    ", \"verdict\": " + JsonQuote(tarvik::viewer::VerdictName(sig.verdict)) +
                    ", \"reason\": " + JsonQuote(sig.verdictReason) + ", \"signer\": " + JsonQuote(sig.signer) +
                    ", \"seal\": " + JsonQuote(sig.sealName) + ", \"validStart\": " + JsonQuote(sig.validStart) +
                    ", \"validEnd\": " + JsonQuote(sig.validEnd) +
                    ", \"signingTime\": " + JsonQuote(sig.verifiedSigningTime) +
                    ", \"timeStamp\": " + JsonQuote(sig.timeStampTime) +
                    ", \"trusted\": " + (sig.trusted ? "true" : "false") +
                    ", \"references\": " + std::to_string(sig.referenceCount) +
                    ", \"changed\": " + List(sig.changedFiles) + ", \"missing\": " + List(sig.missingFiles) +
                    ", \"checks\": [";
  for (size_t i = 0; i < sig.checks.size(); ++i) {
    const CheckResult& c = sig.checks[i];
    out += std::string(i ? ", " : "") + "{\"name\": " + JsonQuote(c.name) + ", \"result\": " +
           JsonQuote(OutcomeName(c.outcome)) + ", \"detail\": " + JsonQuote(c.detail) + "}";
  }
  return out + "]}";
}

}  // namespace

int RunVerify(const std::vector<std::string>& args) {
  enum { kJson = 1, kTrust };
  static const std::vector<OptionSpec> kSpecs = {{"json", 0, false, kJson}, {"trust", 0, true, kTrust}};
  ParsedArgs parsed;
  if (!ParseArgs("verify", args, kSpecs, parsed)) return kExitUsage;
  if (parsed.help) {
    std::fputs(kHelp, stdout);
    return kExitOk;
  }
  bool json = false;
  tarvik::viewer::OpenOptions open;
  for (const GivenOption& o : parsed.options) {
    if (o.spec->id == kJson) json = true;
    if (o.spec->id == kTrust) open.trustAnchors = o.value;
  }
  if (parsed.operands.size() != 1) {
    return UsageError("verify", parsed.operands.empty() ? "no input file" : "one file at a time");
  }
  tarvik::viewer::Error error;
  const auto doc = tarvik::viewer::Document::Open(parsed.operands[0], &error, open);
  if (!doc) {
    std::fprintf(stderr, "tarvik verify: %s\n", error.message.c_str());
    return kExitFailure;
  }
  bool allGood = true;
  const auto& signatures = doc->Signatures();
  for (const SignatureInfo& sig : signatures) {
    allGood = allGood && (sig.verdict == Verdict::kValid || sig.verdict == Verdict::kIntact);
  }
  if (json) {
    std::string out = "{\"file\": " + JsonQuote(doc->Name()) + ", \"signatures\": [";
    for (size_t i = 0; i < signatures.size(); ++i) out += (i ? ",\n  " : "\n  ") + Json(signatures[i]);
    out += signatures.empty() ? "]}\n" : "\n]}\n";
    std::fputs(out.c_str(), stdout);
  } else {
    std::printf("%s: %zu signature(s)\n", doc->Name().c_str(), signatures.size());
    for (const SignatureInfo& sig : signatures) PrintText(sig);
  }
  return allGood ? kExitOk : kExitFailure;
}

}  // namespace tools
