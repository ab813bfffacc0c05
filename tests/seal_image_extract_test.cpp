// Seal pictures through the plug-in: which files are read, the order of the
// three requests, and what comes back.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "decode/seal_data_type.h"
#include "host/base/codec.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_package.h"
#include "support/scripted_plugin.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::ScriptedPlugin;

std::string Png(int w, int h) {
  auto dib = host::Dib::Create(w, h, host::kDibArgb32);
  dib->Fill(0xFFCC0000);
  std::string out;
  host::EncodePng(*dib, out);
  return out;
}

// A loaded one-page document whose package holds a seal file and a
// signed-value file (an empty one when asked).
class SealDocument {
 public:
  explicit SealDocument(bool emptyFiles = false) {
    using testing_support::BuildOfdPackage;
    const std::string bytes = BuildOfdPackage({
        {"Doc_0/Document.xml", testing_support::OfdDocumentXml({{1, "Pages/Page_0/Content.xml"}})},
        {"Doc_0/Pages/Page_0/Content.xml", testing_support::OfdPageXml("")},
        {"Doc_0/Signs/Sign_0/Seal.esl", emptyFiles ? "" : "SEAL-DATA"},
        {"Doc_0/Signs/Sign_0/SignedValue.dat", emptyFiles ? "" : std::string("SIGNED\0VALUE", 12)},
    });
    package_ = std::make_unique<host::OfdPackage>();
    EXPECT_EQ(package_->LoadFromStream(host::StreamReader::CreateMemoryStreamReader(bytes), 1), 0);
    document_ = std::make_unique<host::OfdDocument>();
    EXPECT_EQ(document_->LoadDocument(package_.get(), package_->GetDocument(0), -1), 0);
  }
  host::OfdMultiMedia Media(const char* primary, const char* secondary) {
    host::OfdMultiMedia media;
    media.type = "Seal";
    media.PrimaryLoc = primary;
    media.SecondaryLoc = secondary;
    media.ResourceContainer = document_.get();
    return media;
  }

 private:
  std::unique_ptr<host::OfdPackage> package_;
  std::unique_ptr<host::OfdDocument> document_;
};

constexpr const char* kSeal = "/Doc_0/Signs/Sign_0/Seal.esl";
constexpr const char* kSigned = "/Doc_0/Signs/Sign_0/SignedValue.dat";

struct Outcome {
  std::unique_ptr<Dib> dib;
  bool isOfd;
};

Outcome Parse(SealDocument& doc, const host::OfdMultiMedia& media, ScriptedPlugin& plugin,
            int renderMode = 0, void* userData = nullptr) {
  Outcome o{nullptr, true};  // starts true: a raster result must clear it
  o.dib.reset(ParseSealImage(&media, renderMode, &plugin, userData, 50, 50, 0, o.isOfd));
  (void)doc;
  return o;
}

TEST(SealImageExtract_Order, PrimarySuccessAsksNothingElse) {
  SealDocument doc;
  ScriptedPlugin plugin;
  plugin.primary = {0, Png(6, 4), "PNG", 40, 30};
  int token = 0;
  Outcome o = Parse(doc, doc.Media(kSeal, kSigned), plugin, 3, &token);
  ASSERT_NE(o.dib, nullptr);
  EXPECT_EQ(o.dib->GetWidth(), 6);  // the picture's own size, not the request's
  EXPECT_FALSE(o.isOfd);
  ASSERT_EQ(plugin.Ops(), std::vector<std::string>{"primary"});
  EXPECT_EQ(plugin.calls[0].data, "SEAL-DATA");
  EXPECT_EQ(plugin.calls[0].renderMode, 3);
  EXPECT_EQ(plugin.calls[0].userData, &token);
  EXPECT_EQ(plugin.ImageCheckCallback.load(), &CheckRasterImage);
}

TEST(SealImageExtract_Order, FailuresFallThroughWithSharedOutputs) {
  SealDocument doc;
  ScriptedPlugin plugin;
  plugin.primary = {1, "junk-from-primary", "x", 77, 0, true};  // fails but writes
  plugin.secondary = {2};
  plugin.combined = {0, Png(3, 3), "png", 1, 1};
  Outcome o = Parse(doc, doc.Media(kSeal, kSigned), plugin);
  ASSERT_NE(o.dib, nullptr);
  ASSERT_EQ(plugin.Ops(), (std::vector<std::string>{"primary", "secondary", "combined"}));
  EXPECT_EQ(plugin.calls[0].pictureIn, "");
  EXPECT_EQ(plugin.calls[1].pictureIn, "junk-from-primary");  // the outputs are shared
  EXPECT_EQ(plugin.calls[1].widthIn, 77);
  EXPECT_EQ(plugin.calls[1].data, std::string("SIGNED\0VALUE", 12));
  EXPECT_EQ(plugin.calls[2].data, "SEAL-DATA");
  EXPECT_EQ(plugin.calls[2].data2, std::string("SIGNED\0VALUE", 12));
}

TEST(SealImageExtract_Files, MissingOrEmptyFiles) {
  const struct {
    const char* name;
    const char* primary;
    const char* secondary;
    bool emptyFiles;
    bool asked;
    const char* primaryData;
    const char* secondaryData;
  } cases[] = {
      {"secondary only", "", kSigned, false, true, "", "SIGNED"},
      {"primary does not open", "/Doc_0/nothing.esl", kSigned, false, true, "", "SIGNED"},
      {"neither opens", "/nothing", "/nothing2", false, false, "", ""},
      {"both empty locations", "", "", false, false, "", ""},
      {"both files empty", kSeal, kSigned, true, true, "", ""},
  };
  for (const auto& c : cases) {
    SealDocument doc(c.emptyFiles);
    ScriptedPlugin plugin;
    plugin.secondary = {0, Png(2, 2), "PNG"};
    Outcome o = Parse(doc, doc.Media(c.primary, c.secondary), plugin);
    if (!c.asked) {
      EXPECT_TRUE(plugin.calls.empty()) << c.name;
      EXPECT_EQ(o.dib, nullptr) << c.name;
      EXPECT_TRUE(o.isOfd) << c.name;  // unchanged
      continue;
    }
    ASSERT_EQ(plugin.Ops(), (std::vector<std::string>{"primary", "secondary"})) << c.name;
    EXPECT_EQ(plugin.calls[0].data, c.primaryData) << c.name;
    EXPECT_EQ(plugin.calls[1].data.substr(0, 6), c.secondaryData) << c.name;
    EXPECT_NE(o.dib, nullptr) << c.name;
  }
}

TEST(SealImageExtract_Results, FailedPluginBadPictureAndOfd) {
  SealDocument doc;
  {
    ScriptedPlugin plugin;  // every request fails
    Outcome o = Parse(doc, doc.Media(kSeal, kSigned), plugin);
    EXPECT_EQ(o.dib, nullptr);
    EXPECT_TRUE(o.isOfd);
    EXPECT_EQ(plugin.calls.size(), 3u);
  }
  {
    ScriptedPlugin plugin;  // a picture of unknown kind
    plugin.primary = {0, "not a picture", "PNG"};
    ::testing::internal::CaptureStdout();
    Outcome o = Parse(doc, doc.Media(kSeal, kSigned), plugin);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Found unknown seal image type\n");
    EXPECT_EQ(o.dib, nullptr);
  }
  {
    ScriptedPlugin plugin;  // an OFD package as the picture: the flag says so
    plugin.primary = {0, testing_support::MinimalOfdPackage(), "ofd"};
    bool isOfd = false;
    const host::OfdMultiMedia media = doc.Media(kSeal, kSigned);
    std::unique_ptr<Dib> dib(ParseSealImage(&media, 0, &plugin, nullptr, 50, 50, 0, isOfd));
    EXPECT_TRUE(isOfd);
  }
  bool isOfd = true;
  const host::OfdMultiMedia media = doc.Media(kSeal, kSigned);
  EXPECT_EQ(ParseSealImage(&media, 0, nullptr, nullptr, 1, 1, 0, isOfd), nullptr);
  host::OfdMultiMedia orphan;
  orphan.PrimaryLoc = kSeal;
  ScriptedPlugin plugin;
  EXPECT_EQ(ParseSealImage(&orphan, 0, &plugin, nullptr, 1, 1, 0, isOfd), nullptr);
  EXPECT_TRUE(plugin.calls.empty());
}

}  // namespace
}  // namespace tarvik
