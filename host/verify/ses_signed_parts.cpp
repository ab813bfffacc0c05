#include "host/verify/ses_signed_parts.h"

#include "host/oes/der_reader.h"

namespace host {
namespace {

bool Fail(std::string& reason, const char* what) {
  reason = what;
  return false;
}

bool IsTime(uint8_t tag) { return tag == kDerUtcTime || tag == kDerGeneralizedTime; }

// certList: SEQUENCE OF OCTET STRING (certificates), or of
// SEQUENCE { type, value OCTET STRING } (digests).
bool ReadCertList(const DerReader& parent, const DerElement& list, SesSealParts& seal) {
  DerReader r = parent.Enter(list);
  DerElement e;
  while (r.Next(e)) {
    if (seal.certList.size() >= kMaxSesCertList) break;
    SesCertListEntry entry;
    if (e.tag == kDerSequence) {
      DerReader d = r.Enter(e);
      DerElement t, v;
      if (!d.Next(t) || !d.Next(v) || !DerReadString(t, entry.digestType) || !DerReadOctets(v, entry.value)) {
        return false;
      }
      entry.isDigest = true;
    } else if (!DerReadOctets(e, entry.value)) {
      continue;  // neither a certificate nor a digest (some makers write text)
    }
    seal.certList.push_back(std::move(entry));
  }
  return !r.Failed();
}

// SES_ESPropertyInfo: type, name, [certListType,] certList, three dates.
bool ReadProperty(const DerReader& parent, const DerElement& property, SesSealParts& seal) {
  DerReader r = parent.Enter(property);
  DerElement e;
  std::string* dates[] = {nullptr, &seal.validStart, &seal.validEnd};
  std::string created;
  dates[0] = &created;
  size_t nextDate = 0;
  int integers = 0;
  bool list = false;
  while (r.Next(e)) {
    if (e.tag == kDerInteger && ++integers == 2) {
      DerReadInteger(e, seal.certListType);
    } else if (e.tag == kDerSequence && !list) {
      list = true;
      if (!ReadCertList(r, e, seal)) return false;
    } else if (IsTime(e.tag) && nextDate < 3) {
      DerReadString(e, *dates[nextDate++]);
    }
  }
  return r.AtEnd() && nextDate == 3;
}

// SES_SealInfo: header, esID, property, picture[, extDatas].
bool ReadSealInfo(const DerReader& parent, const DerElement& info, SesSealParts& seal) {
  DerReader r = parent.Enter(info);
  DerElement e;
  if (!r.Next(kDerSequence, e) || !r.Next(e) || !r.Next(kDerSequence, e)) return false;
  return ReadProperty(r, e, seal);
}

bool ReadSeal(const DerReader& parent, const DerElement& top, std::string_view outer, SesSealParts& seal,
              std::string& reason) {
  if (top.tag != kDerSequence) return Fail(reason, "the seal is not a SEQUENCE");
  DerReader r = parent.Enter(top);
  const int fields = r.CountRemaining();
  DerElement info, e;
  if (fields < 0 || !r.Next(kDerSequence, info)) return Fail(reason, "the seal is malformed");
  seal.sealInfo = info.Encoded(outer);
  if (!ReadSealInfo(r, info, seal)) return Fail(reason, "the seal's property information is malformed");
  std::string_view bits;
  if (fields == 2) {
    seal.layout = 1;
    if (!r.Next(kDerSequence, e)) return Fail(reason, "the seal's sign information is malformed");
    DerReader s = r.Enter(e);
    DerElement cert, alg, sig;
    if (!s.Next(cert) || !DerReadOctets(cert, seal.makerCert) || !s.Next(kDerObjectId, alg) ||
        !DerReadObjectId(alg, seal.makerAlgorithm) || !s.Next(sig) || !DerReadBitString(sig, bits)) {
      return Fail(reason, "the seal's sign information is malformed");
    }
    seal.certAndAlg = outer.substr(cert.offset, alg.offset + alg.encodedSize - cert.offset);
  } else if (fields == 4 || fields == 5) {
    seal.layout = 4;
    DerElement cert, alg, sig;
    if (!r.Next(cert) || !DerReadOctets(cert, seal.makerCert) || !r.Next(kDerObjectId, alg) ||
        !DerReadObjectId(alg, seal.makerAlgorithm) || !r.Next(sig) || !DerReadBitString(sig, bits)) {
      return Fail(reason, "the seal's certificate, algorithm or signature is malformed");
    }
    seal.certAndAlg = outer.substr(cert.offset, alg.offset + alg.encodedSize - cert.offset);
  } else {
    return Fail(reason, "the seal has neither 2 nor 4 fields");
  }
  seal.makerSignature.assign(bits);
  return true;
}

}  // namespace

bool ReadSesSealParts(std::string_view der, SesSealParts& out, std::string& reason) {
  DerReader r(der);
  DerElement top;
  SesSealParts seal;
  if (!r.Next(top)) return Fail(reason, "the seal is not DER");
  if (!ReadSeal(r, top, der, seal, reason)) return false;
  out = std::move(seal);
  return true;
}

bool ReadSesSignatureParts(std::string_view der, SesSignatureParts& out, std::string& reason) {
  DerReader top(der);
  DerElement outer, tbs, e;
  if (der.empty()) return Fail(reason, "the signed value is empty");
  if (!top.Next(outer) || outer.tag != kDerSequence) return Fail(reason, "the signed value is not a DER SEQUENCE");
  DerReader r = top.Enter(outer);
  const int fields = r.CountRemaining();
  if (fields != 2 && fields != 4 && fields != 5) return Fail(reason, "the signed value is not an SES signature");
  if (!r.Next(kDerSequence, tbs)) return Fail(reason, "the signed value is not an SES signature");
  SesSignatureParts sig;
  sig.layout = fields == 2 ? 1 : 4;
  sig.toSign = tbs.Encoded(der);
  DerReader t = r.Enter(tbs);
  if (!t.Next(e) || !DerReadInteger(e, sig.version)) return Fail(reason, "TBS_Sign has no version");
  if (!t.Next(e)) return Fail(reason, "TBS_Sign has no seal");
  if (!ReadSeal(t, e, der, sig.seal, reason)) return false;
  std::string_view bits;
  if (!t.Next(e)) return Fail(reason, "TBS_Sign has no time");
  if (IsTime(e.tag)) {
    DerReadString(e, sig.timeInfo);
  } else if (DerReadBitString(e, bits)) {
    sig.timeInfo.assign(bits);
  } else {
    return Fail(reason, "TBS_Sign's time is malformed");
  }
  if (!t.Next(e) || !DerReadBitString(e, bits)) return Fail(reason, "TBS_Sign has no data hash");
  sig.dataHash.assign(bits);
  if (!t.Next(e) || !DerReadString(e, sig.propertyInfo)) return Fail(reason, "TBS_Sign has no property info");
  // Layout 1 goes on with the signer's certificate and algorithm; later
  // fields (extension data) are skipped.
  while (t.Next(e)) {
    if (sig.layout == 1 && e.tag == kDerOctetString && sig.signerCert.empty()) DerReadOctets(e, sig.signerCert);
    if (sig.layout == 1 && e.tag == kDerObjectId && sig.signatureAlgorithm.empty()) {
      DerReadObjectId(e, sig.signatureAlgorithm);
    }
  }
  if (!t.AtEnd()) return Fail(reason, "TBS_Sign is malformed");
  if (sig.layout == 4) {
    if (!r.Next(e) || !DerReadOctets(e, sig.signerCert)) return Fail(reason, "the signer's certificate is malformed");
    if (!r.Next(kDerObjectId, e) || !DerReadObjectId(e, sig.signatureAlgorithm)) {
      return Fail(reason, "the signature algorithm is malformed");
    }
  }
  if (!r.Next(e) || !DerReadBitString(e, bits)) return Fail(reason, "the signature value is malformed");
  sig.signature.assign(bits);
  if (fields == 5) {
    // [0] timeStamp: a BIT STRING tagged implicitly or explicitly, or the
    // token itself inside an explicit tag.
    if (!r.Next(e)) return Fail(reason, "the time stamp is malformed");
    if (e.tag == kDerContext0) {
      DerReader s = r.Enter(e);
      DerElement inner;
      if (!s.Next(inner)) return Fail(reason, "the time stamp is malformed");
      if (DerReadBitString(inner, bits)) {
        sig.timeStamp.assign(bits);
      } else {
        sig.timeStamp.assign(inner.Encoded(der));
      }
    } else if (e.tag == 0x80 && !e.content.empty()) {
      sig.timeStamp.assign(e.content.substr(1));
    } else if (DerReadBitString(e, bits)) {
      sig.timeStamp.assign(bits);
    } else {
      return Fail(reason, "the time stamp is malformed");
    }
  }
  out = std::move(sig);
  return true;
}

}  // namespace host
