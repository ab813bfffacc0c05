// Seal pictures and digests outside a document: a raster picture, an OFD
// seal package, a seal file or a signed value, decoded to a bitmap.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "host/base/dib.h"
#include "tarvik/tarvik.h"
#include "tarvik/viewer/status.h"
#include "tarvik/viewer/viewer_export.h"

namespace tarvik::viewer {

/// What seal bytes were found to be.
enum class SealFileKind : int {
  kUnknown = 0,
  kRaster = 1,       // a picture in a format the codecs know
  kOfd = 2,          // an OFD seal package
  kSeal = 3,         // a seal file (.esl), versions 1 and 4
  kSignedValue = 4,  // a signed value (SignedValue.dat) holding a seal
};

/// Options of DecodeSeal. The pointers are borrowed for the call.
struct SealDecodeOptions {
  int dpi = 300;    // OFD seal pictures: resolution; 0 to use width x height
  int width = 0;    // OFD seal pictures: pixel size when dpi is 0
  int height = 0;
  /// Adjustments (cross, grey/black, blur); null: the picture as decoded.
  const RenderSealParam::ImageParam* image = nullptr;
  /// Stamp text drawn over the picture; null: none.
  const RenderSealParam::TextParam* stamp = nullptr;
};

/// Decodes seal bytes of any kind above into a new 32-bit bitmap owned by
/// the caller (format 7 when adjusted or stamped, else as decoded). Null on
/// failure with the reason in `error`; `kind` receives what the bytes were.
/// Thread-safe.
TARVIK_VIEWER_API std::unique_ptr<host::Dib> DecodeSeal(const void* data, size_t size,
                                                        const SealDecodeOptions& options,
                                                        Error* error = nullptr,
                                                        SealFileKind* kind = nullptr);

/// The digest of `size` bytes by `algorithm` ("sm3", "sha256", "sha1",
/// "md5", case-insensitive) through the bundled seal provider, as raw bytes.
/// False with the reason in `error` for an unknown algorithm. Thread-safe.
TARVIK_VIEWER_API bool Digest(const void* data, size_t size, const std::string& algorithm,
                              std::string& digest, Error* error = nullptr);

}  // namespace tarvik::viewer
