// The signatures of an open document as a viewer lists them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/geometry.h"
#include "tarvik/viewer/viewer_export.h"

namespace tarvik::viewer {

/// What verifying a signature concluded. Values are stable (C interface).
enum class Verdict : int {
  kNotChecked = 0,  // verification was turned off
  kValid = 1,       // everything holds and the signer chains to a trust anchor
  kIntact = 2,      // everything holds; no trust anchors were given
  kInvalid = 3,     // a signed file changed or is missing, or a signature does not verify
  kUnknown = 4,     // cannot be checked (the reason says why)
};

/// A short fixed name: "not checked", "valid", "intact", "invalid", "unknown".
TARVIK_VIEWER_API const char* VerdictName(Verdict verdict);

/// One check made while verifying a signature.
struct CheckResult {
  enum class Outcome : int { kPassed = 0, kFailed = 1, kNotChecked = 2 };
  std::string name;    // "references", "signature value", "seal signature", ...
  Outcome outcome = Outcome::kNotChecked;
  std::string detail;  // in words: what was compared, what differs, why it could not be checked
};

/// Where a signature's seal appears: one StampAnnot.
struct StampInfo {
  std::string id;       // ID as written
  uint32_t pageId = 0;  // PageRef as written (a page ID)
  int page = -1;        // index of that page; -1 when no page has the ID
  host::GRect boundary;  // page millimetres (left, top, right, bottom)
  host::GRect clip;      // relative to the boundary; a null rectangle when none
};

/// One signature that Signatures.xml lists. A signature that cannot be used
/// is listed too, with `usable` false and the reason in `problems`.
struct SignatureInfo {
  std::string id;        // Signatures.xml ID as written
  std::string type;      // "Seal" or "Sign"
  std::string location;  // its Signature.xml (or BaseLoc as written when unusable)
  bool usable = true;
  std::vector<std::string> problems;  // unusable signature, skipped StampAnnots, unreadable seal

  std::string provider;           // Provider name
  std::string signatureMethod;    // as written (an OID or a name)
  std::string signatureDateTime;  // as written
  std::string checkMethod;        // digest of the references
  int referenceCount = 0;
  std::string sealLocation;         // the seal file; empty when none
  std::string signedValueLocation;  // the signature file; empty when none

  // From the signed value (or the seal file), when they can be read.
  int sesVersion = 0;         // 1 or 4; 0 when neither file reads as a seal
  std::string sealName;       // UTF-8
  std::string sealId;         // esID
  std::string validStart;     // the seal's validity, as written
  std::string validEnd;
  std::string signingTime;    // the signature's time, as written
  std::string pictureType;    // as the seal says ("PNG", "ofd", ...)
  std::string pictureFormat;  // what the bytes are ("PNG", "OFD package", "unknown")
  int pictureWidth = 0;       // millimetres, as the seal says
  int pictureHeight = 0;

  std::vector<StampInfo> stamps;

  // Verification (when the document was opened with verification on).
  Verdict verdict = Verdict::kNotChecked;
  std::string verdictReason;  // the decisive failure or limitation, in words; empty when valid or intact
  std::string signer;         // the signer certificate's subject, when known
  std::string verifiedSigningTime;  // "2025-01-01 12:00:00 UTC", when known
  std::string timeStampTime;  // the time stamp's time; empty when none
  bool trusted = false;       // the signer chains to a trust anchor
  std::vector<std::string> changedFiles;  // signed files whose digest differs
  std::vector<std::string> missingFiles;  // signed files not in the package
  std::vector<CheckResult> checks;
};

}  // namespace tarvik::viewer
