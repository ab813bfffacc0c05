// Seals and seal signatures for the sample documents, in either layout,
// signed SM2-with-SM3 by a key made at run time and thrown away.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace samples {

/// SM3 digest of `data` (32 bytes); "" on failure.
std::string Sm3(std::string_view data);
/// Base64 of `data`, without line breaks.
std::string Base64(std::string_view data);

/// A certificate to make: its common name, validity (seconds since 1970,
/// UTC) and whether it may issue certificates.
struct CertRecipe {
  std::string commonName = "Tarvik Sample Signer";
  int64_t notBefore = 1704067200;  // 2024-01-01
  int64_t notAfter = 2366841600;   // 2045-01-01
  bool ca = false;
};

/// A throw-away SM2 key with an X.509 certificate.
class Sm2Signer {
 public:
  /// A new key with a self-signed certificate; null when OpenSSL cannot make
  /// one.
  static std::unique_ptr<Sm2Signer> Create();
  /// A new key with a certificate as `recipe` says, issued by `issuer` (self-
  /// signed when null); null on failure.
  static std::unique_ptr<Sm2Signer> Create(const CertRecipe& recipe, const Sm2Signer* issuer);
  ~Sm2Signer();

  /// The DER SEQUENCE{r, s} of an SM2-with-SM3 signature over `data` with the
  /// user ID "1234567812345678"; "" on failure.
  std::string Sign(std::string_view data) const;
  /// The DER X.509 certificate.
  const std::string& Certificate() const { return certificate_; }
  /// The certificate as PEM (for trust-anchor files).
  std::string CertificatePem() const;

 private:
  struct Key;
  explicit Sm2Signer(std::unique_ptr<Key> key);
  bool Issue(const CertRecipe& recipe, const Sm2Signer& issuer, const Sm2Signer& subject);
  std::unique_ptr<Key> key_;
  std::string certificate_;
};

/// What a sample seal shows.
struct SealRecipe {
  int layout = 4;  // 1 (SESeal) or 4 (SES_Seal)
  std::string esID;
  std::string name;
  std::string pictureType;  // "PNG", "ofd"
  std::string picture;
  int widthMm = 40;
  int heightMm = 40;
  std::string validStart = "20250101000000Z";  // GeneralizedTime
  std::string validEnd = "20350101000000Z";
  /// The seal maker; null: the signer makes its own seal.
  const Sm2Signer* maker = nullptr;
  /// The certificates the seal lists; empty: the signer's.
  std::vector<std::string> certList;
};

/// The DER seal file, made by `recipe.maker` (or `signer`); "" when signing
/// fails.
std::string BuildSeal(const SealRecipe& recipe, const Sm2Signer& signer);

/// The DER signed value (SES_Signature of `layout` 1 or 4) holding `seal`,
/// over the SM3 digest of `signedData` (the Signature.xml bytes), whose
/// location `propertyInfo` names; "" when signing fails.
std::string BuildSignature(int layout, const std::string& seal, std::string_view signedData,
                           std::string_view propertyInfo, const Sm2Signer& signer,
                           std::string_view signingTime = "20250101120000Z");

}  // namespace samples
