// Seals and seal signatures for the sample documents, in either layout,
// signed SM2-with-SM3 by a key made at run time and thrown away.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace samples {

/// SM3 digest of `data` (32 bytes); "" on failure.
std::string Sm3(std::string_view data);
/// Base64 of `data`, without line breaks.
std::string Base64(std::string_view data);

/// A throw-away SM2 key.
class Sm2Signer {
 public:
  /// A new key; null when OpenSSL cannot make one.
  static std::unique_ptr<Sm2Signer> Create();
  ~Sm2Signer();

  /// The DER SEQUENCE{r, s} of an SM2-with-SM3 signature over `data` with the
  /// user ID "1234567812345678"; "" on failure.
  std::string Sign(std::string_view data) const;
  /// The public key as a DER SubjectPublicKeyInfo; stands in for the
  /// certificate wherever the formats want one.
  const std::string& Certificate() const { return certificate_; }

 private:
  struct Key;
  explicit Sm2Signer(std::unique_ptr<Key> key);
  std::unique_ptr<Key> key_;
  std::string certificate_;
};

/// What a sample seal shows.
struct SealSpec {
  int layout = 4;  // 1 (SESeal) or 4 (SES_Seal)
  std::string esID;
  std::string name;
  std::string pictureType;  // "PNG", "ofd"
  std::string picture;
  int widthMm = 40;
  int heightMm = 40;
};

/// The DER seal file; "" when signing fails.
std::string BuildSeal(const SealSpec& spec, const Sm2Signer& signer);

/// The DER signed value (SES_Signature of `layout` 1 or 4) holding `seal`,
/// over the SM3 digest of `signedData` (the Signature.xml bytes), whose
/// location `propertyInfo` names; "" when signing fails.
std::string BuildSignature(int layout, const std::string& seal, std::string_view signedData,
                           std::string_view propertyInfo, const Sm2Signer& signer);

}  // namespace samples
