// Draws the seals that a document's signatures put on a page, one result
// per seal.
#pragma once

#include <map>
#include <mutex>
#include <string>
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

/// What reading each seal picture of a document before drawing it found, so
/// that a picture is read for that purpose once per document, not on every
/// page render. Thread-safe.
class SealReadings {
 public:
  struct Reading {
    bool readable = false;
    int bpp = 0;       // of the picture, when readable
    int width = 0;
    std::string reason;  // why not, when not
  };
  /// False when `key` was not read yet.
  bool Find(const std::string& key, Reading& out) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = readings_.find(key);
    if (it == readings_.end()) return false;
    out = it->second;
    return true;
  }
  void Store(const std::string& key, const Reading& reading) {
    std::lock_guard<std::mutex> lock(mutex_);
    readings_.emplace(key, reading);
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, Reading> readings_;
};

/// What drawing the seals of one document needs; all borrowed.
struct SealDrawing {
  Tarvik* tarvik = nullptr;
  host::OESPlugin* plugin = nullptr;
  const host::OfdSignatures* signatures = nullptr;  // null: no seals
  const std::vector<SignatureInfo>* list = nullptr;  // usable signatures first, as signatures reads them
  SealReadings* readings = nullptr;
};

/// Attaches the page's seal annotations and draws each through
/// Tarvik::RenderSignature, above whatever the device holds. Appends one
/// result per seal to `results`. Thread-safe for distinct pages and devices.
void DrawPageSeals(const SealDrawing& drawing, host::OfdPage& page, host::Device& device,
                   const host::Matrix& pageToDevice, const RenderOptions& options,
                   std::vector<SealResult>& results);

}  // namespace tarvik::viewer
