// Verdicts of the host's signature verifier, attached to the signature list.
#pragma once

#include <string>
#include <vector>

#include "tarvik/viewer/signature_info.h"

namespace host {
class OfdDocument;
class OfdPackage;
}  // namespace host

namespace tarvik::viewer {

/// Verifies every signature of the document and fills in the verdict,
/// reason, signer and checks of the matching entries of `list` (matched by
/// their Signature.xml). Entries that cannot be used get kUnknown with their
/// problem as the reason. `trustAnchors`: a PEM file or directory, or empty.
void VerifyAll(host::OfdPackage& package, const host::OfdDocument& document,
               const std::string& trustAnchors, std::vector<SignatureInfo>& list);

}  // namespace tarvik::viewer
