// Verifying every signature of each signed real document (opening the
// package and the document, digesting the signed files, checking signature
// and seal), beside two floors over the same bytes in the same run: SM3 over
// every file the signatures digest (each Reference and each Signature.xml),
// and that digest plus one signature and one seal check per signature (what
// any verifier must pay). Also opening alone, which a viewer does anyway.
// The documents are read from TARVIK_FIXTURE_DIR, else ../shared/fixtures/ofd
// beside the source tree; without them nothing is registered.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"
#include "host/verify/ses_signed_parts.h"
#include "host/verify/signature_verifier.h"
#include "host/verify/verify_crypto.h"

namespace {

struct SignedDocument {
  std::string zip;
  std::vector<std::string> digested;  // the bytes of every file digested
  struct Check {
    std::string value;  // keeps the views of `parts` alive
    host::SesSignatureParts parts;
    host::CertificatePtr signer, maker;
  };
  std::vector<std::unique_ptr<Check>> checks;
};

bool Open(const std::string& zip, host::OfdPackage& package, host::OfdDocument& doc) {
  return package.LoadFromStream(host::StreamReader::CreateMemoryStreamReader(zip), 1) == 0 &&
         package.CountDocuments() > 0 && doc.LoadDocument(&package, package.GetDocument(0), -1) == 0;
}

std::unique_ptr<SignedDocument> Load(const std::filesystem::path& file) {
  auto d = std::make_unique<SignedDocument>();
  std::ifstream in(file, std::ios::binary);
  d->zip.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  host::OfdPackage package;
  host::OfdDocument doc;
  if (!Open(d->zip, package, doc)) return nullptr;
  const auto signatures = host::OfdSignatures::Load(&doc);
  if (!signatures || signatures->CountSignatures() == 0) return nullptr;
  for (const host::OfdSignatureInfo& sig : signatures->GetSignatures()) {
    const std::string xmlPath = host::NormalizeLocation(sig.location.view());
    std::string bytes;
    if (package.ReadEntry(xmlPath, bytes)) d->digested.push_back(bytes);
    for (const auto& ref : sig.references) {
      if (package.ReadEntry(host::ResolveLocation(host::FolderOf(xmlPath), ref.fileRef), bytes)) {
        d->digested.push_back(bytes);
      }
    }
    auto check = std::make_unique<SignedDocument::Check>();
    std::string why;
    if (package.ReadEntry(host::NormalizeLocation(sig.signedValueLocation.view()), check->value) &&
        host::ReadSesSignatureParts(check->value, check->parts, why)) {
      check->signer = host::ReadCertificate(check->parts.signerCert, why);
      check->maker = host::ReadCertificate(check->parts.seal.makerCert, why);
      if (check->signer && check->maker) d->checks.push_back(std::move(check));
    }
  }
  return d;
}

void Verify(benchmark::State& state, const SignedDocument* d) {
  for (auto _ : state) {
    host::OfdPackage package;
    host::OfdDocument doc;
    Open(d->zip, package, doc);
    benchmark::DoNotOptimize(host::VerifySignatures(package, doc, {}));
  }
}

void OpenOnly(benchmark::State& state, const SignedDocument* d) {
  for (auto _ : state) {
    host::OfdPackage package;
    host::OfdDocument doc;
    benchmark::DoNotOptimize(Open(d->zip, package, doc));
  }
}

void DigestFloor(benchmark::State& state, const SignedDocument* d) {
  std::string digest;
  for (auto _ : state) {
    for (const std::string& bytes : d->digested) host::DigestByMethod("SM3", bytes, nullptr, digest);
    benchmark::DoNotOptimize(digest);
  }
}

void CryptoFloor(benchmark::State& state, const SignedDocument* d) {
  std::string digest;
  for (auto _ : state) {
    for (const std::string& bytes : d->digested) host::DigestByMethod("SM3", bytes, nullptr, digest);
    for (const auto& c : d->checks) {
      benchmark::DoNotOptimize(host::VerifySignatureValue(c->signer.get(), c->parts.signatureAlgorithm,
                                                          c->parts.toSign, c->parts.signature));
      benchmark::DoNotOptimize(host::VerifySignatureValue(c->maker.get(), c->parts.seal.makerAlgorithm,
                                                          c->parts.seal.sealInfo, c->parts.seal.makerSignature));
    }
  }
}

std::filesystem::path FixtureFolder() {
  if (const char* dir = std::getenv("TARVIK_FIXTURE_DIR")) return dir;
  return std::filesystem::path(__FILE__).parent_path() / ".." / ".." / "shared" / "fixtures" / "ofd";
}

const bool kRegistered = [] {
  static std::vector<std::unique_ptr<SignedDocument>> docs;
  for (const char* name : {"ofdrw__fapiao_shili", "ofdrw__h", "ofdrw__zsbk"}) {
    std::error_code ec;
    const auto file = FixtureFolder() / (std::string(name) + ".ofd");
    if (!std::filesystem::exists(file, ec)) continue;
    std::unique_ptr<SignedDocument> d = Load(file);
    if (!d) continue;
    const std::string n = name;
    benchmark::RegisterBenchmark(("BM_VerifyDocument/" + n).c_str(), Verify, d.get())->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("BM_OpenDocument/" + n).c_str(), OpenOnly, d.get())->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("BM_Sm3Floor/" + n).c_str(), DigestFloor, d.get())->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("BM_Sm3AndSignaturesFloor/" + n).c_str(), CryptoFloor, d.get())
        ->Unit(benchmark::kMicrosecond);
    docs.push_back(std::move(d));
  }
  return true;
}();

}  // namespace
