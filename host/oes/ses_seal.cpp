#include "host/oes/ses_seal.h"

#include <climits>
#include <utility>

#include "host/oes/der_reader.h"

namespace host {
namespace {

// Collects the first failure of a parse; later ones are less telling.
class Parse {
 public:
  bool Fail(const DerReader& at, const char* what) { return Fail(at.Offset(), at.Failed(), what); }
  bool Fail(size_t offset, bool malformed, const char* what) {
    if (result_) {
      result_.status = malformed ? SesStatus::kMalformed : SesStatus::kNotSes;
      result_.offset = offset;
      result_.description = what;
    }
    return false;
  }
  // Reads the next value, which must carry `tag`.
  bool Expect(DerReader& r, uint8_t tag, DerElement& e, const char* what) {
    const size_t at = r.Offset();
    if (!r.Next(e)) return Fail(r, what);
    if (e.tag != tag) return Fail(at, false, what);
    return true;
  }
  bool ExpectString(DerReader& r, std::string& out, const char* what) {
    DerElement e;
    const size_t at = r.Offset();
    if (!r.Next(e)) return Fail(r, what);
    return DerReadString(e, out) || Fail(at, false, what);
  }
  bool ExpectInteger(DerReader& r, int64_t& out, const char* what) {
    DerElement e;
    const size_t at = r.Offset();
    if (!r.Next(e)) return Fail(r, what);
    return DerReadInteger(e, out) || Fail(at, false, what);
  }
  SesResult result() const { return result_; }

 private:
  SesResult result_;
};

int ToMillimetres(int64_t v) { return v >= 0 && v <= INT_MAX ? static_cast<int>(v) : 0; }

bool IsTime(uint8_t tag) { return tag == kDerUtcTime || tag == kDerGeneralizedTime; }

// SES_ESPropertyInfo. Version 4 adds certListType (an INTEGER) before the
// certificate list; dates are UTCTime in version 1 and GeneralizedTime in
// version 4, but either is taken in either layout.
bool ReadProperty(Parse& p, DerReader r, SesSeal& seal) {
  if (!p.ExpectInteger(r, seal.type, "property type")) return false;
  if (!p.ExpectString(r, seal.name, "property name")) return false;
  std::string* dates[] = {&seal.createDate, &seal.validStart, &seal.validEnd};
  size_t nextDate = 0;
  DerElement e;
  while (r.Next(e)) {
    if (IsTime(e.tag) && nextDate < 3) DerReadString(e, *dates[nextDate++]);
  }
  return r.AtEnd() || p.Fail(r, "property");
}

bool ReadPicture(Parse& p, DerReader r, SesPicture& picture) {
  int64_t width = 0, height = 0;
  DerElement data;
  if (!p.ExpectString(r, picture.type, "picture type")) return false;
  const size_t at = r.Offset();
  if (!r.Next(data)) return p.Fail(r, "picture data");
  if (!DerReadOctets(data, picture.data)) return p.Fail(at, false, "picture data");
  if (!p.ExpectInteger(r, width, "picture width")) return false;
  if (!p.ExpectInteger(r, height, "picture height")) return false;
  picture.width = ToMillimetres(width);
  picture.height = ToMillimetres(height);
  return true;
}

// SES_SealInfo: header, esID, property, picture, optional extension data.
bool ReadSealInfo(Parse& p, DerReader r, SesSeal& seal) {
  DerElement header, property, picture;
  if (!p.Expect(r, kDerSequence, header, "seal header")) return false;
  DerReader h = r.Enter(header);
  if (!p.ExpectString(h, seal.headerId, "header ID") ||
      !p.ExpectInteger(h, seal.headerVersion, "header version") ||
      !p.ExpectString(h, seal.vid, "header Vid")) {
    return false;
  }
  if (!p.ExpectString(r, seal.esID, "esID")) return false;
  if (!p.Expect(r, kDerSequence, property, "property")) return false;
  if (!ReadProperty(p, r.Enter(property), seal)) return false;
  if (!p.Expect(r, kDerSequence, picture, "picture")) return false;
  return ReadPicture(p, r.Enter(picture), seal.picture);
}

// A seal value (already read as `top`, a SEQUENCE): two fields are the
// version 1 layout, four (or more) the version 4 one.
bool ReadSeal(Parse& p, const DerReader& parent, const DerElement& top, SesSeal& seal) {
  if (top.tag != kDerSequence) return p.Fail(top.offset, false, "seal is not a SEQUENCE");
  DerReader r = parent.Enter(top);
  const int fields = r.CountRemaining();
  if (fields < 0) return p.Fail(top.offset, true, "seal fields");
  DerElement info, e;
  if (fields == 2) {
    seal.layout = 1;
    if (!p.Expect(r, kDerSequence, info, "seal info")) return false;
    if (!ReadSealInfo(p, r.Enter(info), seal)) return false;
    // SES_SignInfo { cert, signatureAlgorithm, signData }: only the algorithm
    // is kept.
    if (!p.Expect(r, kDerSequence, e, "sign info")) return false;
    DerReader s = r.Enter(e);
    while (s.Next(e)) {
      if (e.tag == kDerObjectId) DerReadObjectId(e, seal.signatureAlgorithm);
    }
    return s.AtEnd() || p.Fail(s, "sign info");
  }
  if (fields >= 4 && fields <= 5) {
    seal.layout = 4;
    if (!p.Expect(r, kDerSequence, info, "seal info")) return false;
    if (!ReadSealInfo(p, r.Enter(info), seal)) return false;
    if (!p.Expect(r, kDerOctetString, e, "seal cert")) return false;
    if (!p.Expect(r, kDerObjectId, e, "seal algorithm")) return false;
    DerReadObjectId(e, seal.signatureAlgorithm);
    return p.Expect(r, kDerBitString, e, "seal signed value");
  }
  return p.Fail(top.offset, false, "seal has neither 2 nor 4 fields");
}

// TBS_Sign: version, seal, time, data hash, property info, then (version 1)
// cert and algorithm or (version 4) optional [0] extension data.
bool ReadToSign(Parse& p, const DerReader& parent, const DerElement& tbs, SesSignature& sig) {
  DerReader r = parent.Enter(tbs);
  DerElement e;
  if (!p.ExpectInteger(r, sig.version, "signature version")) return false;
  if (!r.Next(e)) return p.Fail(r, "signature seal");
  if (!ReadSeal(p, r, e, sig.seal)) return false;
  const size_t timeAt = r.Offset();
  if (!r.Next(e)) return p.Fail(r, "signature time");
  if (IsTime(e.tag)) {
    DerReadString(e, sig.timeInfo);
  } else {
    std::string_view bits;
    if (!DerReadBitString(e, bits)) return p.Fail(timeAt, false, "signature time");
    sig.timeInfo.assign(bits);
  }
  if (!p.Expect(r, kDerBitString, e, "data hash")) return false;
  if (!p.ExpectString(r, sig.propertyInfo, "property info")) return false;
  while (r.Next(e)) {
    if (e.tag == kDerObjectId) DerReadObjectId(e, sig.signatureAlgorithm);
  }
  return r.AtEnd() || p.Fail(r, "signature fields");
}

}  // namespace

SesResult ParseSesSeal(std::string_view der, SesSeal& out) {
  if (der.empty()) return {SesStatus::kEmpty, 0, "no data"};
  Parse p;
  DerReader r(der);
  DerElement top;
  SesSeal seal;
  if (!r.Next(top)) {
    p.Fail(r, "seal");
  } else if (ReadSeal(p, r, top, seal)) {
    out = std::move(seal);
  }
  return p.result();
}

SesResult ParseSesSignature(std::string_view der, SesSignature& out) {
  if (der.empty()) return {SesStatus::kEmpty, 0, "no data"};
  Parse p;
  DerReader top(der);
  DerElement outer, e;
  if (!top.Next(outer)) {
    p.Fail(top, "signature");
    return p.result();
  }
  if (outer.tag != kDerSequence) {
    p.Fail(outer.offset, false, "signature is not a SEQUENCE");
    return p.result();
  }
  DerReader r = top.Enter(outer);
  const int fields = r.CountRemaining();
  SesSignature sig;
  if (fields < 0) {
    p.Fail(outer.offset, true, "signature fields");
  } else if (fields != 2 && fields != 4 && fields != 5) {
    p.Fail(outer.offset, false, "signature has neither 2 nor 4 fields");
  } else if (p.Expect(r, kDerSequence, e, "TBS_Sign") && ReadToSign(p, r, e, sig)) {
    sig.layout = fields == 2 ? 1 : 4;
    bool ok;
    if (fields == 2) {
      ok = p.Expect(r, kDerBitString, e, "signature");
    } else {
      ok = p.Expect(r, kDerOctetString, e, "signer cert") &&
           p.Expect(r, kDerObjectId, e, "signature algorithm");
      if (ok) {
        DerReadObjectId(e, sig.signatureAlgorithm);
        ok = p.Expect(r, kDerBitString, e, "signature");
      }
    }
    if (ok) out = std::move(sig);
  }
  return p.result();
}

}  // namespace host
