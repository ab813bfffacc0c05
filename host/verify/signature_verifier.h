// Verifies the signatures of an OFD document: the signed files, the
// signature value and the seal, each check named with its result in words.
//
//   host::VerifyOptions options;
//   options.trustAnchors = "/etc/tarvik/roots.pem";  // optional
//   for (const host::SignatureVerdict& v : host::VerifySignatures(package, doc, options)) ...
//
// Nothing throws; bad input gives kInvalid or kUnknown with a reason.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/host_export.h"

namespace host {

class OfdDocument;
class OfdPackage;
struct OfdSignatureInfo;

/// What a signature comes to.
enum class VerifyStatus : int {
  kValid = 0,    // everything holds and the certificates chain to a trust anchor
  kIntact = 1,   // everything holds; no trust anchors given (or none matched)
  kInvalid = 2,  // a file changed or missing, a signature that does not verify, a seal out of date
  kUnknown = 3,  // something needed cannot be checked (see the reason)
};

/// The result of one check.
enum class CheckOutcome : int {
  kPassed = 0,
  kFailed = 1,
  kNotChecked = 2,  // cannot be checked (the detail says why)
};

/// One named check ("files", "data hash", "signature", "seal signature",
/// "seal validity", "seal certificate list", "signer certificate dates",
/// "time stamp", "trust").
struct HOST_API VerifyCheck {
  std::string name;
  CheckOutcome outcome = CheckOutcome::kNotChecked;
  std::string detail;
};

struct HOST_API SignatureVerdict {
  std::string signatureId;    // Signatures.xml ID
  std::string type;           // "Seal" or "Sign"
  std::string location;       // the Signature.xml ("/Doc_0/Signs/Sign_0/Signature.xml")
  VerifyStatus status = VerifyStatus::kUnknown;
  std::string reason;         // one sentence: why this status
  std::vector<VerifyCheck> checks;
  std::vector<std::string> changedFiles;  // references whose digest differs
  std::vector<std::string> missingFiles;  // references not in the package
  std::string signer;         // the signer certificate's subject; may be empty
  std::string signingTime;    // "2025-01-01 12:00:00 UTC"; empty when unknown
  std::string timeStampTime;  // the time stamp's time; empty when none
  bool trusted = false;       // chains to a trust anchor

  /// The check of that name, or null.
  const VerifyCheck* Find(const std::string& name) const;
};

struct HOST_API VerifyOptions {
  /// Trust anchors: a PEM file, or a directory of PEM (or DER) files. Empty:
  /// no trust anchors, so a good signature is at best kIntact.
  std::string trustAnchors;
};

/// "valid", "intact", "invalid", "unknown".
HOST_API const char* VerifyStatusName(VerifyStatus status);
/// "passed", "failed", "not checked".
HOST_API const char* CheckOutcomeName(CheckOutcome outcome);

/// Verifies every signature of a loaded document, in Signatures.xml order.
/// Empty when the document has no signatures. Each referenced file is read
/// and digested once however many signatures name it.
HOST_API std::vector<SignatureVerdict> VerifySignatures(OfdPackage& package, const OfdDocument& document,
                                                        const VerifyOptions& options);

/// Verifies one signature (from OfdSignatures::Load of the same document).
HOST_API SignatureVerdict VerifySignature(OfdPackage& package, const OfdDocument& document,
                                          const OfdSignatureInfo& signature, const VerifyOptions& options);

}  // namespace host
