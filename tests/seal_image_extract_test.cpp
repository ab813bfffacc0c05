// Seal pictures through the plug-in: which files are read, the order of the
// three requests, and what comes back.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

#include "decode/seal_data_type.h"
#include "host/ofd/ofd_multimedia.h"
#include "support/scripted_plugin.h"
#include "support/seal_document.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::ScriptedPlugin;

using testing_support::kSealFile;
using testing_support::kSignedFile;
using testing_support::SealDocument;
using testing_support::SolidPng;

const std::string kSignedValue("SIGNED\0VALUE", 12);

struct Outcome {
  std::unique_ptr<Dib> dib;
  bool isOfd = true;  // a raster result must clear it
};

Outcome Parse(const host::OfdMultiMedia& media, ScriptedPlugin& plugin, int renderMode = 0,
              void* userData = nullptr) {
  Outcome o;
  o.dib.reset(ParseSealImage(&media, renderMode, &plugin, userData, 50, 50, 0, o.isOfd));
  return o;
}

TEST(SealImageExtract_Order, PrimarySuccessAsksNothingElse) {
  SealDocument doc("SEAL-DATA", kSignedValue);
  ScriptedPlugin plugin;
  plugin.primary = {0, SolidPng(6, 4, 0xFFCC0000), "PNG", 40, 30};
  int token = 0;
  Outcome o = Parse(*doc.Media(), plugin, 3, &token);
  ASSERT_NE(o.dib, nullptr);
  EXPECT_EQ(o.dib->GetWidth(), 6);  // the picture's own size, not the request's
  EXPECT_FALSE(o.isOfd);
  ASSERT_EQ(plugin.Ops(), std::vector<std::string>{"primary"});
  EXPECT_EQ(std::make_tuple(plugin.calls[0].data, plugin.calls[0].renderMode, plugin.calls[0].userData),
            std::make_tuple("SEAL-DATA", 3, static_cast<void*>(&token)));
  EXPECT_EQ(plugin.ImageCheckCallback.load(), &CheckRasterImage);
}

TEST(SealImageExtract_Order, FailuresFallThroughWithSharedOutputs) {
  SealDocument doc("SEAL-DATA", kSignedValue);
  ScriptedPlugin plugin;
  plugin.primary = {1, "junk-from-primary", "x", 77, 0, true};  // fails but writes
  plugin.secondary = {2};
  plugin.combined = {0, SolidPng(3, 3, 0xFFCC0000), "png", 1, 1};
  Outcome o = Parse(*doc.Media(), plugin);
  ASSERT_NE(o.dib, nullptr);
  ASSERT_EQ(plugin.Ops(), (std::vector<std::string>{"primary", "secondary", "combined"}));
  EXPECT_EQ(plugin.calls[0].pictureIn, "");
  EXPECT_EQ(plugin.calls[1].pictureIn, "junk-from-primary");  // the outputs are shared
  EXPECT_EQ(plugin.calls[1].widthIn, 77);
  EXPECT_EQ(plugin.calls[1].data, kSignedValue);
  EXPECT_EQ(plugin.calls[2].data, "SEAL-DATA");
  EXPECT_EQ(plugin.calls[2].data2, kSignedValue);
}

TEST(SealImageExtract_Files, MissingOrEmptyFiles) {
  const struct {
    const char *name, *primary, *secondary; bool emptyFiles, asked; const char *primaryData, *secondaryData;
  } cases[] = {
      {"secondary only", "", kSignedFile, false, true, "", "SIGNED"},
      {"primary does not open", "/Doc_0/nothing.esl", kSignedFile, false, true, "", "SIGNED"},
      {"neither opens", "/nothing", "/nothing2", false, false, "", ""},
      {"both empty locations", "", "", false, false, "", ""},
      {"both files empty", kSealFile, kSignedFile, true, true, "", ""},
  };
  for (const auto& c : cases) {
    SealDocument doc(c.emptyFiles ? "" : "SEAL-DATA", c.emptyFiles ? "" : kSignedValue);
    ScriptedPlugin plugin;
    plugin.secondary = {0, SolidPng(2, 2, 0xFFCC0000), "PNG"};
    Outcome o = Parse(*doc.Media(c.primary, c.secondary), plugin);
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
  SealDocument doc("SEAL-DATA", kSignedValue);
  {
    ScriptedPlugin plugin;  // every request fails
    Outcome o = Parse(*doc.Media(), plugin);
    EXPECT_EQ(o.dib, nullptr);
    EXPECT_TRUE(o.isOfd);
    EXPECT_EQ(plugin.calls.size(), 3u);
  }
  {
    ScriptedPlugin plugin;  // a picture of unknown kind
    plugin.primary = {0, "not a picture", "PNG"};
    ::testing::internal::CaptureStdout();
    Outcome o = Parse(*doc.Media(), plugin);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Found unknown seal image type\n");
    EXPECT_EQ(o.dib, nullptr);
  }
  {
    ScriptedPlugin plugin;  // an OFD package as the picture: the flag says so
    plugin.primary = {0, testing_support::MinimalOfdPackage(), "ofd"};
    bool isOfd = false;
    std::unique_ptr<Dib> dib(ParseSealImage(doc.Media().get(), 0, &plugin, nullptr, 50, 50, 0, isOfd));
    EXPECT_TRUE(isOfd);
  }
  bool isOfd = true;
  EXPECT_EQ(ParseSealImage(doc.Media().get(), 0, nullptr, nullptr, 1, 1, 0, isOfd), nullptr);
  host::OfdMultiMedia orphan;
  orphan.PrimaryLoc = kSealFile;
  ScriptedPlugin plugin;
  EXPECT_EQ(ParseSealImage(&orphan, 0, &plugin, nullptr, 1, 1, 0, isOfd), nullptr);
  EXPECT_TRUE(plugin.calls.empty());
}

}  // namespace
}  // namespace tarvik
