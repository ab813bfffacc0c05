// Draws the seals that a document's signatures put on a page, one result
// per seal.
#pragma once

#include <vector>

#include "tarvik/tarvik.h"
#include "tarvik/viewer/render_options.h"
#include "tarvik/viewer/signature_info.h"

namespace host {
class Device;
class OESPlugin;
class OfdPage;
class OfdSignatures;
}  // namespace host

namespace tarvik::viewer {

/// What drawing the seals of one document needs; all borrowed.
struct SealDrawing {
  Tarvik* tarvik = nullptr;
  host::OESPlugin* plugin = nullptr;
  const host::OfdSignatures* signatures = nullptr;  // null: no seals
  const std::vector<SignatureInfo>* list = nullptr;  // usable signatures first, as signatures reads them
};

/// Attaches the page's seal annotations and draws each through
/// Tarvik::RenderSignature, above whatever the device holds. Appends one
/// result per seal to `results`. Thread-safe for distinct pages and devices.
void DrawPageSeals(const SealDrawing& drawing, host::OfdPage& page, host::Device& device,
                   const host::Matrix& pageToDevice, const RenderOptions& options,
                   std::vector<SealResult>& results);

}  // namespace tarvik::viewer
