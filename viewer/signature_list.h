// Builds the viewer's list of signatures from the host's signature reader.
#pragma once

#include <vector>

#include "tarvik/viewer/signature_info.h"

namespace host {
class OfdDocument;
class OfdSignatures;
}  // namespace host

namespace tarvik::viewer {

/// One entry per signature that `signatures` read, then one per signature it
/// skipped (unusable, with the reason). The seal and signed-value files are
/// read to fill in the seal's name, validity and picture. `signatures` may be
/// null (no Signatures.xml): an empty list.
std::vector<SignatureInfo> ListSignatures(host::OfdDocument& document,
                                          const host::OfdSignatures* signatures);

}  // namespace tarvik::viewer
