#include "sample_signer.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include "der_writer.h"

namespace samples {
namespace {

constexpr char kSm2WithSm3[] = "1.2.156.10197.1.501";
constexpr char kUserId[] = "1234567812345678";

struct PkeyDeleter {
  void operator()(EVP_PKEY* k) const { EVP_PKEY_free(k); }
};
struct PkeyCtxDeleter {
  void operator()(EVP_PKEY_CTX* c) const { EVP_PKEY_CTX_free(c); }
};
struct MdCtxDeleter {
  void operator()(EVP_MD_CTX* c) const { EVP_MD_CTX_free(c); }
};
struct X509Deleter {
  void operator()(X509* x) const { X509_free(x); }
};
struct BioDeleter {
  void operator()(BIO* b) const { BIO_free(b); }
};

bool AddExtension(X509* x, int nid, const char* value) {
  X509V3_CTX ctx;
  X509V3_set_ctx_nodb(&ctx);
  X509V3_set_ctx(&ctx, x, x, nullptr, nullptr, 0);
  X509_EXTENSION* ext = X509V3_EXT_conf_nid(nullptr, &ctx, nid, value);
  const bool ok = ext && X509_add_ext(x, ext, -1) == 1;
  X509_EXTENSION_free(ext);
  return ok;
}

}  // namespace

struct Sm2Signer::Key {
  std::unique_ptr<EVP_PKEY, PkeyDeleter> pkey;
};

std::string Sm3(std::string_view data) {
  unsigned char out[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  if (EVP_Digest(data.data(), data.size(), out, &size, EVP_sm3(), nullptr) != 1) return {};
  return std::string(reinterpret_cast<const char*>(out), size);
}

std::string Base64(std::string_view data) {
  std::string out(4 * ((data.size() + 2) / 3) + 1, '\0');
  const int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                                reinterpret_cast<const unsigned char*>(data.data()),
                                static_cast<int>(data.size()));
  out.resize(n > 0 ? static_cast<size_t>(n) : 0);
  return out;
}

Sm2Signer::Sm2Signer(std::unique_ptr<Key> key) : key_(std::move(key)) {}
Sm2Signer::~Sm2Signer() = default;

std::unique_ptr<Sm2Signer> Sm2Signer::Create() { return Create(CertRecipe(), nullptr); }

std::unique_ptr<Sm2Signer> Sm2Signer::Create(const CertRecipe& recipe, const Sm2Signer* issuer) {
  auto key = std::make_unique<Key>();
  key->pkey.reset(EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2"));
  if (!key->pkey) return nullptr;
  std::unique_ptr<Sm2Signer> signer(new Sm2Signer(std::move(key)));
  if (!signer->Issue(recipe, issuer ? *issuer : *signer, *signer)) return nullptr;
  return signer;
}

// Makes `subject`'s certificate, signed by `issuer` (SM2-with-SM3, user ID
// "1234567812345678"), and stores it in `subject`.
bool Sm2Signer::Issue(const CertRecipe& recipe, const Sm2Signer& issuer, const Sm2Signer& subject) {
  static long serial = 1;
  std::unique_ptr<X509, X509Deleter> x(X509_new());
  if (!x || X509_set_version(x.get(), 2) != 1 || ASN1_INTEGER_set(X509_get_serialNumber(x.get()), serial++) != 1) {
    return false;
  }
  X509_NAME* name = X509_get_subject_name(x.get());
  X509_NAME_add_entry_by_txt(name, "O", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>("Tarvik"), -1, -1, 0);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(recipe.commonName.c_str()), -1, -1, 0);
  X509* issuerCert = nullptr;
  if (&issuer != &subject) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(issuer.certificate_.data());
    issuerCert = d2i_X509(nullptr, &p, static_cast<long>(issuer.certificate_.size()));
    if (!issuerCert) return false;
  }
  std::unique_ptr<X509, X509Deleter> issuerOwner(issuerCert);
  X509_set_issuer_name(x.get(), issuerCert ? X509_get_subject_name(issuerCert) : name);
  if (!ASN1_TIME_set(X509_getm_notBefore(x.get()), static_cast<time_t>(recipe.notBefore)) ||
      !ASN1_TIME_set(X509_getm_notAfter(x.get()), static_cast<time_t>(recipe.notAfter)) ||
      X509_set_pubkey(x.get(), subject.key_->pkey.get()) != 1 ||
      !AddExtension(x.get(), NID_basic_constraints, recipe.ca ? "critical,CA:TRUE" : "critical,CA:FALSE") ||
      !AddExtension(x.get(), NID_key_usage, recipe.ca ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature")) {
    return false;
  }
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxDeleter> pctx(EVP_PKEY_CTX_new(issuer.key_->pkey.get(), nullptr));
  std::unique_ptr<EVP_MD_CTX, MdCtxDeleter> mctx(EVP_MD_CTX_new());
  if (!pctx || !mctx || EVP_PKEY_CTX_set1_id(pctx.get(), kUserId, sizeof kUserId - 1) <= 0) return false;
  EVP_MD_CTX_set_pkey_ctx(mctx.get(), pctx.get());
  if (EVP_DigestSignInit(mctx.get(), nullptr, EVP_sm3(), nullptr, issuer.key_->pkey.get()) != 1 ||
      X509_sign_ctx(x.get(), mctx.get()) <= 0) {
    return false;
  }
  unsigned char* der = nullptr;
  const int size = i2d_X509(x.get(), &der);
  if (size <= 0) return false;
  certificate_.assign(reinterpret_cast<const char*>(der), static_cast<size_t>(size));
  OPENSSL_free(der);
  return true;
}

std::string Sm2Signer::CertificatePem() const {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(certificate_.data());
  std::unique_ptr<X509, X509Deleter> x(d2i_X509(nullptr, &p, static_cast<long>(certificate_.size())));
  std::unique_ptr<BIO, BioDeleter> bio(BIO_new(BIO_s_mem()));
  if (!x || !bio || PEM_write_bio_X509(bio.get(), x.get()) != 1) return {};
  char* data = nullptr;
  const long n = BIO_get_mem_data(bio.get(), &data);
  return n > 0 ? std::string(data, static_cast<size_t>(n)) : std::string();
}

std::string Sm2Signer::Sign(std::string_view data) const {
  std::unique_ptr<EVP_PKEY_CTX, PkeyCtxDeleter> pctx(EVP_PKEY_CTX_new(key_->pkey.get(), nullptr));
  std::unique_ptr<EVP_MD_CTX, MdCtxDeleter> mctx(EVP_MD_CTX_new());
  if (!pctx || !mctx || EVP_PKEY_CTX_set1_id(pctx.get(), kUserId, sizeof kUserId - 1) <= 0) return {};
  // The digest context borrows the key context, which outlives it here.
  EVP_MD_CTX_set_pkey_ctx(mctx.get(), pctx.get());
  size_t size = 0;
  if (EVP_DigestSignInit(mctx.get(), nullptr, EVP_sm3(), nullptr, key_->pkey.get()) != 1 ||
      EVP_DigestSign(mctx.get(), nullptr, &size, reinterpret_cast<const unsigned char*>(data.data()),
                     data.size()) != 1) {
    return {};
  }
  std::string out(size, '\0');
  if (EVP_DigestSign(mctx.get(), reinterpret_cast<unsigned char*>(out.data()), &size,
                     reinterpret_cast<const unsigned char*>(data.data()), data.size()) != 1) {
    return {};
  }
  out.resize(size);
  return out;
}

std::string BuildSeal(const SealRecipe& recipe, const Sm2Signer& signer) {
  namespace d = samples::der;
  const bool v1 = recipe.layout == 1;
  const Sm2Signer& maker = recipe.maker ? *recipe.maker : signer;
  const std::string cert = d::OctetString(maker.Certificate());
  std::string listed;
  if (recipe.certList.empty()) {
    listed = d::OctetString(signer.Certificate());
  } else {
    for (const std::string& c : recipe.certList) listed += d::OctetString(c);
  }
  const std::string list = d::Tlv(0x30, listed);
  const auto date = [v1](std::string_view t) {
    return v1 ? d::UtcTime(t.substr(2)) : d::GeneralizedTime(t);
  };
  const std::string header = d::Sequence({d::Ia5String("ES"), d::Integer(recipe.layout),
                                          d::Ia5String("TarvikSample")});
  const std::string property =
      v1 ? d::Sequence({d::Integer(1), d::Utf8String(recipe.name), list, date(recipe.validStart),
                        date(recipe.validStart), date(recipe.validEnd)})
         : d::Sequence({d::Integer(1), d::Utf8String(recipe.name), d::Integer(1), list, date(recipe.validStart),
                        date(recipe.validStart), date(recipe.validEnd)});
  const std::string picture = d::Sequence({d::Ia5String(recipe.pictureType),
                                           d::OctetString(recipe.picture),
                                           d::Integer(recipe.widthMm), d::Integer(recipe.heightMm)});
  const std::string info =
      d::Sequence({header, d::Ia5String(recipe.esID), property, picture});
  const std::string alg = d::ObjectId(kSm2WithSm3);
  if (v1) {
    const std::string signature = maker.Sign(info);
    if (signature.empty()) return {};
    return d::Sequence({info, d::Sequence({cert, alg, d::BitString(signature)})});
  }
  const std::string signature = maker.Sign(d::Sequence({info, cert, alg}));
  if (signature.empty()) return {};
  return d::Sequence({info, cert, alg, d::BitString(signature)});
}

std::string BuildSignature(int layout, const std::string& seal, std::string_view signedData,
                           std::string_view propertyInfo, const Sm2Signer& signer, std::string_view signingTime) {
  namespace d = samples::der;
  const std::string cert = d::OctetString(signer.Certificate());
  const std::string alg = d::ObjectId(kSm2WithSm3);
  const std::string hash = d::BitString(Sm3(signedData));
  if (layout == 1) {
    const std::string tbs = d::Sequence({d::Integer(1), seal, d::BitString(signingTime), hash,
                                         d::Ia5String(propertyInfo), cert, alg});
    const std::string signature = signer.Sign(tbs);
    return signature.empty() ? std::string() : d::Sequence({tbs, d::BitString(signature)});
  }
  const std::string tbs = d::Sequence({d::Integer(4), seal, d::GeneralizedTime(signingTime),
                                       hash, d::Ia5String(propertyInfo)});
  const std::string signature = signer.Sign(tbs);
  return signature.empty() ? std::string() : d::Sequence({tbs, cert, alg, d::BitString(signature)});
}

}  // namespace samples
