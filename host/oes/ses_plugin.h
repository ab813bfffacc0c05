// The seal provider for the two public seal formats: pictures from seal and
// signature files, and digests through OpenSSL.
#pragma once

#include <cstdint>
#include <string>

#include "host/base/host_export.h"
#include "host/oes/oes_plugin.h"

namespace host {

/// Non-zero results of SesPlugin's operations.
enum SesPluginError : int {
  kSesPluginNoData = 1,            // empty input
  kSesPluginNotSeal = 2,           // the bytes are not a seal (or signature) of either layout
  kSesPluginNoPicture = 3,         // the seal holds no picture bytes
  kSesPluginUnknownAlgorithm = 4,  // digest name not known
  kSesPluginDigestFailed = 5,      // OpenSSL failed (or a null handle)
};

/// The seal provider. Pictures are returned as stored in the seal's
/// SES_ESPictrueInfo: the bytes, the type string as written (whatever its
/// case or accuracy: the caller detects the kind from the bytes) and the
/// size in millimetres. Outputs are written only on success. The render mode
/// and user data are not used. Digests: "SM3", "SHA256"/"SHA-256",
/// "SHA1"/"SHA-1", "MD5" and the SM3 OIDs 1.2.156.10197.1.401 and
/// 1.2.156.10197.1.401.2, case-insensitive. Holds no mutable state: one
/// object may serve several threads at once (a digest handle is used by one
/// thread at a time).
class HOST_API SesPlugin : public OESPlugin {
 public:
  SesPlugin();
  ~SesPlugin() override;

  /// True for 17 (the step-wise digest), false for anything else.
  bool QueryCapability(int capability) override;
  /// The picture of the seal inside the signed value, else of the seal file.
  int GetCombinedSealImage(const std::string& primary, const std::string& secondary,
                           std::string& picture, std::string& type, int& width,
                           int& height) override;
  /// The picture of the seal inside a signed value (SES_Signature).
  int GetSecondarySealImage(void* userData, const std::string& secondary, int renderMode,
                            std::string& picture, std::string& type, int& width,
                            int& height) override;
  /// The picture of a seal file (SESeal / SES_Seal).
  int GetPrimarySealImage(void* userData, const std::string& primary, int renderMode,
                          std::string& picture, std::string& type, int& width,
                          int& height) override;

  /// Replaces `digest` with the digest of `data`; kSesPluginUnknownAlgorithm
  /// for an unknown name (`digest` unchanged).
  int Digest(void* userData, const std::string& data, const std::string& algorithm,
             std::string& digest) override;
  /// Starts a digest and stores its handle (a new OpenSSL context) in
  /// `*handle`; on failure `*handle` is left unchanged and nothing is
  /// allocated. The handle must be passed to DigestFinish, which frees it.
  int DigestStart(void* userData, uintptr_t* handle, const std::string& algorithm) override;
  /// Feeds a piece; the handle stays valid whatever the result.
  int DigestUpdate(void* userData, uintptr_t handle, const std::string& piece) override;
  /// Replaces `digest` with the result and frees the handle, on success and
  /// on failure alike.
  int DigestFinish(void* userData, uintptr_t handle, std::string& digest) override;
};

}  // namespace host
