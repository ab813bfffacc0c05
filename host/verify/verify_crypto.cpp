#include "host/verify/verify_crypto.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/cms.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/param_build.h>
#include <openssl/pem.h>
#include <openssl/pkcs7.h>
#include <openssl/ts.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/oes/der_reader.h"
#include "host/verify/asn1_time.h"

namespace host {
namespace {

constexpr char kSm2WithSm3[] = "1.2.156.10197.1.501";
constexpr char kSm2UserId[] = "1234567812345678";

struct BioFree {
  void operator()(BIO* b) const { BIO_free(b); }
};
struct MdCtxFree {
  void operator()(EVP_MD_CTX* c) const { EVP_MD_CTX_free(c); }
};
struct PkeyCtxFree {
  void operator()(EVP_PKEY_CTX* c) const { EVP_PKEY_CTX_free(c); }
};
struct CmsFree {
  void operator()(CMS_ContentInfo* c) const { CMS_ContentInfo_free(c); }
};
struct Pkcs7Free {
  void operator()(PKCS7* p) const { PKCS7_free(p); }
};
struct TstInfoFree {
  void operator()(TS_TST_INFO* t) const { TS_TST_INFO_free(t); }
};
struct EcdsaSigFree {
  void operator()(ECDSA_SIG* s) const { ECDSA_SIG_free(s); }
};
struct StoreCtxFree {
  void operator()(X509_STORE_CTX* c) const { X509_STORE_CTX_free(c); }
};
struct X509StackFree {
  void operator()(STACK_OF(X509)* s) const { sk_X509_free(s); }
};

using BioPtr = std::unique_ptr<BIO, BioFree>;

const unsigned char* Bytes(std::string_view s) { return reinterpret_cast<const unsigned char*>(s.data()); }

BioPtr MemBio(std::string_view s) {
  return BioPtr(BIO_new_mem_buf(s.data(), static_cast<int>(std::min<size_t>(s.size(), INT32_MAX))));
}

// The reason of OpenSSL's last error, and an empty queue afterwards.
std::string TakeError() {
  const unsigned long e = ERR_peek_last_error();
  std::string out = e ? ERR_reason_error_string(e) ? ERR_reason_error_string(e) : "error" : "";
  ERR_clear_error();
  return out;
}

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

bool Digest(const EVP_MD* md, std::string_view prefix, std::string_view data, std::string& out) {
  std::unique_ptr<EVP_MD_CTX, MdCtxFree> ctx(EVP_MD_CTX_new());
  unsigned char buf[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  if (!ctx || EVP_DigestInit_ex(ctx.get(), md, nullptr) != 1 ||
      EVP_DigestUpdate(ctx.get(), prefix.data(), prefix.size()) != 1 ||
      EVP_DigestUpdate(ctx.get(), data.data(), data.size()) != 1 || EVP_DigestFinal_ex(ctx.get(), buf, &size) != 1) {
    ERR_clear_error();
    return false;
  }
  out.assign(reinterpret_cast<const char*>(buf), size);
  return true;
}

bool IsSm2(EVP_PKEY* key) { return key && EVP_PKEY_is_a(key, "SM2"); }

// Z = SM3(ENTL || ID || a || b || Gx || Gy || x || y) of an SM2 key with the
// default user ID.
bool Sm2Z(EVP_PKEY* key, std::string& z) {
  static const unsigned char kCurve[] = {
      // a
      0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
      0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFC,
      // b
      0x28, 0xE9, 0xFA, 0x9E, 0x9D, 0x9F, 0x5E, 0x34, 0x4D, 0x5A, 0x9E, 0x4B, 0xCF, 0x65, 0x09, 0xA7, 0xF3, 0x97,
      0x89, 0xF5, 0x15, 0xAB, 0x8F, 0x92, 0xDD, 0xBC, 0xBD, 0x41, 0x4D, 0x94, 0x0E, 0x93,
      // Gx
      0x32, 0xC4, 0xAE, 0x2C, 0x1F, 0x19, 0x81, 0x19, 0x5F, 0x99, 0x04, 0x46, 0x6A, 0x39, 0xC9, 0x94, 0x8F, 0xE3,
      0x0B, 0xBF, 0xF2, 0x66, 0x0B, 0xE1, 0x71, 0x5A, 0x45, 0x89, 0x33, 0x4C, 0x74, 0xC7,
      // Gy
      0xBC, 0x37, 0x36, 0xA2, 0xF4, 0xF6, 0x77, 0x9C, 0x59, 0xBD, 0xCE, 0xE3, 0x6B, 0x69, 0x21, 0x53, 0xD0, 0xA9,
      0x87, 0x7C, 0xC6, 0x2A, 0x47, 0x40, 0x02, 0xDF, 0x32, 0xE5, 0x21, 0x39, 0xF0, 0xA0};
  if (!IsSm2(key)) return false;
  unsigned char point[133];
  size_t size = 0;
  if (EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, point, sizeof point, &size) != 1 ||
      size != 65 || point[0] != 0x04) {
    ERR_clear_error();
    return false;
  }
  std::string input;
  input += static_cast<char>(0x00);
  input += static_cast<char>(0x80);  // 16 bytes = 128 bits
  input += kSm2UserId;
  input.append(reinterpret_cast<const char*>(kCurve), sizeof kCurve);
  input.append(reinterpret_cast<const char*>(point + 1), 64);
  return Digest(EVP_sm3(), {}, input, z);
}

// An ECDSA/SM2 signature as DER: DER values pass through, r||s of even
// length is encoded. "" when it is neither.
std::string EcSignatureDer(std::string_view sig) {
  const unsigned char* p = Bytes(sig);
  std::unique_ptr<ECDSA_SIG, EcdsaSigFree> parsed(d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(sig.size())));
  if (parsed && p == Bytes(sig) + sig.size()) return std::string(sig);
  ERR_clear_error();
  if (sig.empty() || sig.size() % 2 != 0 || sig.size() > 132) return {};
  std::unique_ptr<ECDSA_SIG, EcdsaSigFree> s(ECDSA_SIG_new());
  const int half = static_cast<int>(sig.size() / 2);
  BIGNUM* r = BN_bin2bn(Bytes(sig), half, nullptr);
  BIGNUM* v = BN_bin2bn(Bytes(sig) + half, half, nullptr);
  if (!s || !r || !v || ECDSA_SIG_set0(s.get(), r, v) != 1) {
    BN_free(r);
    BN_free(v);
    ERR_clear_error();
    return {};
  }
  unsigned char* der = nullptr;
  const int n = i2d_ECDSA_SIG(s.get(), &der);
  std::string out = n > 0 ? std::string(reinterpret_cast<const char*>(der), static_cast<size_t>(n)) : std::string();
  OPENSSL_free(der);
  return out;
}

CryptoResult Result(CryptoStatus status, std::string detail) { return {status, std::move(detail)}; }

// Certificates signed with SM2 are checked with the user ID that the
// certificate carries; give every certificate the default one.
void SetSm2Id(X509* cert) {
  ASN1_OCTET_STRING* id = ASN1_OCTET_STRING_new();
  if (id && ASN1_OCTET_STRING_set(id, reinterpret_cast<const unsigned char*>(kSm2UserId), sizeof kSm2UserId - 1) == 1) {
    X509_set0_distinguishing_id(cert, id);  // takes ownership
  } else {
    ASN1_OCTET_STRING_free(id);
  }
}

// An SM2 public key from its uncompressed point, imported without the
// decoders; null when the point is not on the curve.
EVP_PKEY* ImportSm2Key(std::string_view point) {
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new_from_name(nullptr, "SM2", nullptr));
  OSSL_PARAM params[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, const_cast<char*>("SM2"), 0),
      OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, const_cast<char*>(point.data()), point.size()),
      OSSL_PARAM_construct_end()};
  EVP_PKEY* key = nullptr;
  if (!ctx || EVP_PKEY_fromdata_init(ctx.get()) != 1 ||
      EVP_PKEY_fromdata(ctx.get(), &key, EVP_PKEY_PUBLIC_KEY, params) != 1) {
    EVP_PKEY_free(key);
    key = nullptr;
  }
  ERR_clear_error();
  return key;
}

}  // namespace

void X509Free::operator()(X509* x) const { X509_free(x); }

bool IsBareEcSignature(std::string_view value) {
  const unsigned char* p = Bytes(value);
  std::unique_ptr<ECDSA_SIG, EcdsaSigFree> parsed(d2i_ECDSA_SIG(nullptr, &p, static_cast<long>(value.size())));
  ERR_clear_error();
  return parsed && p == Bytes(value) + value.size();
}

CertificatePtr Certificate::Read(std::string_view der, std::string& reason) {
  if (der.empty()) {
    reason = "the certificate is empty";
    return nullptr;
  }
  if (der.size() > kMaxCertificateBytes) {
    reason = "the certificate is larger than 64 KiB";
    return nullptr;
  }
  CertificatePtr cert(new Certificate());
  cert->der_.assign(der);
  const std::string_view d = cert->der_;
  // Certificate { tbsCertificate { [0] version, serial, signature, issuer,
  // validity, subject, subjectPublicKeyInfo, ... }, algorithm, signature }
  DerReader top(d);
  DerElement outer, tbs, e, validity, spki, alg, bits;
  bool ok = top.Next(kDerSequence, outer);
  DerReader c = top.Enter(outer);
  ok = ok && c.Next(kDerSequence, tbs);
  DerReader t = c.Enter(tbs);
  ok = ok && c.Next(kDerSequence, e) && c.Next(kDerBitString, e) && t.Next(e);
  if (ok && e.tag == kDerContext0) ok = t.Next(e);  // version; e is now the serial
  ok = ok && e.tag == kDerInteger && t.Next(kDerSequence, e) && t.Next(kDerSequence, e) &&
       t.Next(kDerSequence, validity) && t.Next(kDerSequence, e) && t.Next(kDerSequence, spki);
  if (!ok) {
    reason = "the certificate is not DER X.509";
    return nullptr;
  }
  cert->subject_ = e.Encoded(d);
  DerReader v = t.Enter(validity);
  DerElement from, to;
  std::string text;
  if (v.Next(from) && v.Next(to) && DerReadString(from, text) && ParseAsn1Time(text, cert->notBefore_) &&
      DerReadString(to, text) && ParseAsn1Time(text, cert->notAfter_)) {
    cert->datesRead_ = true;
  }
  DerReader k = t.Enter(spki);
  std::string algorithm, curve;
  std::string_view point;
  if (k.Next(kDerSequence, alg) && k.Next(kDerBitString, bits)) {
    DerReader a = k.Enter(alg);
    DerElement oid, params;
    if (a.Next(kDerObjectId, oid) && DerReadObjectId(oid, algorithm) && a.Next(params) &&
        params.tag == kDerObjectId) {
      DerReadObjectId(params, curve);
    }
    DerReadBitString(bits, point);
  }
  if (algorithm == "1.2.840.10045.2.1" && curve == "1.2.156.10197.1.301") {
    cert->key_ = ImportSm2Key(point);
  } else {
    const std::string_view encoded = spki.Encoded(d);
    const unsigned char* p = Bytes(encoded);
    cert->key_ = d2i_PUBKEY(nullptr, &p, static_cast<long>(encoded.size()));
  }
  if (!cert->key_) {
    reason = "the certificate's public key cannot be read (" + TakeError() + ")";
    return nullptr;
  }
  ERR_clear_error();
  return cert;
}

Certificate::~Certificate() { EVP_PKEY_free(key_); }

bool Certificate::Validity(int64_t& notBefore, int64_t& notAfter) const {
  notBefore = notBefore_;
  notAfter = notAfter_;
  return datesRead_;
}

std::string Certificate::Subject() const {
  const unsigned char* p = Bytes(subject_);
  X509_NAME* name = d2i_X509_NAME(nullptr, &p, static_cast<long>(subject_.size()));
  BioPtr bio(BIO_new(BIO_s_mem()));
  std::string out;
  if (name && bio && X509_NAME_print_ex(bio.get(), name, 0, XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB) >= 0) {
    char* data = nullptr;
    const long n = BIO_get_mem_data(bio.get(), &data);
    if (n > 0) out.assign(data, static_cast<size_t>(n));
  }
  X509_NAME_free(name);
  ERR_clear_error();
  return out;
}

X509* Certificate::X509Cert() {
  if (!triedX509_) {
    triedX509_ = true;
    const unsigned char* p = Bytes(der_);
    x509_.reset(d2i_X509(nullptr, &p, static_cast<long>(der_.size())));
    if (x509_) SetSm2Id(x509_.get());
    ERR_clear_error();
  }
  return x509_.get();
}

CertificatePtr ReadCertificate(std::string_view der, std::string& reason) { return Certificate::Read(der, reason); }

bool DigestByMethod(std::string_view method, std::string_view data, const Certificate* signer, std::string& out) {
  const std::string m = Lower(method);
  if (m == "1.2.156.10197.1.401.2") {
    std::string z;
    return signer && Sm2Z(signer->Key(), z) && Digest(EVP_sm3(), z, data, out);
  }
  const EVP_MD* md = nullptr;
  if (m.empty() || m == "sm3" || m == "1.2.156.10197.1.401" || m == "1.2.156.10197.1.401.1") {
    md = EVP_sm3();
  } else if (m == "sha1" || m == "sha-1" || m == "1.3.14.3.2.26") {
    md = EVP_sha1();
  } else if (m == "sha256" || m == "sha-256" || m == "2.16.840.1.101.3.4.2.1") {
    md = EVP_sha256();
  } else if (m == "sha384" || m == "sha-384" || m == "2.16.840.1.101.3.4.2.2") {
    md = EVP_sha384();
  } else if (m == "sha512" || m == "sha-512" || m == "2.16.840.1.101.3.4.2.3") {
    md = EVP_sha512();
  } else if (m == "md5" || m == "1.2.840.113549.2.5") {
    md = EVP_md5();
  }
  return md && Digest(md, {}, data, out);
}

CryptoResult VerifySignatureValue(const Certificate* cert, std::string_view algorithmOid, std::string_view data,
                                  std::string_view signature) {
  EVP_PKEY* key = cert ? cert->Key() : nullptr;
  if (!key) {
    ERR_clear_error();
    return Result(CryptoStatus::kCannotCheck, "the certificate's key cannot be read");
  }
  const int bits = EVP_PKEY_get_bits(key);
  if (bits < kMinKeyBits || bits > kMaxKeyBits) {
    return Result(CryptoStatus::kCannotCheck, "the key size (" + std::to_string(bits) + " bits) is out of range");
  }
  const std::string oid(algorithmOid);
  const bool sm2 = IsSm2(key);
  const EVP_MD* md = nullptr;
  std::string name;
  if (oid == kSm2WithSm3 || (sm2 && oid.rfind("1.2.156.10197.1.", 0) == 0)) {
    if (!sm2) return Result(CryptoStatus::kCannotCheck, "the algorithm is SM2-with-SM3 but the key is not SM2");
    md = EVP_sm3();
    name = "SM2-with-SM3";
  } else {
    ASN1_OBJECT* obj = OBJ_txt2obj(oid.c_str(), 1);
    const int nid = obj ? OBJ_obj2nid(obj) : NID_undef;
    ASN1_OBJECT_free(obj);
    int mdNid = NID_undef, pkNid = NID_undef;
    if (nid == NID_undef || !OBJ_find_sigid_algs(nid, &mdNid, &pkNid) || mdNid == NID_undef) {
      ERR_clear_error();
      return Result(CryptoStatus::kCannotCheck, "unknown signature algorithm " + (oid.empty() ? "(none)" : oid));
    }
    md = EVP_get_digestbynid(mdNid);
    const char* type = pkNid == NID_rsaEncryption ? "RSA" : pkNid == NID_X9_62_id_ecPublicKey ? "EC" : nullptr;
    if (!md || !type) return Result(CryptoStatus::kCannotCheck, "unsupported signature algorithm " + oid);
    if (!EVP_PKEY_is_a(key, type)) {
      return Result(CryptoStatus::kCannotCheck, "the algorithm " + std::string(OBJ_nid2ln(nid)) +
                                                    " does not fit the certificate's key");
    }
    name = OBJ_nid2ln(nid);
  }
  std::string sig(signature);
  if (sm2 || EVP_PKEY_is_a(key, "EC")) {
    sig = EcSignatureDer(signature);
    if (sig.empty()) return Result(CryptoStatus::kFailed, "the " + name + " signature value is malformed");
  }
  std::unique_ptr<EVP_MD_CTX, MdCtxFree> mctx(EVP_MD_CTX_new());
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> pctx(EVP_PKEY_CTX_new(key, nullptr));
  if (!mctx || !pctx) {
    ERR_clear_error();
    return Result(CryptoStatus::kCannotCheck, "out of memory");
  }
  if (sm2) {
    if (EVP_PKEY_CTX_set1_id(pctx.get(), kSm2UserId, sizeof kSm2UserId - 1) <= 0) {
      ERR_clear_error();
      return Result(CryptoStatus::kCannotCheck, "cannot set the SM2 user ID");
    }
    // The digest context borrows the key context, which outlives it here.
    EVP_MD_CTX_set_pkey_ctx(mctx.get(), pctx.get());
  }
  if (EVP_DigestVerifyInit(mctx.get(), nullptr, md, nullptr, key) != 1) {
    return Result(CryptoStatus::kCannotCheck, name + " cannot be used (" + TakeError() + ")");
  }
  const int ok = EVP_DigestVerify(mctx.get(), Bytes(sig), sig.size(), Bytes(data), data.size());
  ERR_clear_error();
  if (ok == 1) return Result(CryptoStatus::kVerified, name + " signature verifies");
  return Result(CryptoStatus::kFailed, name + " signature does not verify");
}

CryptoResult VerifySm2OverDigest(const Certificate* cert, std::string_view digest, std::string_view signature) {
  EVP_PKEY* key = cert ? cert->Key() : nullptr;
  if (!IsSm2(key) || digest.size() != 32) return Result(CryptoStatus::kCannotCheck, "not an SM2 key and SM3 digest");
  const std::string sig = EcSignatureDer(signature);
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxFree> ctx(EVP_PKEY_CTX_new(key, nullptr));
  const bool ok = !sig.empty() && ctx && EVP_PKEY_verify_init(ctx.get()) == 1 &&
                  EVP_PKEY_verify(ctx.get(), Bytes(sig), sig.size(), Bytes(digest), digest.size()) == 1;
  ERR_clear_error();
  return ok ? Result(CryptoStatus::kVerified, "SM2 signature verifies")
            : Result(CryptoStatus::kFailed, "SM2 signature does not verify");
}

CryptoResult VerifyCmsSignature(std::string_view value, std::string_view content, CertificatePtr& signer) {
  BioPtr in = MemBio(value);
  std::unique_ptr<CMS_ContentInfo, CmsFree> cms(in ? d2i_CMS_bio(in.get(), nullptr) : nullptr);
  if (!cms) {
    ERR_clear_error();
    return Result(CryptoStatus::kCannotCheck, "the signed value is neither SES nor CMS/PKCS#7");
  }
  if (OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_pkcs7_signed) {
    char oid[128] = "";
    OBJ_obj2txt(oid, sizeof oid, CMS_get0_type(cms.get()), 1);
    const std::string type = oid;
    ERR_clear_error();
    if (type == "1.2.156.10197.6.1.4.2.2") {
      return Result(CryptoStatus::kCannotCheck,
                    "the signed value is SM2 SignedData (content type 1.2.156.10197.6.1.4.2.2), which OpenSSL "
                    "cannot verify");
    }
    return Result(CryptoStatus::kCannotCheck, "the signed value is a ContentInfo of type " + type +
                                                  ", not SignedData");
  }
  ASN1_OCTET_STRING** inner = CMS_get0_content(cms.get());
  const bool attached = inner && *inner;
  std::string note;
  if (attached) {
    const std::string_view encapsulated(reinterpret_cast<const char*>(ASN1_STRING_get0_data(*inner)),
                                        static_cast<size_t>(ASN1_STRING_length(*inner)));
    if (encapsulated != content) note = " (over its own encapsulated content, which is not Signature.xml)";
  }
  BioPtr data = attached ? nullptr : MemBio(content);
  const int ok = CMS_verify(cms.get(), nullptr, nullptr, data.get(), nullptr,
                            CMS_NO_SIGNER_CERT_VERIFY | CMS_BINARY);
  const unsigned long err = ok == 1 ? 0 : ERR_peek_last_error();
  const std::string why = TakeError();
  STACK_OF(X509)* signers = CMS_get0_signers(cms.get());
  if (signers && sk_X509_num(signers) > 0) {
    unsigned char* der = nullptr;
    const int n = i2d_X509(sk_X509_value(signers, 0), &der);
    std::string ignored;
    if (n > 0) signer = ReadCertificate(std::string_view(reinterpret_cast<const char*>(der), static_cast<size_t>(n)), ignored);
    OPENSSL_free(der);
  }
  sk_X509_free(signers);
  ERR_clear_error();
  if (ok == 1) {
    if (!note.empty()) return Result(CryptoStatus::kFailed, "the CMS signature verifies" + note);
    return Result(CryptoStatus::kVerified, "CMS SignedData verifies over Signature.xml");
  }
  const int reason = ERR_GET_REASON(err);
  if (reason == CMS_R_CONTENT_VERIFY_ERROR || reason == CMS_R_VERIFICATION_FAILURE) {
    return Result(CryptoStatus::kFailed, "CMS signature does not verify (" + why + ")");
  }
  return Result(CryptoStatus::kCannotCheck, "CMS signature cannot be checked (" + why + ")");
}

bool ReadTimeStampTime(std::string_view token, int64_t& time, std::string& reason) {
  const unsigned char* p = Bytes(token);
  std::unique_ptr<PKCS7, Pkcs7Free> pkcs7(d2i_PKCS7(nullptr, &p, static_cast<long>(token.size())));
  std::unique_ptr<TS_TST_INFO, TstInfoFree> info(pkcs7 ? PKCS7_to_TS_TST_INFO(pkcs7.get()) : nullptr);
  ERR_clear_error();
  if (!info) {
    reason = "the time stamp is not an RFC 3161 token";
    return false;
  }
  const ASN1_GENERALIZEDTIME* t = TS_TST_INFO_get_time(info.get());
  const std::string_view s(reinterpret_cast<const char*>(ASN1_STRING_get0_data(t)),
                           static_cast<size_t>(ASN1_STRING_length(t)));
  if (!ParseAsn1Time(s, time)) {
    reason = "the time stamp's time is malformed";
    return false;
  }
  return true;
}

TrustAnchors::TrustAnchors() : store_(X509_STORE_new()) {}
TrustAnchors::~TrustAnchors() { X509_STORE_free(store_); }

bool TrustAnchors::Load(const std::string& path, std::string& reason) {
  namespace fs = std::filesystem;
  std::error_code ec;
  std::vector<fs::path> files;
  if (fs::is_directory(path, ec)) {
    for (fs::directory_iterator it(path, ec), end; !ec && it != end; it.increment(ec)) {
      if (it->is_regular_file(ec)) files.push_back(it->path());
      if (files.size() >= static_cast<size_t>(kMaxFiles)) break;
    }
    std::sort(files.begin(), files.end());
  } else {
    files.emplace_back(path);
  }
  for (const fs::path& file : files) {
    const auto size = fs::file_size(file, ec);
    if (ec || size > (1u << 20)) continue;
    std::ifstream in(file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    BioPtr bio = MemBio(bytes);
    while (bio) {
      X509Ptr cert(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
      if (!cert) break;
      SetSm2Id(cert.get());
      if (store_ && X509_STORE_add_cert(store_, cert.get()) == 1) ++count_;
    }
    if (bytes.rfind("-----", 0) != 0 && bytes.find("-----BEGIN") == std::string::npos) {
      std::string why;
      CertificatePtr der = ReadCertificate(bytes, why);
      if (der && der->X509Cert() && store_ && X509_STORE_add_cert(store_, der->X509Cert()) == 1) ++count_;
    }
    ERR_clear_error();
  }
  if (count_ == 0) reason = "no certificate in " + path;
  return count_ > 0;
}

CryptoResult TrustAnchors::VerifyChain(Certificate* certificate, const std::vector<Certificate*>& intermediates,
                                       int64_t at) const {
  X509* cert = certificate ? certificate->X509Cert() : nullptr;
  if (!store_) return Result(CryptoStatus::kCannotCheck, "no trust anchors");
  if (!cert) return Result(CryptoStatus::kCannotCheck, "OpenSSL cannot read the certificate");
  std::unique_ptr<X509_STORE_CTX, StoreCtxFree> ctx(X509_STORE_CTX_new());
  std::unique_ptr<STACK_OF(X509), X509StackFree> untrusted(sk_X509_new_null());
  if (!ctx || !untrusted) return Result(CryptoStatus::kCannotCheck, "out of memory");
  for (Certificate* c : intermediates) {
    if (c && c->X509Cert()) sk_X509_push(untrusted.get(), c->X509Cert());
  }
  if (X509_STORE_CTX_init(ctx.get(), store_, cert, untrusted.get()) != 1) {
    ERR_clear_error();
    return Result(CryptoStatus::kCannotCheck, "cannot build the chain");
  }
  X509_VERIFY_PARAM_set_time(X509_STORE_CTX_get0_param(ctx.get()), static_cast<time_t>(at));
  const int ok = X509_verify_cert(ctx.get());
  const int error = X509_STORE_CTX_get_error(ctx.get());
  ERR_clear_error();
  if (ok == 1) {
    STACK_OF(X509)* chain = X509_STORE_CTX_get0_chain(ctx.get());
    X509* root = chain && sk_X509_num(chain) > 0 ? sk_X509_value(chain, sk_X509_num(chain) - 1) : nullptr;
    std::string name;
    if (root) {
      unsigned char* der = nullptr;
      const int n = i2d_X509(root, &der);
      std::string ignored;
      const CertificatePtr anchor =
          n > 0 ? ReadCertificate(std::string_view(reinterpret_cast<const char*>(der), static_cast<size_t>(n)), ignored)
                : nullptr;
      OPENSSL_free(der);
      if (anchor) name = anchor->Subject();
    }
    return Result(CryptoStatus::kVerified, "chains to the trust anchor " + name);
  }
  return Result(CryptoStatus::kFailed, X509_verify_cert_error_string(error));
}

}  // namespace host
