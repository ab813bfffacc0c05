// The cryptography a signature verifier needs, over OpenSSL: certificates,
// digests named by OID or name, signature values (SM2 with SM3, RSA, ECDSA),
// CMS signed data, time-stamp tokens and certificate chains to trust
// anchors. Never throws, never prints; OpenSSL's error queue is cleared.
#pragma once

#include <openssl/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/host_export.h"

namespace host {

struct HOST_API X509Free {
  void operator()(X509* x) const;
};
using X509Ptr = std::unique_ptr<X509, X509Free>;

/// Outcome of one cryptographic check.
enum class CryptoStatus { kVerified, kFailed, kCannotCheck };

struct HOST_API CryptoResult {
  CryptoStatus status = CryptoStatus::kCannotCheck;
  std::string detail;  // what was checked, or why it failed or could not be
};

/// Largest certificate read (bytes) and the key sizes accepted (bits).
inline constexpr size_t kMaxCertificateBytes = 64 * 1024;
inline constexpr int kMinKeyBits = 160;
inline constexpr int kMaxKeyBits = 8192;

/// A certificate read for verification. Its fields are read from the DER
/// directly and an SM2 key is imported as it is, which costs a fraction of
/// OpenSSL's certificate decoder; the OpenSSL certificate is made only when
/// a chain is built (X509()).
class HOST_API Certificate {
 public:
  /// Reads a DER X.509 certificate; null with a reason when it is not one,
  /// is truncated, or its key cannot be read.
  static std::unique_ptr<Certificate> Read(std::string_view der, std::string& reason);
  ~Certificate();
  Certificate(const Certificate&) = delete;
  Certificate& operator=(const Certificate&) = delete;

  EVP_PKEY* Key() const { return key_; }
  const std::string& Der() const { return der_; }
  /// notBefore / notAfter in seconds since the epoch; false when unreadable.
  bool Validity(int64_t& notBefore, int64_t& notAfter) const;
  /// The subject on one line ("CN=..., O=...").
  std::string Subject() const;
  /// The OpenSSL certificate (with the SM2 user ID set), made on first use;
  /// null when OpenSSL cannot read it.
  X509* X509Cert();

 private:
  Certificate() = default;
  std::string der_;
  EVP_PKEY* key_ = nullptr;
  X509Ptr x509_;
  bool triedX509_ = false;
  bool datesRead_ = false;
  int64_t notBefore_ = 0, notAfter_ = 0;
  std::string_view subject_;  // encoded Name, inside der_
};
using CertificatePtr = std::unique_ptr<Certificate>;

/// A certificate, or null with a reason (Certificate::Read).
HOST_API CertificatePtr ReadCertificate(std::string_view der, std::string& reason);

/// Digest of `data` by a CheckMethod or algorithm: an OID or a name (SM3,
/// SHA1, SHA256, SHA384, SHA512, MD5, any case). The OID
/// 1.2.156.10197.1.401.2 is SM3 over the SM2 Z value of `signer`'s key and
/// the data (it needs `signer`). False when the method is unknown.
HOST_API bool DigestByMethod(std::string_view method, std::string_view data, const Certificate* signer,
                             std::string& out);

/// Verifies `signature` over `data` with the certificate's key under the
/// signature algorithm `algorithmOid`. SM2 values may be DER SEQUENCE{r, s}
/// or 64 bytes r||s; SM2 uses the user ID "1234567812345678".
HOST_API CryptoResult VerifySignatureValue(const Certificate* cert, std::string_view algorithmOid,
                                           std::string_view data, std::string_view signature);

/// Verifies an SM2 `signature` made over a 32-byte `digest` taken as the
/// value to sign itself (no user ID, no further hashing).
HOST_API CryptoResult VerifySm2OverDigest(const Certificate* cert, std::string_view digest,
                                          std::string_view signature);

/// Verifies a CMS / PKCS#7 SignedData over `content` (detached, or compared
/// with the encapsulated content), without checking the signer's chain.
/// `signer` receives the signer's certificate when the value carries it.
HOST_API CryptoResult VerifyCmsSignature(std::string_view cms, std::string_view content, CertificatePtr& signer);

/// True when `value` is nothing but a DER SEQUENCE{INTEGER r, INTEGER s}.
HOST_API bool IsBareEcSignature(std::string_view value);

/// The time of an RFC 3161 time-stamp token (a CMS ContentInfo); false with
/// a reason when it is not one.
HOST_API bool ReadTimeStampTime(std::string_view token, int64_t& time, std::string& reason);

/// Trust anchors: certificates from a PEM file, or from every file of a
/// directory (at most kMaxFiles files of at most 1 MiB each).
class HOST_API TrustAnchors {
 public:
  static constexpr int kMaxFiles = 1000;
  TrustAnchors();
  ~TrustAnchors();
  TrustAnchors(const TrustAnchors&) = delete;
  TrustAnchors& operator=(const TrustAnchors&) = delete;

  /// Loads `path`; false with a reason when it holds no certificate.
  bool Load(const std::string& path, std::string& reason);
  int Count() const { return count_; }
  /// Verifies the chain of `cert` to an anchor at time `at`, with
  /// `intermediates` as untrusted helpers.
  CryptoResult VerifyChain(Certificate* cert, const std::vector<Certificate*>& intermediates, int64_t at) const;

 private:
  X509_STORE* store_ = nullptr;
  int count_ = 0;
};

}  // namespace host
