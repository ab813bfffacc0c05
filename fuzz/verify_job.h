// The job the signature verifier fuzz target runs, shared with the corpus
// replay test: the first byte chooses whether the rest is a whole OFD
// package (verified as a document) or one signed value (read as SES, CMS,
// certificates, times and signatures). Bad input must give verdicts and
// reasons, never a crash, overread or leak. Returns the number of verdicts
// given (package) or 1 when the signed value was read (value), else 0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/verify/asn1_time.h"
#include "host/verify/ses_signed_parts.h"
#include "host/verify/signature_verifier.h"
#include "host/verify/signed_list_history.h"
#include "host/verify/verify_crypto.h"

namespace fuzzjob {

inline int VerifyPackage(const std::string& bytes) {
  host::OfdPackage package;
  if (package.LoadFromStream(host::StreamReader::CreateMemoryStreamReader(bytes), 1) != 0) return 0;
  int verdicts = 0;
  for (int i = 0; i < package.CountDocuments() && i < 4; ++i) {
    host::OfdDocument doc;
    if (doc.LoadDocument(&package, package.GetDocument(i), -1) != 0) continue;
    verdicts += static_cast<int>(host::VerifySignatures(package, doc, {}).size());
  }
  return verdicts;
}

inline int VerifyValue(const std::string& bytes) {
  host::SesSignatureParts sig;
  std::string why;
  const bool read = host::ReadSesSignatureParts(bytes, sig, why);
  if (read) {
    host::CertificatePtr signer = host::ReadCertificate(sig.signerCert, why);
    if (signer) {
      host::VerifySignatureValue(signer.get(), sig.signatureAlgorithm, sig.toSign, sig.signature);
      host::VerifySm2OverDigest(signer.get(), sig.dataHash, sig.signature);
      int64_t from = 0, to = 0;
      signer->Validity(from, to);
      signer->Subject();
      signer->X509Cert();
      std::string digest;
      host::DigestByMethod("1.2.156.10197.1.401.2", sig.toSign, signer.get(), digest);
    }
    host::CertificatePtr maker = host::ReadCertificate(sig.seal.makerCert, why);
    if (maker) host::VerifySignatureValue(maker.get(), sig.seal.makerAlgorithm, sig.seal.sealInfo, sig.seal.makerSignature);
    int64_t t = 0;
    host::ParseAsn1Time(sig.timeInfo, t);
    host::ParseAsn1Time(sig.seal.validEnd, t);
    if (!sig.timeStamp.empty()) host::ReadTimeStampTime(sig.timeStamp, t, why);
  }
  host::SesSealParts seal;
  host::ReadSesSealParts(bytes, seal, why);
  host::CertificatePtr cms;
  host::VerifyCmsSignature(bytes, "content", cms);
  host::IsBareEcSignature(bytes);
  int64_t t = 0;
  host::ReadTimeStampTime(bytes, t, why);
  host::ParseAsn1Time(bytes, t);
  std::vector<std::string> added;
  host::FindEarlierSignatureList(bytes, "1", [](std::string_view) { return false; }, added);
  return read ? 1 : 0;
}

inline int Verify(std::string bytes) {
  if (bytes.empty() || bytes.size() > (1u << 20)) return 0;
  const std::string rest = bytes.substr(1);
  return (bytes[0] & 1) ? VerifyValue(rest) : VerifyPackage(rest);
}

}  // namespace fuzzjob
