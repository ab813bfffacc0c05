#include "sample_signer.h"

#include <openssl/evp.h>
#include <openssl/x509.h>

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

std::unique_ptr<Sm2Signer> Sm2Signer::Create() {
  auto key = std::make_unique<Key>();
  key->pkey.reset(EVP_PKEY_Q_keygen(nullptr, nullptr, "SM2"));
  if (!key->pkey) return nullptr;
  unsigned char* der = nullptr;
  const int size = i2d_PUBKEY(key->pkey.get(), &der);
  if (size <= 0) return nullptr;
  std::string certificate(reinterpret_cast<const char*>(der), static_cast<size_t>(size));
  OPENSSL_free(der);
  std::unique_ptr<Sm2Signer> signer(new Sm2Signer(std::move(key)));
  signer->certificate_ = std::move(certificate);
  return signer;
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

std::string BuildSeal(const SealSpec& spec, const Sm2Signer& signer) {
  namespace d = samples::der;
  const bool v1 = spec.layout == 1;
  const std::string cert = d::OctetString(signer.Certificate());
  const auto date = [v1](std::string_view t) {
    return v1 ? d::UtcTime(t.substr(2)) : d::GeneralizedTime(t);
  };
  const std::string header = d::Sequence({d::Ia5String("ES"), d::Integer(spec.layout),
                                          d::Ia5String("TarvikSample")});
  const std::string property =
      v1 ? d::Sequence({d::Integer(1), d::Utf8String(spec.name), d::Sequence({cert}),
                        date("20250101000000Z"), date("20250101000000Z"), date("20350101000000Z")})
         : d::Sequence({d::Integer(1), d::Utf8String(spec.name), d::Integer(1), d::Sequence({cert}),
                        date("20250101000000Z"), date("20250101000000Z"), date("20350101000000Z")});
  const std::string picture = d::Sequence({d::Ia5String(spec.pictureType),
                                           d::OctetString(spec.picture),
                                           d::Integer(spec.widthMm), d::Integer(spec.heightMm)});
  const std::string info =
      d::Sequence({header, d::Ia5String(spec.esID), property, picture});
  const std::string alg = d::ObjectId(kSm2WithSm3);
  if (v1) {
    const std::string signature = signer.Sign(info);
    if (signature.empty()) return {};
    return d::Sequence({info, d::Sequence({cert, alg, d::BitString(signature)})});
  }
  const std::string signature = signer.Sign(d::Sequence({info, cert, alg}));
  if (signature.empty()) return {};
  return d::Sequence({info, cert, alg, d::BitString(signature)});
}

std::string BuildSignature(int layout, const std::string& seal, std::string_view signedData,
                           std::string_view propertyInfo, const Sm2Signer& signer) {
  namespace d = samples::der;
  const std::string cert = d::OctetString(signer.Certificate());
  const std::string alg = d::ObjectId(kSm2WithSm3);
  const std::string hash = d::BitString(Sm3(signedData));
  if (layout == 1) {
    const std::string tbs = d::Sequence({d::Integer(1), seal, d::BitString("20250101120000Z"), hash,
                                         d::Ia5String(propertyInfo), cert, alg});
    const std::string signature = signer.Sign(tbs);
    return signature.empty() ? std::string() : d::Sequence({tbs, d::BitString(signature)});
  }
  const std::string tbs = d::Sequence({d::Integer(4), seal, d::GeneralizedTime("20250101120000Z"),
                                       hash, d::Ia5String(propertyInfo)});
  const std::string signature = signer.Sign(tbs);
  return signature.empty() ? std::string() : d::Sequence({tbs, cert, alg, d::BitString(signature)});
}

}  // namespace samples
