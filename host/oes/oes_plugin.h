// The interface of an OES seal-provider plug-in: seal pictures from seal
// data, and digests.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "host/base/host_export.h"

namespace host {

/// A loaded seal provider. Every operation takes the caller's opaque user
/// data first (except the combined picture request) and returns 0 for
/// success. Byte strings carry explicit lengths and may hold zero bytes.
/// Whether one plug-in object may serve several threads at once is the
/// implementation's to say.
class HOST_API OESPlugin {
 public:
  using ImageCheck = int (*)(unsigned char* data, unsigned long length);
  /// Tests whether bytes decode as a raster picture (1) or not (0). Set by
  /// the seal library before it asks for pictures; the provider may call it.
  /// Atomic because every request stores it again, from whatever thread
  /// renders, while other threads may be calling it.
  std::atomic<ImageCheck> ImageCheckCallback{nullptr};

  virtual ~OESPlugin();

  /// Whether the provider supports a capability; 17 is the step-wise digest.
  virtual bool QueryCapability(int capability) = 0;

  /// The seal picture from both seal files (seal data and signed value).
  virtual int GetCombinedSealImage(const std::string& primary, const std::string& secondary,
                                   std::string& picture, std::string& type, int& width,
                                   int& height) = 0;
  /// The seal picture from the signed value (the seal inside a signature).
  virtual int GetSecondarySealImage(void* userData, const std::string& secondary, int renderMode,
                                    std::string& picture, std::string& type, int& width,
                                    int& height) = 0;
  /// The seal picture from the seal data.
  virtual int GetPrimarySealImage(void* userData, const std::string& primary, int renderMode,
                                  std::string& picture, std::string& type, int& width,
                                  int& height) = 0;

  /// One-shot digest of `data` under the named algorithm.
  virtual int Digest(void* userData, const std::string& data, const std::string& algorithm,
                     std::string& digest) = 0;
  /// Step-wise digest: start (stores a handle), feed pieces, finish. Finish
  /// also releases the handle, whatever its result.
  virtual int DigestStart(void* userData, uintptr_t* handle, const std::string& algorithm) = 0;
  virtual int DigestUpdate(void* userData, uintptr_t handle, const std::string& piece) = 0;
  virtual int DigestFinish(void* userData, uintptr_t handle, std::string& digest) = 0;
};

}  // namespace host
