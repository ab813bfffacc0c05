// The signature verifier: documents signed by the sample generator, tampered
// with in memory, bad certificates and signed values, trust anchors, and the
// real signed fixtures with their verdicts established independently.
#include <gtest/gtest.h>

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <algorithm>
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
    root = samples::Sm2Signer::Create({.commonName = "Test Root", .ca = true}, nullptr);
    signer = samples::Sm2Signer::Create(samples::CertRecipe(), root.get());
    otherRoot = samples::Sm2Signer::Create({.commonName = "Other Root", .ca = true}, nullptr);
    other = samples::Sm2Signer::Create(samples::CertRecipe(), otherRoot.get());
  }
};
const Keys& K() {
  static const Keys keys;
  return keys;
}

samples::SealRecipe Recipe(int layout) {
  return {.layout = layout, .esID = "TEST-1", .name = "Test seal", .pictureType = "PNG",
          .picture = "PICTURE-A-0123456789", .certList = {}};
}

std::string* Find(PackageFiles& files, const std::string& path) {
  for (auto& [name, bytes] : files)
    if (name == path) return &bytes;
  return nullptr;
}

// Replaces every `from` in `s`, which must hold it.
void Replace(std::string& s, const std::string& from, const std::string& to) {
  ASSERT_NE(s.find(from), std::string::npos) << from;
  for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
    s.replace(at, from.size(), to);
}

std::vector<SignatureVerdict> Verify(const std::string& zip, const std::string& anchors = "") {
  testing_support::Opened o = testing_support::Open(zip);
  if (!o.doc) return {};
  return host::VerifySignatures(*o.package, *o.doc, {.trustAnchors = anchors});
}

std::string WritePem(const std::string& name, const samples::Sm2Signer& ca) {
  fs::create_directories(TARVIK_TEST_OUTPUT_DIR);
  const std::string path = (fs::path(TARVIK_TEST_OUTPUT_DIR) / name).string();
  std::ofstream(path, std::ios::binary) << ca.CertificatePem();
  return path;
}

std::string Describe(const SignatureVerdict& v) {
  std::string s = std::string(host::VerifyStatusName(v.status)) + ": " + v.reason + "\n";
  for (const auto& c : v.checks) s += "  [" + std::string(host::CheckOutcomeName(c.outcome)) + "] " + c.name + ": " + c.detail + "\n";
  return s;
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

// A signed document of `layout`, with the seal and files changed by the case.
struct TamperCase {
  const char* name;
  std::function<void(samples::SealRecipe&)> seal;      // before the seal is made
  std::function<void(std::string&)> sealBytes;       // after it is made, before signing
  std::function<void(PackageFiles&)> files;          // after signing
  const samples::Sm2Signer* signer;                  // null: K().signer
  VerifyStatus status;
  const char* check;   // the check that decides (passed when intact, else failed or not checked)
  const char* detail;  // a word of its detail
};

class SignatureVerify_Tampering : public ::testing::TestWithParam<int> {};

TEST_P(SignatureVerify_Tampering, EachChangeGivesItsVerdictAndNamesTheCheck) {
  const int layout = GetParam();
  ASSERT_TRUE(K().root && K().signer && K().otherRoot && K().other);
  const auto notYetValid =  // from 2026-01-01, after the signing time
      samples::Sm2Signer::Create({.commonName = "Early Signer", .notBefore = 1767225600}, K().root.get());
  ASSERT_TRUE(notYetValid);
  const std::string page = "Doc_0/Pages/Page_0/Content.xml", value = "Doc_0/Signs/Sign_0/SignedValue.dat";
  const std::string xml = "Doc_0/Signs/Sign_0/Signature.xml", &cert = K().signer->Certificate();
  const std::string sm2 = samples::der::ObjectId("1.2.156.10197.1.501");  // SM2 with SM3
  const std::string odd = samples::der::ObjectId("1.2.3.4.5.6.7.8.9");
  const auto bumpVersion = [&](PackageFiles& f) { Replace(*Find(f, xml), "Version=\"1.0\"", "Version=\"1.1\""); };
  // Type "Sign": the signed value is a CMS SignedData over Signature.xml.
  const auto cms = [&](PackageFiles& f) {
    Replace(*Find(f, "Doc_0/Signs/Signatures.xml"), "Type=\"Seal\"", "Type=\"Sign\"");
    *Find(f, value) = CmsOver(*Find(f, xml));
  };
  const TamperCase cases[] = {
      {"untouched", nullptr, nullptr, nullptr, nullptr, VerifyStatus::kIntact, "signature", "verifies"},
      {"page byte", nullptr, nullptr, [&](PackageFiles& f) { (*Find(f, page))[60] ^= 1; }, nullptr,
       VerifyStatus::kInvalid, "files", "/Doc_0/Pages/Page_0/Content.xml"},
      {"file removed", nullptr, nullptr,
       [](PackageFiles& f) { std::erase_if(f, [](const auto& e) { return e.first == "Doc_0/PublicRes.xml"; }); },
       nullptr, VerifyStatus::kInvalid, "files", "missing: /Doc_0/PublicRes.xml"},
      {"Signature.xml changed", nullptr, nullptr, bumpVersion, nullptr, VerifyStatus::kInvalid, "data hash",
       "Signature.xml changed"},
      {"signature bit flipped", nullptr, nullptr, [&](PackageFiles& f) { Find(f, value)->back() ^= 0x10; }, nullptr,
       VerifyStatus::kInvalid, "signature", "does not verify"},
      {"dataHash replaced", nullptr, nullptr,
       [&](PackageFiles& f) { Replace(*Find(f, value), samples::Sm3(*Find(f, xml)), samples::Sm3("other")); },
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
      {"unknown algorithm", nullptr, nullptr, [&](PackageFiles& f) { Replace(*Find(f, value), sm2, odd); }, nullptr,
       VerifyStatus::kUnknown, "signature", "unknown signature algorithm 1.2.3.4.5.6.7.8.9"},
      {"garbage certificate", nullptr, nullptr,  // everywhere: as signer, seal maker and in the seal's list
       [&](PackageFiles& f) { Replace(*Find(f, value), cert, std::string(cert.size(), 'x')); },
       nullptr, VerifyStatus::kUnknown, "signature", "not DER X.509"},
      {"CMS over Signature.xml", nullptr, nullptr, cms, nullptr, VerifyStatus::kIntact, "signature",
       "CMS SignedData verifies"},
      {"CMS, Signature.xml changed", nullptr, nullptr,
       [&](PackageFiles& f) {
         cms(f);
         bumpVersion(f);
       },
       nullptr, VerifyStatus::kInvalid, "signature", "does not verify"},
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
    const host::VerifyCheck* check = v.Find(c.check);
    ASSERT_NE(check, nullptr) << Describe(v);
    EXPECT_EQ(check->outcome, c.status == VerifyStatus::kIntact    ? CheckOutcome::kPassed
                              : c.status == VerifyStatus::kUnknown ? CheckOutcome::kNotChecked
                                                                   : CheckOutcome::kFailed);
    EXPECT_NE(check->detail.find(c.detail), std::string::npos) << Describe(v);
    if (c.status == VerifyStatus::kIntact) {
      for (const auto& other : v.checks) EXPECT_NE(other.outcome, CheckOutcome::kFailed) << Describe(v);
    } else {
      EXPECT_NE(v.reason.find(c.check), std::string::npos) << v.reason;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BothLayouts, SignatureVerify_Tampering, ::testing::Values(1, 4));

TEST(SignatureVerify, TrustAnchorsDecideValidOrNotTrusted) {
  ASSERT_TRUE(K().root && K().signer);
  const std::string zip = samples::SignedDocument(4, Recipe(4), *K().signer);
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
    EXPECT_EQ(c.ok ? host::FormatUtcTime(t) : "", c.utc) << c.text;
  }
}

TEST(SignatureVerify, EarlierSignatureListIsTheCurrentOneCutBeforeLaterEntries) {
  const std::string head = "<?xml version=\"1.0\"?>\n<ofd:Signatures><ofd:Signature ID=\"s1\" BaseLoc=\"a\"/>"
                           "<ofd:MaxSignId>s6</ofd:MaxSignId>";
  const std::string now = head + "<ofd:Signature ID=\"s7\" BaseLoc=\"b\"/><ofd:Signature ID=\"s8\" BaseLoc=\"c\"/>"
                                 "</ofd:Signatures>";
  const std::string before7 = head + "</ofd:Signatures>";
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
    const auto v = std::find_if(verdicts.begin(), verdicts.end(), [&](const auto& x) { return x.signatureId == c.id; });
    ASSERT_NE(v, verdicts.end());
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
