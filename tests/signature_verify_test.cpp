// The signature verifier: documents signed by the sample generator, tampered
// with in memory, bad certificates and signed values, trust anchors, and the
// real signed fixtures with their verdicts established independently.
#include <gtest/gtest.h>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/fixtures.h"
#include "host/verify/asn1_time.h"
#include "host/verify/signature_verifier.h"
#include "host/verify/signed_list_history.h"
#include "host/verify/verify_crypto.h"
#include "der_writer.h"
#include "sample_ofd.h"
#include "sample_signer.h"
#include "support/opened_document.h"
#include "support/zip_builder.h"

namespace {

namespace fs = std::filesystem;
using host::CheckOutcome;
using host::SignatureVerdict;
using host::VerifyStatus;
using samples::PackageFiles;

// One root, a signer it issued, and a stranger root, made once.
struct Keys {
  std::unique_ptr<samples::Sm2Signer> root, signer, otherRoot, other;
  Keys() {
    samples::CertRecipe ca;
    ca.commonName = "Test Root";
    ca.ca = true;
    root = samples::Sm2Signer::Create(ca, nullptr);
    signer = samples::Sm2Signer::Create(samples::CertRecipe(), root.get());
    ca.commonName = "Other Root";
    otherRoot = samples::Sm2Signer::Create(ca, nullptr);
    other = samples::Sm2Signer::Create(samples::CertRecipe(), otherRoot.get());
  }
};
const Keys& K() {
  static const Keys keys;
  return keys;
}

samples::SealRecipe Recipe(int layout) {
  samples::SealRecipe recipe;
  recipe.layout = layout;
  recipe.esID = "TEST-1";
  recipe.name = "Test seal";
  recipe.pictureType = "PNG";
  recipe.picture = "PICTURE-A-0123456789";
  return recipe;
}

std::string* Find(PackageFiles& files, const std::string& path) {
  for (auto& [name, bytes] : files)
    if (name == path) return &bytes;
  return nullptr;
}

void Replace(std::string& s, const std::string& from, const std::string& to) {
  const size_t at = s.find(from);
  ASSERT_NE(at, std::string::npos) << from;
  s.replace(at, from.size(), to);
}

std::vector<SignatureVerdict> Verify(const std::string& zip, const std::string& anchors = "") {
  testing_support::Opened o = testing_support::Open(zip);
  if (!o.doc) return {};
  host::VerifyOptions options;
  options.trustAnchors = anchors;
  return host::VerifySignatures(*o.package, *o.doc, options);
}

std::string WritePem(const std::string& name, const samples::Sm2Signer& ca) {
  const fs::path dir = fs::path(TARVIK_TEST_OUTPUT_DIR);
  fs::create_directories(dir);
  const std::string path = (dir / name).string();
  std::ofstream(path, std::ios::binary) << ca.CertificatePem();
  return path;
}

std::string Describe(const SignatureVerdict& v) {
  std::string s = std::string(host::VerifyStatusName(v.status)) + ": " + v.reason + "\n";
  for (const auto& c : v.checks) s += "  [" + std::string(host::CheckOutcomeName(c.outcome)) + "] " + c.name + ": " + c.detail + "\n";
  return s;
}

// A signed document of `layout`, with the seal and files changed by the case.
struct TamperCase {
  const char* name;
  std::function<void(samples::SealRecipe&)> seal;      // before the seal is made
  std::function<void(std::string&)> sealBytes;       // after it is made, before signing
  std::function<void(PackageFiles&)> files;          // after signing
  const samples::Sm2Signer* signer;                  // null: K().signer
  VerifyStatus status;
  const char* check;   // the check that decides; "" when none fails
  const char* detail;  // a word of its detail
};

class SignatureVerify_Tampering : public ::testing::TestWithParam<int> {};

TEST_P(SignatureVerify_Tampering, EachChangeGivesItsVerdictAndNamesTheCheck) {
  const int layout = GetParam();
  ASSERT_TRUE(K().root && K().signer && K().otherRoot && K().other);
  samples::CertRecipe early;
  early.notBefore = 1767225600;  // 2026-01-01, after the signing time
  early.commonName = "Early Signer";
  const auto notYetValid = samples::Sm2Signer::Create(early, K().root.get());
  ASSERT_TRUE(notYetValid);
  const std::string page = "Doc_0/Pages/Page_0/Content.xml", value = "Doc_0/Signs/Sign_0/SignedValue.dat";
  const TamperCase cases[] = {
      {"untouched", nullptr, nullptr, nullptr, nullptr, VerifyStatus::kIntact, "", ""},
      {"page byte", nullptr, nullptr, [&](PackageFiles& f) { (*Find(f, page))[60] ^= 1; }, nullptr,
       VerifyStatus::kInvalid, "files", "/Doc_0/Pages/Page_0/Content.xml"},
      {"file removed", nullptr, nullptr,
       [](PackageFiles& f) { std::erase_if(f, [](const auto& e) { return e.first == "Doc_0/PublicRes.xml"; }); },
       nullptr, VerifyStatus::kInvalid, "files", "missing: /Doc_0/PublicRes.xml"},
      {"Signature.xml changed", nullptr, nullptr,
       [](PackageFiles& f) { Replace(*Find(f, "Doc_0/Signs/Sign_0/Signature.xml"), "Version=\"1.0\"", "Version=\"1.1\""); },
       nullptr, VerifyStatus::kInvalid, "data hash", "Signature.xml changed"},
      {"signature bit flipped", nullptr, nullptr, [&](PackageFiles& f) { Find(f, value)->back() ^= 0x10; }, nullptr,
       VerifyStatus::kInvalid, "signature", "does not verify"},
      {"dataHash replaced", nullptr, nullptr,
       [&](PackageFiles& f) {
         const std::string hash = samples::Sm3(*Find(f, "Doc_0/Signs/Sign_0/Signature.xml"));
         Replace(*Find(f, value), hash, samples::Sm3("other"));
       },
       nullptr, VerifyStatus::kInvalid, "data hash", "not the digest"},
      {"seal picture swapped", nullptr, [](std::string& seal) { Replace(seal, "PICTURE-A", "PICTURE-B"); }, nullptr,
       nullptr, VerifyStatus::kInvalid, "seal signature", "does not verify"},
      {"seal expired before signing", [](samples::SealRecipe& s) { s.validEnd = "20241231000000Z"; }, nullptr, nullptr,
       nullptr, VerifyStatus::kInvalid, "seal validity", "outside"},
      {"signer not in the seal's list",
       [](samples::SealRecipe& s) { s.certList = {K().other->Certificate()}; }, nullptr, nullptr, nullptr,
       VerifyStatus::kInvalid, "seal certificate list", "not one the seal lists"},
      {"certificate not yet valid", [&](samples::SealRecipe& s) { s.maker = K().signer.get(); }, nullptr, nullptr,
       notYetValid.get(), VerifyStatus::kInvalid, "signer certificate dates", "not yet valid"},
      {"unknown algorithm", nullptr, nullptr,
       [&](PackageFiles& f) {
         const std::string sm2 = "\x06\x08\x2A\x81\x1C\xCF\x55\x01\x83\x75", odd = "\x06\x08\x2A\x03\x04\x05\x06\x07\x08\x09";
         std::string& v = *Find(f, value);
         for (size_t at = v.find(sm2); at != std::string::npos; at = v.find(sm2)) v.replace(at, sm2.size(), odd);
       },
       nullptr, VerifyStatus::kUnknown, "signature", "unknown signature algorithm 1.2.3.4.5.6.7.8.9"},
      {"garbage certificate", nullptr, nullptr,
       [&](PackageFiles& f) {
         // Everywhere: as signer, seal maker and in the seal's list.
         const std::string cert = K().signer->Certificate();
         std::string& v = *Find(f, value);
         ASSERT_NE(v.find(cert), std::string::npos);
         for (size_t at = v.find(cert); at != std::string::npos; at = v.find(cert))
           v.replace(at, cert.size(), std::string(cert.size(), 'x'));
       },
       nullptr, VerifyStatus::kUnknown, "signature", "not DER X.509"},
  };
  for (const TamperCase& c : cases) {
    SCOPED_TRACE(c.name);
    const samples::Sm2Signer& signer = c.signer ? *c.signer : *K().signer;
    samples::SealRecipe recipe = Recipe(layout);
    if (c.seal) c.seal(recipe);
    if (!recipe.maker) recipe.maker = K().signer.get();
    if (recipe.certList.empty()) recipe.certList = {signer.Certificate()};
    std::string seal = samples::BuildSeal(recipe, signer);
    if (c.sealBytes) c.sealBytes(seal);
    PackageFiles files = samples::SignedDocumentFiles(layout, seal, signer);
    ASSERT_FALSE(files.empty());
    if (c.files) c.files(files);
    const std::vector<SignatureVerdict> verdicts = Verify(samples::Zip(files));
    ASSERT_EQ(verdicts.size(), 1u);
    const SignatureVerdict& v = verdicts[0];
    EXPECT_EQ(v.status, c.status) << Describe(v);
    if (*c.check) {
      const host::VerifyCheck* check = v.Find(c.check);
      ASSERT_NE(check, nullptr) << Describe(v);
      EXPECT_EQ(check->outcome, c.status == VerifyStatus::kUnknown ? CheckOutcome::kNotChecked : CheckOutcome::kFailed);
      EXPECT_NE(check->detail.find(c.detail), std::string::npos) << Describe(v);
      EXPECT_NE(v.reason.find(c.check), std::string::npos) << v.reason;
    } else {
      for (const auto& check : v.checks) EXPECT_NE(check.outcome, CheckOutcome::kFailed) << Describe(v);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BothLayouts, SignatureVerify_Tampering, ::testing::Values(1, 4));

TEST(SignatureVerify, TrustAnchorsDecideValidOrNotTrusted) {
  ASSERT_TRUE(K().root && K().signer);
  samples::SealRecipe recipe = Recipe(4);
  const std::string zip = samples::SignedDocument(4, recipe, *K().signer);
  const std::string good = WritePem("verify_root.pem", *K().root);
  const std::string stranger = WritePem("verify_other_root.pem", *K().otherRoot);
  const struct { std::string anchors; VerifyStatus status; const char* trust; } cases[] = {
      {good, VerifyStatus::kValid, "chains to the trust anchor"},
      {fs::path(good).parent_path().string(), VerifyStatus::kValid, "chains to the trust anchor"},
      {stranger, VerifyStatus::kIntact, "unable to get local issuer certificate"},
      {"/nonexistent/roots.pem", VerifyStatus::kIntact, "no certificate"},
      {"", VerifyStatus::kIntact, "no trust anchors given"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.anchors);
    const std::vector<SignatureVerdict> v = Verify(zip, c.anchors);
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].status, c.status) << Describe(v[0]);
    EXPECT_EQ(v[0].trusted, c.status == VerifyStatus::kValid);
    ASSERT_NE(v[0].Find("trust"), nullptr);
    EXPECT_NE(v[0].Find("trust")->detail.find(c.trust), std::string::npos) << Describe(v[0]);
  }
}

// A certificate whose RSA key has a modulus of `bits` bits (not a real key:
// only its size matters). Its own signature is never checked.
std::string CertificateWithRsaKey(int bits) {
  using namespace samples::der;
  std::string n(static_cast<size_t>(bits / 8) + 1, '\xA5');
  n[0] = '\0', n[1] = '\xC1', n.back() = '\x01';
  const std::string alg = Sequence({ObjectId("1.2.840.10045.4.3.2")}), name = Sequence({});
  const std::string key = Sequence({Sequence({ObjectId("1.2.840.113549.1.1.1"), Tlv(0x05, "")}),
                                    BitString(Sequence({Tlv(0x02, n), Integer(65537)}))});
  const std::string tbs = Sequence({Context(0, {Integer(2)}), Integer(7), alg, name,
                                    Sequence({UtcTime("240101000000Z"), UtcTime("450101000000Z")}), name, key});
  return Sequence({tbs, alg, BitString(std::string(64, '\x01'))});
}

// A detached CMS SignedData over `content` by a new P-256 key with a
// self-signed certificate valid 2024 to 2045.
std::string CmsOver(const std::string& content) {
  EVP_PKEY* key = EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256");
  X509* x = X509_new();
  X509_set_version(x, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(x), 7);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(x), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("CMS Signer"), -1, -1, 0);
  X509_set_issuer_name(x, X509_get_subject_name(x));
  ASN1_TIME_set(X509_getm_notBefore(x), 1704067200);
  ASN1_TIME_set(X509_getm_notAfter(x), 2366841600);
  X509_set_pubkey(x, key);
  X509_sign(x, key, EVP_sha256());
  BIO* in = BIO_new_mem_buf(content.data(), static_cast<int>(content.size()));
  CMS_ContentInfo* cms = CMS_sign(x, key, nullptr, in, CMS_DETACHED | CMS_BINARY);
  unsigned char* der = nullptr;
  const int size = cms ? i2d_CMS_ContentInfo(cms, &der) : 0;
  std::string out = size > 0 ? std::string(reinterpret_cast<char*>(der), static_cast<size_t>(size)) : "";
  OPENSSL_free(der);
  CMS_ContentInfo_free(cms);
  BIO_free(in);
  X509_free(x);
  EVP_PKEY_free(key);
  return out;
}

TEST(SignatureVerify, SignTypeValuesAsCms) {
  const std::string xml = "Doc_0/Signs/Sign_0/Signature.xml", value = "Doc_0/Signs/Sign_0/SignedValue.dat";
  const struct { const char* name; bool changeAfterSigning; VerifyStatus status; const char* detail; } cases[] = {{"over Signature.xml", false, VerifyStatus::kIntact, "CMS SignedData verifies"},
               {"Signature.xml changed", true, VerifyStatus::kInvalid, "does not verify"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    PackageFiles files = samples::SignedDocumentFiles(4, samples::BuildSeal(Recipe(4), *K().signer), *K().signer);
    ASSERT_FALSE(files.empty());
    Replace(*Find(files, "Doc_0/Signs/Signatures.xml"), "Type=\"Seal\"", "Type=\"Sign\"");
    *Find(files, value) = CmsOver(*Find(files, xml));
    ASSERT_FALSE(Find(files, value)->empty());
    if (c.changeAfterSigning) Replace(*Find(files, xml), "Version=\"1.0\"", "Version=\"1.1\"");
    const auto v = Verify(samples::Zip(files));
    ASSERT_EQ(v.size(), 1u);
    EXPECT_EQ(v[0].status, c.status) << Describe(v[0]);
    ASSERT_NE(v[0].Find("signature"), nullptr);
    EXPECT_NE(v[0].Find("signature")->detail.find(c.detail), std::string::npos) << Describe(v[0]);
    EXPECT_NE(v[0].signer.find("CMS Signer"), std::string::npos);
  }
}

TEST(SignatureVerify, BadCertificatesGiveReasons) {
  const std::string good = K().signer->Certificate();
  // status: of a signature check with the certificate
  const struct { const char* name; std::string der; bool reads; host::CryptoStatus status; const char* reason; } cases[] = {
      {"empty", "", false, host::CryptoStatus::kCannotCheck, "empty"},
      {"garbage", std::string(300, '\x30'), false, host::CryptoStatus::kCannotCheck, "not DER X.509"},
      {"too large", std::string(host::kMaxCertificateBytes + 1, 'x'), false, host::CryptoStatus::kCannotCheck, "64 KiB"},
      {"absurd RSA key", CertificateWithRsaKey(16384), true, host::CryptoStatus::kCannotCheck, "out of range"},
      {"good SM2 key, wrong value", good, true, host::CryptoStatus::kFailed, "does not verify"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string why;
    const host::CertificatePtr cert = host::ReadCertificate(c.der, why);
    EXPECT_EQ(cert != nullptr, c.reads) << why;
    if (!cert) {
      EXPECT_NE(why.find(c.reason), std::string::npos) << why;
      continue;
    }
    const auto result = host::VerifySignatureValue(cert.get(), "1.2.156.10197.1.501", "data", std::string(64, '\x01'));
    EXPECT_EQ(result.status, c.status);
    EXPECT_NE(result.detail.find(c.reason), std::string::npos) << result.detail;
  }
}

TEST(SignatureVerify, TimesInTheirWrittenForms) {
  const struct { const char* text; bool ok; const char* utc; } cases[] = {
      {"20250101120000Z", true, "2025-01-01 12:00:00 UTC"}, {"20250101120000", true, "2025-01-01 12:00:00 UTC"},
      {"250101120000Z", true, "2025-01-01 12:00:00 UTC"},   {"991231235959Z", true, "1999-12-31 23:59:59 UTC"},
      {"2020-01-25 15:31:56", true, "2020-01-25 15:31:56 UTC"},
      {"2020-01-25T07:31:56.377Z", true, "2020-01-25 07:31:56 UTC"},
      {"20200125153156+0800", true, "2020-01-25 07:31:56 UTC"},
      {"20251301000000Z", false, ""}, {"2025", false, ""}, {"", false, ""},
  };
  for (const auto& c : cases) {
    int64_t t = 0;
    EXPECT_EQ(host::ParseAsn1Time(c.text, t), c.ok) << c.text;
    if (c.ok) {
      EXPECT_EQ(host::FormatUtcTime(t), c.utc) << c.text;
    }
  }
}

TEST(SignatureVerify, EarlierSignatureListIsTheCurrentOneCutBeforeLaterEntries) {
  const std::string now =
      "<?xml version=\"1.0\"?>\n<ofd:Signatures><ofd:Signature ID=\"s1\" BaseLoc=\"a\"/><ofd:MaxSignId>s6"
      "</ofd:MaxSignId><ofd:Signature ID=\"s7\" BaseLoc=\"b\"/><ofd:Signature ID=\"s8\" BaseLoc=\"c\"/>"
      "</ofd:Signatures>";
  const std::string before7 = "<?xml version=\"1.0\"?>\n<ofd:Signatures><ofd:Signature ID=\"s1\" BaseLoc=\"a\"/>"
                              "<ofd:MaxSignId>s6</ofd:MaxSignId></ofd:Signatures>";
  std::vector<std::string> added;
  EXPECT_TRUE(host::FindEarlierSignatureList(now, "s1", [&](std::string_view s) { return s == before7; }, added));
  EXPECT_EQ(added, (std::vector<std::string>{"s7", "s8"}));
  EXPECT_FALSE(host::FindEarlierSignatureList(now, "s1", [](std::string_view) { return false; }, added));
  EXPECT_EQ(added, (std::vector<std::string>{"s7", "s8"}));
  EXPECT_FALSE(host::FindEarlierSignatureList(now, "s8", [](std::string_view) { return true; }, added));
  EXPECT_TRUE(added.empty());
  EXPECT_FALSE(host::FindEarlierSignatureList("<garbage", "s1", [](std::string_view) { return true; }, added));
}


// The signed fixtures, each verdict established independently (unzip, SM3 of
// each file against its CheckValue, openssl pkeyutl -verify on the signature
// and seal values) before it was frozen here.
TEST(SignatureVerify_Fixtures, VerdictsAndReasons) {
  const fs::path dir = TARVIK_FIXTURE_DIR;
  TARVIK_NEED_FIXTURE(dir);
  // check: the deciding one ("" for intact); detail: a phrase of the verdict's reason
  const struct { const char *file, *id; VerifyStatus status; const char *check, *detail; } cases[] = {
      {"ofdrw__fapiao_shili.ofd", "1", VerifyStatus::kIntact, "", "every check holds"},
      {"ofdrw__h.ofd", "s001", VerifyStatus::kIntact, "later signatures", "s007"},
      {"ofdrw__h.ofd", "s007", VerifyStatus::kIntact, "", "every check holds"},
      {"ofdrw__keyword.ofd", "2", VerifyStatus::kInvalid, "files",
       "changed after signing: /OFD.xml, /Doc_0/Document.xml, /Doc_0/Pages/Page_0/Content.xml"},
      {"ofdrw__anzhengtong_manual_seal.ofd", "2", VerifyStatus::kInvalid, "seal signature", "does not verify"},
      {"ofdrw__SESV4SignDoc.ofd", "1", VerifyStatus::kInvalid, "seal validity", "signed outside"},
      {"ofdrw__DigitalSign.ofd", "s001", VerifyStatus::kUnknown, "signature", "bare SM2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.file) + " " + c.id);
    testing_support::Opened o = testing_support::OpenFile(dir / c.file);
    ASSERT_TRUE(o.doc);
    const auto verdicts = host::VerifySignatures(*o.package, *o.doc, {});
    const SignatureVerdict* v = nullptr;
    for (const auto& candidate : verdicts)
      if (candidate.signatureId == c.id) v = &candidate;
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->status, c.status) << Describe(*v);
    if (*c.check) {
      ASSERT_NE(v->Find(c.check), nullptr) << Describe(*v);
      EXPECT_NE(v->Find(c.check)->detail.find(c.detail), std::string::npos) << Describe(*v);
    } else {
      EXPECT_NE(v->reason.find(c.detail), std::string::npos) << Describe(*v);
    }
  }
}

TEST(SignatureVerify, MissingOrBrokenSignatureFilesGiveNoVerdicts) {
  using testing_support::BuildOfdPackage;
  const std::string doc = testing_support::OfdDocumentXml({});
  const std::string list = "<ofd:Signatures xmlns:ofd=\"http://www.ofdspec.org/2016\"><ofd:Signature ID=\"1\" "
                           "BaseLoc=\"Sign_0/Signature.xml\"/></ofd:Signatures>";
  const std::string packages[] = {
      BuildOfdPackage({{"Doc_0/Document.xml", doc}}),
      BuildOfdPackage({{"Doc_0/Document.xml", doc}}, "Doc_0/Document.xml", "Doc_0/Signs/Signatures.xml"),
      BuildOfdPackage({{"Doc_0/Document.xml", doc}, {"Doc_0/Signs/Signatures.xml", list},
                       {"Doc_0/Signs/Sign_0/Signature.xml", "<garbage"}},
                      "Doc_0/Document.xml", "Doc_0/Signs/Signatures.xml"),
  };
  for (const std::string& p : packages) EXPECT_TRUE(Verify(p).empty());
}

}  // namespace
