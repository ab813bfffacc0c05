// The signed parts of seals and seal signatures, as a verifier needs them:
// the exact encodings that were signed, the certificates, algorithms and
// signature values, the seal's certificate list and validity. Either layout
// (1: two-field SESeal / SES_Signature; 4: SES_Seal / SES_Signature of four
// or five fields), told by structure as the seal reader does.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/host_export.h"

namespace host {

/// One entry of a seal's certList: a certificate, or (certListType 2) a
/// digest object { type, value } of one.
struct HOST_API SesCertListEntry {
  bool isDigest = false;
  std::string digestType;  // as written ("sm3", "SHA256", an OID); digests only
  std::string value;       // certificate DER, or the digest bytes
};

/// A seal's signed parts. Views point into the bytes given to the reader.
struct HOST_API SesSealParts {
  int layout = 0;                 // 1 or 4
  std::string_view sealInfo;      // encoded SES_SealInfo (what the maker signed)
  std::string_view certAndAlg;    // encoded maker cert and algorithm fields
  std::string makerCert;          // the maker's certificate (DER)
  std::string makerAlgorithm;     // dotted OID
  std::string makerSignature;     // signature value bytes
  int64_t certListType = 1;       // 1 certificates, 2 digests
  std::vector<SesCertListEntry> certList;
  std::string validStart;         // as written
  std::string validEnd;
};

/// A signed value's parts. Views point into the bytes given to the reader.
struct HOST_API SesSignatureParts {
  int layout = 0;                 // 1 or 4
  int64_t version = 0;            // TBS_Sign version as written
  std::string_view toSign;        // encoded TBS_Sign (what the signer signed)
  SesSealParts seal;
  std::string timeInfo;           // the signing time as written
  std::string dataHash;           // digest of Signature.xml
  std::string propertyInfo;       // the Signature.xml location
  std::string signerCert;         // DER
  std::string signatureAlgorithm; // dotted OID
  std::string signature;          // signature value bytes
  std::string timeStamp;          // layout 4 [0] timeStamp; empty when absent
};

/// Most certList entries read.
inline constexpr size_t kMaxSesCertList = 64;

/// Reads a seal (either layout); false with a short reason on failure.
HOST_API bool ReadSesSealParts(std::string_view der, SesSealParts& out, std::string& reason);
/// Reads a signed value (either layout); false with a short reason on
/// failure (also for values that are not SES, such as PKCS#7).
HOST_API bool ReadSesSignatureParts(std::string_view der, SesSignatureParts& out, std::string& reason);

}  // namespace host
