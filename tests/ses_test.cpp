// The DER reader, seal and signature parsing of both layouts, and the seal
// provider's pictures and digests, on hand-made bytes, the generated samples
// and the real files of the fixture folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/fixtures.h"
#include "host/base/stream_reader.h"
#include "host/oes/der_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/oes/ses_seal.h"
#include "host/ofd/ofd_package.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string Bytes(std::initializer_list<int> b) {
  std::string s;
  for (int v : b) s += static_cast<char>(v);
  return s;
}

std::string ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string Hex(const std::string& s) {
  static const char kDigits[] = "0123456789abcdef";
  std::string out;
  for (unsigned char c : s) out += {kDigits[c >> 4], kDigits[c & 15]};
  return out;
}

// Reads every value at every level; false when anything is malformed.
bool WalkAll(DerReader r) {
  DerElement e;
  while (r.Next(e)) {
    if (e.IsConstructed() && !WalkAll(r.Enter(e))) return false;
  }
  return r.AtEnd();
}

std::string Nested(int levels, bool indefinite) {
  std::string s;
  for (int i = 0; i < levels; ++i) s = indefinite ? "\x30\x80" + s + std::string(2, '\0') : "";
  if (indefinite) return s;
  s = Bytes({0x05, 0x00});
  for (int i = 0; i < levels; ++i) s = Bytes({0x30, static_cast<int>(s.size())}) + s;
  return s;
}

TEST(DerReader_Input, AcceptsOrRefusesEachEncoding) {
  const struct { const char* name; std::string bytes; bool ok; } cases[] = {
      {"empty sequence", Bytes({0x30, 0x00}), true},
      {"one-byte long form", Bytes({0x04, 0x81, 0x02, 0xAA, 0xBB}), true},
      {"five-byte length", Bytes({0x04, 0x85, 0x00, 0x00, 0x00, 0x00, 0x01, 0xAA}), false},
      {"reserved length octet", Bytes({0x04, 0xFF, 0xAA}), false},
      {"truncated header", Bytes({0x30}), false},
      {"truncated long form", Bytes({0x04, 0x82, 0x01}), false},
      {"length past end", Bytes({0x30, 0x05, 0x02, 0x01, 0x00}), false},
      {"inner length past outer", Bytes({0x30, 0x03, 0x04, 0x05, 0xAA}), false},
      {"multi-octet identifier", Bytes({0x1F, 0x81, 0x01, 0x00}), false},
      {"indefinite", Bytes({0x30, 0x80, 0x02, 0x01, 0x05, 0x00, 0x00}), true},
      {"indefinite primitive", Bytes({0x04, 0x80, 0xAA, 0x00, 0x00}), false},
      {"indefinite without end", Bytes({0x30, 0x80, 0x02, 0x01, 0x05}), false},
      {"end-of-contents with a length", Bytes({0x30, 0x80, 0x00, 0x01, 0xAA, 0x00, 0x00}), false},
      {"stray end-of-contents", Bytes({0x00, 0x00}), false},
      {"32 levels", Nested(32, false), true},
      {"nesting bomb", Nested(40, false), false},
      {"32 indefinite levels", Nested(31, true), true},
      {"indefinite nesting bomb", Nested(40, true), false},
      {"deep indefinite prefix", [] {
         std::string s;
         for (int i = 0; i < 100000; ++i) s += "\x30\x80";
         return s;
       }(), false},
  };
  for (const auto& c : cases) EXPECT_EQ(WalkAll(DerReader(c.bytes)), c.ok) << c.name;
}

TEST(DerReader_Input, IndefiniteLengthSpansToItsEnd) {
  const std::string bytes = Bytes({0x30, 0x80, 0x02, 0x01, 0x05, 0x00, 0x00, 0x05, 0x00});
  DerReader r(bytes);
  DerElement e;
  ASSERT_TRUE(r.Next(e));
  EXPECT_EQ(std::make_tuple(e.indefinite, e.content.size(), e.encodedSize, r.CountRemaining(), r.PeekTag()),
            std::make_tuple(true, size_t{3}, size_t{7}, 1, kDerNull));
  EXPECT_FALSE(r.Next(kDerInteger, e));
  EXPECT_TRUE(r.Failed() && !r.Next(e));  // failures stick
}

TEST(DerReader_Values, DecodesIntegersStringsAndIdentifiers) {
  enum Kind { kInteger, kObjectId, kText, kOctets };
  const struct { Kind kind; std::string bytes; const char* want; } cases[] = {  // want null: refused
      {kInteger, Bytes({0x02, 0x01, 0xFF}), "-1"},
      {kInteger, Bytes({0x02, 0x02, 0x00, 0x80}), "128"},
      {kInteger, Bytes({0x02, 0x09, 1, 0, 0, 0, 0, 0, 0, 0, 0}), nullptr},  // more than 64 bits
      {kObjectId, Bytes({0x06, 0x08, 0x2A, 0x81, 0x1C, 0xCF, 0x55, 0x01, 0x83, 0x75}), "1.2.156.10197.1.501"},
      {kObjectId, Bytes({0x06, 0x02, 0x2A, 0x81}), nullptr},  // last arc never ends
      {kText, Bytes({0x1E, 0x04, 0x5B, 0x57, 0x00, 0x41}), "字A"},
      // A BER constructed OCTET STRING is joined from its parts, which must be OCTET STRINGs.
      {kOctets, Bytes({0x24, 0x80, 0x04, 0x01, 'a', 0x04, 0x02, 'b', 'c', 0x00, 0x00}), "abc"},
      {kOctets, Bytes({0x24, 0x03, 0x02, 0x01, 0x00}), nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(c.bytes));
    DerReader r(c.bytes);
    DerElement e;
    ASSERT_TRUE(r.Next(e));
    std::string text;
    int64_t v = 0;
    const bool ok = c.kind == kInteger    ? DerReadInteger(e, v)
                    : c.kind == kObjectId ? DerReadObjectId(e, text)
                    : c.kind == kText     ? DerReadString(e, text)
                                          : DerReadOctets(e, text);
    EXPECT_EQ(std::make_pair(ok, ok ? (c.kind == kInteger ? std::to_string(v) : text) : std::string()),
              std::make_pair(c.want != nullptr, std::string(c.want ? c.want : "")));
  }
}

// The seal and signed-value files of one signature of a package; empty when
// absent.
struct PackageFiles {
  std::string seal, signedValue;
};

PackageFiles FromPackage(const fs::path& path, const std::string& sign = "Sign_0") {
  PackageFiles f;
  OfdPackage package;
  if (package.LoadFromStream(StreamReader::CreateMemoryStreamReader(ReadAll(path)), 1) != 0) return f;
  const std::string folder = "/Doc_0/Signs/" + sign + "/";
  package.LoadRawData(nullptr, folder + "Seal.esl", f.seal);
  // Real files also name the signed value SignValue.dat.
  if (!package.LoadRawData(nullptr, folder + "SignedValue.dat", f.signedValue))
    package.LoadRawData(nullptr, folder + "SignValue.dat", f.signedValue);
  return f;
}

// Every seal here shows a 40 x 40 mm picture.
void ExpectSeal(const SesSeal& seal, int layout, const std::string& type) {
  EXPECT_EQ(std::make_tuple(seal.layout, seal.picture.type, seal.picture.width, seal.picture.height),
            std::make_tuple(layout, type, 40, 40));
  EXPECT_FALSE(seal.picture.data.empty());
}

// The generated samples, parsed and through the seal provider, whose
// requests each answer from their own kind of file.
TEST(SesSeal_Samples, BothLayoutsParsedAndAsThePluginGivesThem) {
  const fs::path dir = fs::path(TARVIK_SOURCE_DIR) / "testdata";
  const std::string png = ReadAll(dir / "sample_seal.png");
  ASSERT_FALSE(png.empty());
  const struct { const char* file; int layout; std::string type; } cases[] = {
      {"signed_v4_png.ofd", 4, "PNG"}, {"signed_v1_png.ofd", 1, "PNG"}, {"signed_v4_ofdseal.ofd", 4, "ofd"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    const PackageFiles f = FromPackage(dir / c.file);
    SesSeal seal;
    SesSignature sig;
    ASSERT_TRUE(ParseSesSeal(f.seal, seal) && ParseSesSignature(f.signedValue, sig));
    ExpectSeal(seal, c.layout, c.type);
    ExpectSeal(sig.seal, c.layout, c.type);
    const std::string sm2 = "1.2.156.10197.1.501";
    EXPECT_EQ(std::make_tuple(seal.headerVersion, sig.layout, sig.version, seal.signatureAlgorithm,
                              sig.signatureAlgorithm),
              std::make_tuple(int64_t{c.layout}, c.layout, int64_t{c.layout}, sm2, sm2));
    EXPECT_EQ(std::make_tuple(seal.name, sig.propertyInfo, sig.seal.picture.data),
              std::make_tuple("塔维克示例印章有限公司样章", "/Doc_0/Signs/Sign_0/Signature.xml", seal.picture.data));
    EXPECT_EQ(seal.picture.data.substr(0, 2), c.type == "ofd" ? "PK" : png.substr(0, 2));
    EXPECT_TRUE(c.type == "ofd" || seal.picture.data == png);
    SesPlugin plugin;
    std::string picture = "old", type = "old", fromValue, combined, combined2;
    int w = -1, h = -1;
    EXPECT_TRUE(plugin.GetPrimarySealImage(nullptr, "", 0, picture, type, w, h) &&
                plugin.GetSecondarySealImage(nullptr, f.seal, 0, picture, type, w, h) &&
                plugin.GetPrimarySealImage(nullptr, f.signedValue, 0, picture, type, w, h) &&
                plugin.GetCombinedSealImage("", "junk", picture, type, w, h));
    EXPECT_EQ(std::make_pair(picture, w), std::make_pair(std::string("old"), -1));  // failures leave the outputs alone
    ASSERT_EQ(plugin.GetPrimarySealImage(nullptr, f.seal, 0, picture, type, w, h), 0);
    EXPECT_EQ(std::make_tuple(type, picture, w, h), std::make_tuple(c.type, seal.picture.data, 40, 40));
    ASSERT_EQ(plugin.GetSecondarySealImage(nullptr, f.signedValue, 0, fromValue, type, w, h), 0);
    EXPECT_EQ(plugin.GetCombinedSealImage(f.seal, "junk", combined, type, w, h), 0);
    EXPECT_EQ(plugin.GetCombinedSealImage("", f.signedValue, combined2, type, w, h), 0);
    EXPECT_EQ(std::vector({fromValue, combined, combined2}), std::vector(3, picture));
  }
}

// Real files: a signature, the BER copy of a seal holding the same picture as
// the DER one, a mangled seal and a PKCS#7 signed value.
TEST(SesSeal_Fixtures, ExactValuesTheBerCopyAndCleanFailures) {
  const fs::path dir(TARVIK_FIXTURE_DIR);
  TARVIK_NEED_FIXTURE(dir);
  SesSignature sig;
  ASSERT_TRUE(ParseSesSignature(ReadAll(dir / "ofdrw__SignedValueV4.dat"), sig));
  EXPECT_EQ(std::make_tuple(sig.layout, sig.version, sig.timeInfo), std::make_tuple(4, int64_t{4}, "20201012111403Z"));
  ExpectSeal(sig.seal, 4, "PNG");
  SesSeal der, ber, v5;
  EXPECT_FALSE(ParseSesSeal(ReadAll(dir / "ofdrw__SignedValueV4.dat"), der));  // each file is one kind only
  ASSERT_TRUE(ParseSesSeal(ReadAll(dir / "ofdrw__UserV1.esl"), der));
  ASSERT_TRUE(ParseSesSeal(ReadAll(dir / "ofdrw__UserV1_ber_indefinite.esl"), ber));
  EXPECT_EQ(der.picture.data, ber.picture.data);
  EXPECT_EQ(std::make_tuple(ber.layout, ber.createDate), std::make_tuple(1, "200421151327Z"));
  ASSERT_TRUE(ParseSesSeal(ReadAll(dir / "ofdrw__UserV5.esl"), v5));
  EXPECT_EQ(std::make_pair(v5.layout, v5.headerVersion), std::make_pair(4, int64_t{5}));
  const std::string mangled = ReadAll(dir / "ofdrw__Seal_corrupt_utf8.esl");
  SesSignature untouched;
  const PackageFiles pkcs7 = FromPackage(dir / "ofdrw__keyword.ofd", "Sign_3");
  ASSERT_FALSE(mangled.empty() || pkcs7.signedValue.empty());
  EXPECT_EQ(std::make_tuple(ParseSesSeal(mangled, der).status, ParseSesSignature(mangled, sig).status,
                            ParseSesSignature(pkcs7.signedValue, untouched).status),
            std::make_tuple(SesStatus::kMalformed, SesStatus::kMalformed, SesStatus::kNotSes));
  EXPECT_EQ(untouched.layout, 0) << "left unchanged";
}

TEST(SesSignature_Input, PrefixesAndABareSignatureAreRefused) {
  const PackageFiles f = FromPackage(fs::path(TARVIK_SOURCE_DIR) / "testdata" / "signed_v1_png.ofd");
  ASSERT_FALSE(f.signedValue.empty());
  SesSignature sig;
  // Every proper prefix is refused: the outer length no longer fits.
  for (size_t n = 0; n < f.signedValue.size(); n += 97)
    EXPECT_FALSE(ParseSesSignature(std::string_view(f.signedValue).substr(0, n), sig)) << n;
  EXPECT_EQ(ParseSesSignature("", sig).status, SesStatus::kEmpty);
  // A raw SM2 signature SEQUENCE{r, s} has two fields but is no signature.
  const std::string rs = Bytes({0x30, 0x06, 0x02, 0x01, 0x01, 0x02, 0x01, 0x02});
  SesSeal seal;
  EXPECT_EQ(std::make_pair(ParseSesSignature(rs, sig).status, ParseSesSeal(rs, seal).status),
            std::make_pair(SesStatus::kNotSes, SesStatus::kNotSes));
}

// Digests of "abc" one-shot and in pieces; unknown names refused with the
// outputs left alone, as are null handles.
TEST(SesDigest_Vectors, KnownDigestsUnderEveryNameOthersRefused) {
  SesPlugin plugin;
  const int unknown = kSesPluginUnknownAlgorithm;
  const struct { std::vector<const char*> names; const char* hex; } cases[] = {
      {{"SM3", "sm3", "1.2.156.10197.1.401", "1.2.156.10197.1.401.2"},
       "66c7f0f462eeedd9d1f2d46bdc10e4e24167c4875cf2f7a2297da02b8f4ba8e0"},
      {{"SHA256", "sha-256"}, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {{"SHA1", "Sha-1"}, "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {{"MD5"}, "900150983cd24fb0d6963f7d28e17f72"},
      {{"", "SM2", "SHA-512x", "1.2.156.10197.1.4011", "sm3 "}, nullptr},
  };
  for (const auto& c : cases) {
    for (const char* name : c.names) {
      SCOPED_TRACE(name);
      std::string digest = "kept", pieces = "kept";
      uintptr_t handle = 7;
      const int oneShot = plugin.Digest(nullptr, "abc", name, digest), start = plugin.DigestStart(nullptr, &handle, name);
      EXPECT_EQ(std::make_pair(oneShot, start), c.hex ? std::make_pair(0, 0) : std::make_pair(unknown, unknown));
      if (start == 0) {
        for (const char* piece : {"a", "", "bc"}) EXPECT_EQ(plugin.DigestUpdate(nullptr, handle, piece), 0);
        EXPECT_EQ(plugin.DigestFinish(nullptr, handle, pieces), 0);
      }
      const std::string want = c.hex ? c.hex : Hex("kept");
      EXPECT_EQ(std::make_tuple(Hex(digest), Hex(pieces), handle != 7), std::make_tuple(want, want, c.hex != nullptr));
    }
  }
  std::string digest = "kept";
  EXPECT_TRUE(plugin.DigestStart(nullptr, nullptr, "SM3") && plugin.DigestUpdate(nullptr, 0, "abc") &&
              plugin.DigestFinish(nullptr, 0, digest));
  EXPECT_EQ(std::make_tuple(digest, plugin.QueryCapability(17), plugin.QueryCapability(16)),
            std::make_tuple("kept", true, false));
}

}  // namespace
}  // namespace host
