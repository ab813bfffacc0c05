#include "host/oes/ses_plugin.h"

#include <openssl/evp.h>

#include <memory>
#include <string_view>

#include "host/oes/ses_seal.h"

namespace host {
namespace {

struct MdCtxDeleter {
  void operator()(EVP_MD_CTX* ctx) const { EVP_MD_CTX_free(ctx); }
};
using MdCtx = std::unique_ptr<EVP_MD_CTX, MdCtxDeleter>;

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

// The digest a name selects, or null. The SM3 OID appears with and without
// the ".2" arc in real CheckMethod attributes.
const EVP_MD* FindDigest(std::string_view name) {
  struct Entry {
    const char* name;
    const EVP_MD* (*md)();
  };
  static const Entry kDigests[] = {
      {"SM3", EVP_sm3},
      {"1.2.156.10197.1.401", EVP_sm3},
      {"1.2.156.10197.1.401.2", EVP_sm3},
      {"SHA256", EVP_sha256},
      {"SHA-256", EVP_sha256},
      {"2.16.840.1.101.3.4.2.1", EVP_sha256},
      {"SHA1", EVP_sha1},
      {"SHA-1", EVP_sha1},
      {"1.3.14.3.2.26", EVP_sha1},
      {"MD5", EVP_md5},
      {"1.2.840.113549.2.5", EVP_md5},
  };
  for (const Entry& e : kDigests) {
    if (EqualsNoCase(name, e.name)) return e.md();
  }
  return nullptr;
}

// Writes a seal's picture to the outputs; outputs stay as they were on
// failure.
int GivePicture(SesPicture& pic, std::string& picture, std::string& type, int& width,
                int& height) {
  if (pic.data.empty()) return kSesPluginNoPicture;
  picture = std::move(pic.data);
  type = std::move(pic.type);
  width = pic.width;
  height = pic.height;
  return 0;
}

int PictureOfSeal(const std::string& bytes, std::string& picture, std::string& type, int& width,
                  int& height) {
  if (bytes.empty()) return kSesPluginNoData;
  SesSeal seal;
  if (!ParseSesSeal(bytes, seal)) return kSesPluginNotSeal;
  return GivePicture(seal.picture, picture, type, width, height);
}

int PictureOfSignature(const std::string& bytes, std::string& picture, std::string& type,
                       int& width, int& height) {
  if (bytes.empty()) return kSesPluginNoData;
  SesSignature sig;
  if (!ParseSesSignature(bytes, sig)) return kSesPluginNotSeal;
  return GivePicture(sig.seal.picture, picture, type, width, height);
}

}  // namespace

SesPlugin::SesPlugin() = default;
SesPlugin::~SesPlugin() = default;

bool SesPlugin::QueryCapability(int capability) { return capability == 17; }

int SesPlugin::GetCombinedSealImage(const std::string& primary, const std::string& secondary,
                                    std::string& picture, std::string& type, int& width,
                                    int& height) {
  const int result = PictureOfSignature(secondary, picture, type, width, height);
  if (result == 0) return 0;
  const int fallback = PictureOfSeal(primary, picture, type, width, height);
  return fallback == 0 ? 0 : (primary.empty() ? result : fallback);
}

int SesPlugin::GetSecondarySealImage(void*, const std::string& secondary, int,
                                     std::string& picture, std::string& type, int& width,
                                     int& height) {
  return PictureOfSignature(secondary, picture, type, width, height);
}

int SesPlugin::GetPrimarySealImage(void*, const std::string& primary, int, std::string& picture,
                                   std::string& type, int& width, int& height) {
  return PictureOfSeal(primary, picture, type, width, height);
}

int SesPlugin::Digest(void*, const std::string& data, const std::string& algorithm,
                      std::string& digest) {
  const EVP_MD* md = FindDigest(algorithm);
  if (!md) return kSesPluginUnknownAlgorithm;
  unsigned char out[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  if (EVP_Digest(data.data(), data.size(), out, &size, md, nullptr) != 1) {
    return kSesPluginDigestFailed;
  }
  digest.assign(reinterpret_cast<const char*>(out), size);
  return 0;
}

int SesPlugin::DigestStart(void*, uintptr_t* handle, const std::string& algorithm) {
  if (!handle) return kSesPluginDigestFailed;
  const EVP_MD* md = FindDigest(algorithm);
  if (!md) return kSesPluginUnknownAlgorithm;
  MdCtx ctx(EVP_MD_CTX_new());
  if (!ctx || EVP_DigestInit_ex(ctx.get(), md, nullptr) != 1) return kSesPluginDigestFailed;
  *handle = reinterpret_cast<uintptr_t>(ctx.release());
  return 0;
}

int SesPlugin::DigestUpdate(void*, uintptr_t handle, const std::string& piece) {
  auto* ctx = reinterpret_cast<EVP_MD_CTX*>(handle);
  if (!ctx) return kSesPluginDigestFailed;
  return EVP_DigestUpdate(ctx, piece.data(), piece.size()) == 1 ? 0 : kSesPluginDigestFailed;
}

int SesPlugin::DigestFinish(void*, uintptr_t handle, std::string& digest) {
  MdCtx ctx(reinterpret_cast<EVP_MD_CTX*>(handle));
  if (!ctx) return kSesPluginDigestFailed;
  unsigned char out[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  if (EVP_DigestFinal_ex(ctx.get(), out, &size) != 1) return kSesPluginDigestFailed;
  digest.assign(reinterpret_cast<const char*>(out), size);
  return 0;
}

}  // namespace host
