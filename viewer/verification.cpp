#include "verification.h"

#include "host/verify/signature_verifier.h"

namespace tarvik::viewer {

namespace {

Verdict VerdictOf(host::VerifyStatus status) {
  switch (status) {
    case host::VerifyStatus::kValid: return Verdict::kValid;
    case host::VerifyStatus::kIntact: return Verdict::kIntact;
    case host::VerifyStatus::kInvalid: return Verdict::kInvalid;
    case host::VerifyStatus::kUnknown: break;
  }
  return Verdict::kUnknown;
}

CheckResult::Outcome OutcomeOf(host::CheckOutcome outcome) {
  switch (outcome) {
    case host::CheckOutcome::kPassed: return CheckResult::Outcome::kPassed;
    case host::CheckOutcome::kFailed: return CheckResult::Outcome::kFailed;
    case host::CheckOutcome::kNotChecked: break;
  }
  return CheckResult::Outcome::kNotChecked;
}

}  // namespace

void VerifyAll(host::OfdPackage& package, const host::OfdDocument& document,
               const std::string& trustAnchors, std::vector<SignatureInfo>& list) {
  host::VerifyOptions options;
  options.trustAnchors = trustAnchors;
  const std::vector<host::SignatureVerdict> verdicts =
      host::VerifySignatures(package, document, options);
  for (SignatureInfo& info : list) {
    if (!info.usable) {
      info.verdict = Verdict::kUnknown;
      info.verdictReason = info.problems.empty() ? "the signature cannot be read" : info.problems[0];
      continue;
    }
    for (const host::SignatureVerdict& v : verdicts) {
      if (v.location != info.location) continue;
      info.verdict = VerdictOf(v.status);
      info.verdictReason = v.reason;
      info.signer = v.signer;
      info.checks.clear();
      for (const host::VerifyCheck& c : v.checks) info.checks.push_back({c.name, OutcomeOf(c.outcome), c.detail});
      break;
    }
    if (info.verdict == Verdict::kNotChecked) {
      info.verdict = Verdict::kUnknown;
      info.verdictReason = "the verifier did not report on this signature";
    }
  }
}

}  // namespace tarvik::viewer
