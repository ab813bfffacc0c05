#include "host/verify/signature_verifier.h"

#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"
#include "host/verify/asn1_time.h"
#include "host/verify/ses_signed_parts.h"
#include "host/verify/signed_list_history.h"
#include "host/verify/verify_crypto.h"

namespace host {
namespace {

VerifyCheck Check(const char* name, CryptoStatus status, std::string detail) {
  const CheckOutcome outcome = status == CryptoStatus::kVerified ? CheckOutcome::kPassed
                               : status == CryptoStatus::kFailed ? CheckOutcome::kFailed
                                                                 : CheckOutcome::kNotChecked;
  return {name, outcome, std::move(detail)};
}

VerifyCheck Check(const char* name, CheckOutcome outcome, std::string detail) {
  return {name, outcome, std::move(detail)};
}

std::string Join(const std::vector<std::string>& items) {
  std::string out;
  for (const std::string& s : items) out += (out.empty() ? "" : ", ") + s;
  return out;
}

// A DER SEQUENCE around already encoded values.
std::string DerSequence(std::string_view a, std::string_view b) {
  const size_t n = a.size() + b.size();
  std::string out(1, '\x30');
  if (n < 0x80) {
    out += static_cast<char>(n);
  } else {
    std::string len;
    for (size_t v = n; v; v >>= 8) len.insert(len.begin(), static_cast<char>(v & 0xFF));
    out += static_cast<char>(0x80 | len.size());
    out += len;
  }
  out.append(a);
  out.append(b);
  return out;
}

// Checks and state shared by the signatures of one document: the trust
// anchors, loaded once, and the digests of the files already read.
class DocumentVerifier {
 public:
  DocumentVerifier(OfdPackage& package, const OfdDocument& document, const VerifyOptions& options)
      : package_(package) {
    if (!options.trustAnchors.empty()) {
      anchors_ = std::make_unique<TrustAnchors>();
      if (!anchors_->Load(options.trustAnchors, anchorsError_)) anchors_.reset();
      anchorsGiven_ = true;
    }
    signaturesPath_ = NormalizeLocation(document.GetSignaturesLocation().view());
  }

  SignatureVerdict Verify(const OfdSignatureInfo& info);

 private:
  struct Signed {
    std::string bytes;  // the signed value file
    SesSignatureParts ses;
    bool isSes = false;
    CertificatePtr signer;
    CertificatePtr maker;
  };

  // The digest of a package file by `method`; nullopt when the file is
  // missing, or the method unknown (then `unknownMethod` is set).
  std::optional<std::string> FileDigest(const std::string& path, const std::string& method, const Certificate* signer,
                                        bool& unknownMethod);
  void CheckFiles(const OfdSignatureInfo& info, const std::string& folder, const Certificate* signer,
                  SignatureVerdict& v);
  void CheckSes(Signed& s, const std::string& signatureXml, SignatureVerdict& v, int64_t& signingTime);
  void CheckSeal(Signed& s, int64_t signingTime, SignatureVerdict& v);
  void CheckTrust(Signed& s, int64_t signingTime, SignatureVerdict& v);
  static void Conclude(SignatureVerdict& v, bool anchorsGiven);

  OfdPackage& package_;
  std::unique_ptr<TrustAnchors> anchors_;
  bool anchorsGiven_ = false;
  std::string anchorsError_;
  std::string signaturesPath_;
  std::map<std::pair<std::string, std::string>, std::optional<std::string>> digests_;
};

std::optional<std::string> DocumentVerifier::FileDigest(const std::string& path, const std::string& method,
                                                        const Certificate* signer, bool& unknownMethod) {
  // Digests keyed by the signer's key are not shared.
  const bool keyed = method == "1.2.156.10197.1.401.2";
  const auto key = std::make_pair(method, path);
  if (!keyed) {
    const auto found = digests_.find(key);
    if (found != digests_.end()) return found->second;
  }
  std::string bytes, digest;
  std::optional<std::string> result;
  if (package_.ReadEntry(path, bytes)) {
    if (DigestByMethod(method, bytes, signer, digest)) {
      result = std::move(digest);
    } else {
      unknownMethod = true;
      return std::nullopt;
    }
  }
  if (!keyed) digests_[key] = result;
  return result;
}

void DocumentVerifier::CheckFiles(const OfdSignatureInfo& info, const std::string& folder,
                                  const Certificate* signer, SignatureVerdict& v) {
  if (info.references.empty()) {
    v.checks.push_back(Check("files", CheckOutcome::kFailed, "the signature protects no file"));
    return;
  }
  bool unknownMethod = false;
  bool signaturesListChanged = false;
  std::string listCheckValue;
  for (const OfdSignatureReference& ref : info.references) {
    std::string path = ResolveLocation(folder, ref.fileRef);
    if (!ref.fileRef.empty() && ref.fileRef[0] != '/' && package_.FindEntry(path).empty()) {
      path = NormalizeLocation(ref.fileRef);  // some producers mean the root
    }
    const std::string shown = "/" + path;
    const std::optional<std::string> digest = FileDigest(path, info.checkMethod, signer, unknownMethod);
    if (unknownMethod) break;
    if (!digest) {
      v.missingFiles.push_back(ref.fileRef.empty() ? "(empty FileRef)" : ref.fileRef);
    } else if (*digest != ref.checkValue) {
      if (!signaturesPath_.empty() && path == signaturesPath_) {
        signaturesListChanged = true;
        listCheckValue = ref.checkValue;
      } else {
        v.changedFiles.push_back(shown);
      }
    }
  }
  if (unknownMethod) {
    v.checks.push_back(Check("files", CheckOutcome::kNotChecked,
                             "unknown CheckMethod \"" + info.checkMethod + "\"" +
                                 (signer ? "" : " (or it needs the signer's key, which cannot be read)")));
    return;
  }
  std::string listNote;
  if (signaturesListChanged) {
    // Later signatures add their entries to Signatures.xml. When cutting the
    // list before them gives back the bytes this signature digested, the
    // change is exactly those later signatures, each verified on its own.
    std::string bytes, digest;
    std::vector<std::string> added;
    package_.ReadEntry(signaturesPath_, bytes);
    const auto matches = [&](std::string_view earlier) {
      return DigestByMethod(info.checkMethod, earlier, signer, digest) && digest == listCheckValue;
    };
    if (FindEarlierSignatureList(bytes, info.id, matches, added)) {
      listNote = "; Signatures.xml differs only by the entries of signatures added later (" + Join(added) +
                 "), which is no change to what this signature protects";
      v.checks.push_back(Check("later signatures", CheckOutcome::kPassed,
                               "signatures " + Join(added) +
                                   " were added after this one; without their entries Signatures.xml "
                                   "matches its CheckValue"));
    } else {
      v.changedFiles.push_back("/" + signaturesPath_);
      if (!added.empty()) {
        listNote = "; Signatures.xml lists later signatures (" + Join(added) +
                   "), but removing them does not give back the signed list";
      }
    }
  }
  if (v.changedFiles.empty() && v.missingFiles.empty()) {
    v.checks.push_back(Check("files", CheckOutcome::kPassed,
                             std::to_string(info.references.size()) + " files match their digests" + listNote));
    return;
  }
  std::string detail;
  if (!v.changedFiles.empty()) detail = "changed after signing: " + Join(v.changedFiles);
  if (!v.missingFiles.empty()) detail += (detail.empty() ? "" : "; ") + std::string("missing: ") + Join(v.missingFiles);
  v.checks.push_back(Check("files", CheckOutcome::kFailed, detail + listNote));
}

void DocumentVerifier::CheckSes(Signed& s, const std::string& signatureXml, SignatureVerdict& v,
                                int64_t& signingTime) {
  const SesSignatureParts& p = s.ses;
  // The signed Signature.xml: dataHash is its digest, SM3 unless the
  // signature's own algorithm takes another one.
  std::string digest;
  const char* matched = nullptr;
  for (const char* method : {"SM3", "SHA256", "SHA1", "SHA384", "SHA512"}) {
    if (DigestByMethod(method, signatureXml, nullptr, digest) && digest == p.dataHash) {
      matched = method;
      break;
    }
  }
  if (!matched && s.signer && DigestByMethod("1.2.156.10197.1.401.2", signatureXml, s.signer.get(), digest) &&
      digest == p.dataHash) {
    matched = "SM3 with the signer's key";
  }
  if (matched) {
    v.checks.push_back(Check("data hash", CheckOutcome::kPassed,
                             std::string("dataHash is the ") + matched + " digest of Signature.xml"));
  } else {
    v.checks.push_back(Check("data hash", CheckOutcome::kFailed,
                             "dataHash is not the digest of Signature.xml: Signature.xml changed after signing"));
    v.changedFiles.push_back(v.location);
  }

  if (!s.signer) {
    std::string why;
    ReadCertificate(p.signerCert, why);
    v.checks.push_back(Check("signature", CheckOutcome::kNotChecked, "signer certificate: " + why));
  } else {
    const CryptoResult r = VerifySignatureValue(s.signer.get(), p.signatureAlgorithm, p.toSign, p.signature);
    // Some producers sign dataHash itself as the SM2 digest; that covers
    // Signature.xml (and through it the files), but not TBS_Sign's other fields.
    const CryptoResult direct = r.status == CryptoStatus::kFailed
                                    ? VerifySm2OverDigest(s.signer.get(), p.dataHash, p.signature)
                                    : CryptoResult{};
    if (direct.status == CryptoStatus::kVerified) {
      v.checks.push_back(Check("signature", direct.status,
                               direct.detail + " over dataHash taken as the digest (not over TBS_Sign: the "
                                               "signing time and seal inside it are not covered)"));
    } else {
      v.checks.push_back(Check("signature", r.status, r.detail + " over TBS_Sign"));
    }
  }

  // The signing time is signed in TBS_Sign; SignatureDateTime is not.
  if (ParseAsn1Time(p.timeInfo, signingTime)) {
    v.signingTime = FormatUtcTime(signingTime);
  } else {
    signingTime = INT64_MIN;
  }
  if (!p.timeStamp.empty()) {
    int64_t t = 0;
    std::string why;
    if (ReadTimeStampTime(p.timeStamp, t, why)) {
      v.timeStampTime = FormatUtcTime(t);
      v.checks.push_back(Check("time stamp", CheckOutcome::kPassed,
                               "time stamp at " + v.timeStampTime + " (its own signature and chain are not checked)"));
    } else {
      v.checks.push_back(Check("time stamp", CheckOutcome::kNotChecked, why));
    }
  }
}

void DocumentVerifier::CheckSeal(Signed& s, int64_t signingTime, SignatureVerdict& v) {
  const SesSealParts& seal = s.ses.seal;
  std::string why;
  s.maker = ReadCertificate(seal.makerCert, why);
  if (!s.maker) {
    v.checks.push_back(Check("seal signature", CheckOutcome::kNotChecked, "seal maker's certificate: " + why));
  } else {
    CryptoResult r = VerifySignatureValue(s.maker.get(), seal.makerAlgorithm, seal.sealInfo, seal.makerSignature);
    std::string over = " over the seal information";
    if (r.status == CryptoStatus::kFailed) {
      // Some makers sign the seal information with their certificate and
      // algorithm, as one SEQUENCE.
      const CryptoResult alt = VerifySignatureValue(s.maker.get(), seal.makerAlgorithm,
                                                    DerSequence(seal.sealInfo, seal.certAndAlg), seal.makerSignature);
      if (alt.status == CryptoStatus::kVerified) {
        r = alt;
        over = " over the seal information, certificate and algorithm";
      }
    }
    if (r.status == CryptoStatus::kFailed) over += ", nor over it with the maker's certificate and algorithm";
    v.checks.push_back(Check("seal signature", r.status, "the maker's " + r.detail + over));
  }

  int64_t start = 0, end = 0;
  if (signingTime == INT64_MIN) {
    v.checks.push_back(Check("seal validity", CheckOutcome::kNotChecked, "the signing time cannot be read"));
  } else if (!ParseAsn1Time(seal.validStart, start) || !ParseAsn1Time(seal.validEnd, end)) {
    v.checks.push_back(Check("seal validity", CheckOutcome::kNotChecked, "the seal's validity dates cannot be read"));
  } else {
    const std::string range = FormatUtcTime(start) + " to " + FormatUtcTime(end);
    const bool inside = start <= signingTime && signingTime <= end;
    v.checks.push_back(Check("seal validity", inside ? CheckOutcome::kPassed : CheckOutcome::kFailed,
                             std::string(inside ? "signed within" : "signed outside") + " the seal's validity " +
                                 range + " (signed " + v.signingTime + ")"));
  }

  if (seal.certList.empty()) {
    v.checks.push_back(Check("seal certificate list", CheckOutcome::kNotChecked, "the seal's certificate list holds no certificate or digest"));
    return;
  }
  bool listed = false, unknownDigest = false;
  for (const SesCertListEntry& e : seal.certList) {
    std::string digest;
    if (!e.isDigest) {
      listed = e.value == s.ses.signerCert;
    } else if (DigestByMethod(e.digestType, s.ses.signerCert, nullptr, digest)) {
      listed = digest == e.value;
    } else {
      unknownDigest = true;
    }
    if (listed) break;
  }
  if (listed) {
    v.checks.push_back(Check("seal certificate list", CheckOutcome::kPassed, "the seal lists the signer's certificate"));
  } else if (unknownDigest) {
    v.checks.push_back(Check("seal certificate list", CheckOutcome::kNotChecked,
                             "the seal lists certificates by a digest of unknown type"));
  } else {
    v.checks.push_back(Check("seal certificate list", CheckOutcome::kFailed,
                             "the signer's certificate is not one the seal lists (" +
                                 std::to_string(seal.certList.size()) + " listed)"));
  }
}

void DocumentVerifier::CheckTrust(Signed& s, int64_t signingTime, SignatureVerdict& v) {
  if (s.signer && signingTime != INT64_MIN) {
    int64_t from = 0, to = 0;
    if (!s.signer->Validity(from, to)) {
      v.checks.push_back(Check("signer certificate dates", CheckOutcome::kNotChecked, "its dates cannot be read"));
    } else {
      const bool inside = from <= signingTime && signingTime <= to;
      v.checks.push_back(Check("signer certificate dates", inside ? CheckOutcome::kPassed : CheckOutcome::kFailed,
                               std::string(signingTime < from ? "not yet valid" : inside ? "valid" : "expired") +
                                   " at signing time (valid " + FormatUtcTime(from) + " to " + FormatUtcTime(to) +
                                   ")"));
    }
  }
  if (!anchorsGiven_) {
    v.checks.push_back(Check("trust", CheckOutcome::kNotChecked, "no trust anchors given"));
    return;
  }
  if (!anchors_) {
    v.checks.push_back(Check("trust", CheckOutcome::kNotChecked, "trust anchors: " + anchorsError_));
    return;
  }
  if (!s.signer) {
    v.checks.push_back(Check("trust", CheckOutcome::kNotChecked, "no signer certificate"));
    return;
  }
  const int64_t at = signingTime == INT64_MIN ? 0 : signingTime;
  const CryptoResult signer = anchors_->VerifyChain(s.signer.get(), {s.maker.get()}, at);
  if (signer.status != CryptoStatus::kVerified) {
    v.checks.push_back(Check("trust", signer.status, "the signer's certificate: " + signer.detail));
    return;
  }
  if (s.maker) {
    const CryptoResult maker = anchors_->VerifyChain(s.maker.get(), {s.signer.get()}, at);
    if (maker.status != CryptoStatus::kVerified) {
      v.checks.push_back(Check("trust", maker.status, "the seal maker's certificate: " + maker.detail));
      return;
    }
  }
  v.trusted = true;
  v.checks.push_back(Check("trust", CheckOutcome::kPassed, signer.detail));
}

void DocumentVerifier::Conclude(SignatureVerdict& v, bool anchorsGiven) {
  std::vector<std::string> failed, unchecked;
  std::string trust;
  for (const VerifyCheck& c : v.checks) {
    if (c.name == "trust") {
      trust = c.detail;
      continue;
    }
    if (c.outcome == CheckOutcome::kFailed) failed.push_back(c.name + ": " + c.detail);
    if (c.outcome == CheckOutcome::kNotChecked && c.name != "time stamp") {
      unchecked.push_back(c.name + ": " + c.detail);
    }
  }
  const auto sentence = [](const std::vector<std::string>& items) {
    std::string out;
    for (const std::string& s : items) out += (out.empty() ? "" : "; ") + s;
    return out;
  };
  if (!failed.empty()) {
    v.status = VerifyStatus::kInvalid;
    v.reason = sentence(failed);
  } else if (!unchecked.empty()) {
    v.status = VerifyStatus::kUnknown;
    v.reason = "cannot be checked: " + sentence(unchecked);
  } else if (v.trusted) {
    v.status = VerifyStatus::kValid;
    v.reason = "every check holds and " + trust;
  } else {
    v.status = VerifyStatus::kIntact;
    v.reason = anchorsGiven ? "every check holds, but it is not trusted: " + trust
                            : "every check holds; no trust anchors given, so not trusted";
  }
}

SignatureVerdict DocumentVerifier::Verify(const OfdSignatureInfo& info) {
  SignatureVerdict v;
  v.signatureId = info.id;
  v.type = info.type;
  v.location = std::string(info.location.view());
  const std::string xmlPath = NormalizeLocation(info.location.view());
  std::string signatureXml;
  package_.ReadEntry(xmlPath, signatureXml);

  Signed s;
  std::string why;
  const bool haveValue = !info.signedValueLocation.IsEmpty() &&
                         package_.ReadEntry(NormalizeLocation(info.signedValueLocation.view()), s.bytes);
  if (haveValue) {
    s.isSes = ReadSesSignatureParts(s.bytes, s.ses, why);
    if (s.isSes) s.signer = ReadCertificate(s.ses.signerCert, why);
  }

  CheckFiles(info, FolderOf(xmlPath), s.signer.get(), v);

  int64_t signingTime = INT64_MIN;
  if (!haveValue) {
    v.checks.push_back(Check("signature", CheckOutcome::kNotChecked, "the signed value file is missing"));
  } else if (s.isSes) {
    CheckSes(s, signatureXml, v, signingTime);
    CheckSeal(s, signingTime, v);
  } else {
    // Not SES: CMS / PKCS#7 SignedData over Signature.xml, or a bare value.
    if (IsBareEcSignature(s.bytes)) {
      v.checks.push_back(Check("signature", CheckOutcome::kNotChecked,
                               "the signed value is a bare SM2/ECDSA SEQUENCE{r, s} and the signer's "
                               "certificate is not in the package"));
    } else {
      const CryptoResult r = VerifyCmsSignature(s.bytes, signatureXml, s.signer);
      v.checks.push_back(Check("signature", r.status,
                               r.status == CryptoStatus::kCannotCheck && r.detail.find("SES") == std::string::npos &&
                                       r.detail.find("SignedData") == std::string::npos
                                   ? r.detail + " (not SES either: " + why + ")"
                                   : r.detail));
    }
    if (ParseAsn1Time(info.signatureDateTime, signingTime)) v.signingTime = FormatUtcTime(signingTime);
  }
  if (s.signer) v.signer = s.signer->Subject();
  CheckTrust(s, signingTime, v);
  Conclude(v, anchorsGiven_);
  return v;
}

}  // namespace

const VerifyCheck* SignatureVerdict::Find(const std::string& name) const {
  for (const VerifyCheck& c : checks) {
    if (c.name == name) return &c;
  }
  return nullptr;
}

const char* VerifyStatusName(VerifyStatus status) {
  switch (status) {
    case VerifyStatus::kValid: return "valid";
    case VerifyStatus::kIntact: return "intact";
    case VerifyStatus::kInvalid: return "invalid";
    case VerifyStatus::kUnknown: break;
  }
  return "unknown";
}

const char* CheckOutcomeName(CheckOutcome outcome) {
  switch (outcome) {
    case CheckOutcome::kPassed: return "passed";
    case CheckOutcome::kFailed: return "failed";
    case CheckOutcome::kNotChecked: break;
  }
  return "not checked";
}

std::vector<SignatureVerdict> VerifySignatures(OfdPackage& package, const OfdDocument& document,
                                               const VerifyOptions& options) {
  std::vector<SignatureVerdict> out;
  const std::unique_ptr<OfdSignatures> signatures = OfdSignatures::Load(&document);
  if (!signatures) return out;
  DocumentVerifier verifier(package, document, options);
  for (const OfdSignatureInfo& info : signatures->GetSignatures()) out.push_back(verifier.Verify(info));
  return out;
}

SignatureVerdict VerifySignature(OfdPackage& package, const OfdDocument& document, const OfdSignatureInfo& signature,
                                 const VerifyOptions& options) {
  DocumentVerifier verifier(package, document, options);
  return verifier.Verify(signature);
}

}  // namespace host
