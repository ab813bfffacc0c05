// The seal provider plug-in as the library asks it: which files are read, the
// order of the three picture requests and what comes back; digests step-wise
// in pieces, with the one-shot fallback.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "decode/seal_data_type.h"
#include "host/ofd/ofd_multimedia.h"
#include "support/scripted_plugin.h"
#include "support/seal_document.h"
#include "support/zip_builder.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::kSealFile;
using testing_support::ScriptedPlugin;
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
  EXPECT_EQ(std::make_pair(o.dib->GetWidth(), o.isOfd), std::make_pair(6, false));  // its own size, not the request's
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
  const auto& calls = plugin.calls;  // the outputs are shared
  EXPECT_EQ(std::make_tuple(calls[0].pictureIn, calls[1].pictureIn, calls[1].widthIn),
            std::make_tuple("", "junk-from-primary", 77));
  EXPECT_EQ(std::vector({calls[1].data, calls[2].data, calls[2].data2}),
            std::vector<std::string>({kSignedValue, "SEAL-DATA", kSignedValue}));
}

TEST(SealImageExtract_Files, MissingOrEmptyFiles) {
  const struct { const char *name, *primary, *secondary; bool emptyFiles, asked;
                 const char *primaryData, *secondaryData; } cases[] = {
      {"secondary only", "", kSignedFile, false, true, "", "SIGNED"},
      {"neither opens", "/nothing", "/nothing2", false, false, "", ""},
      {"both empty locations", "", "", false, false, "", ""},
      {"both files empty", kSealFile, kSignedFile, true, true, "", ""},
  };
  for (const auto& c : cases) {
    SealDocument doc(c.emptyFiles ? "" : "SEAL-DATA", c.emptyFiles ? "" : kSignedValue);
    ScriptedPlugin plugin;
    plugin.secondary = {0, SolidPng(2, 2, 0xFFCC0000), "PNG"};
    Outcome o = Parse(*doc.Media(c.primary, c.secondary), plugin);
    if (!c.asked) {  // the flag unchanged
      EXPECT_TRUE(plugin.calls.empty() && !o.dib && o.isOfd) << c.name;
      continue;
    }
    ASSERT_EQ(plugin.Ops(), (std::vector<std::string>{"primary", "secondary"})) << c.name;
    EXPECT_EQ(std::make_tuple(plugin.calls[0].data, plugin.calls[1].data.substr(0, 6), o.dib != nullptr),
              std::make_tuple(c.primaryData, c.secondaryData, true)) << c.name;
  }
}

TEST(SealImageExtract_Results, FailedPluginBadPictureAndOfd) {
  SealDocument doc("SEAL-DATA", kSignedValue);
  ScriptedPlugin failing, ofd;  // every request fails; an OFD package as the picture
  Outcome o = Parse(*doc.Media(), failing);
  EXPECT_EQ(std::make_tuple(o.dib == nullptr, o.isOfd, failing.calls.size()), std::make_tuple(true, true, size_t{3}));
  ofd.primary = {0, testing_support::MinimalOfdPackage(), "ofd"};
  bool isOfd = false;
  std::unique_ptr<Dib> dib(ParseSealImage(doc.Media().get(), 0, &ofd, nullptr, 50, 50, 0, isOfd));
  EXPECT_TRUE(isOfd);  // the flag says so
  host::OfdMultiMedia orphan;  // no document to read from
  orphan.PrimaryLoc = kSealFile;
  ScriptedPlugin plugin;
  EXPECT_FALSE(ParseSealImage(doc.Media().get(), 0, nullptr, nullptr, 1, 1, 0, isOfd) ||
               ParseSealImage(&orphan, 0, &plugin, nullptr, 1, 1, 0, isOfd));
  EXPECT_TRUE(plugin.calls.empty());
}

TEST(CalcDigest_Pieces, LengthsSplitAt16384) {
  const struct { unsigned length; std::vector<size_t> pieces; } cases[] = {
      {0, {}}, {16384, {16384}}, {16385, {16384, 1}}, {50000, {16384, 16384, 16384, 848}},
  };
  for (const auto& c : cases) {
    std::string data(c.length, '\0');
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7);
    ScriptedPlugin plugin;
    BinaryBuf digest;
    int token = 0;
    EXPECT_EQ(CalcDigest(reinterpret_cast<unsigned char*>(data.data()), c.length, "SM3", &plugin, &token, digest), 0);
    // The pieces put back together are the data, zero bytes included.
    std::string joined;
    std::vector<size_t> sizes;
    for (const auto& call : plugin.calls) {
      if (call.op == "update") {
        sizes.push_back(call.data.size());
        joined += call.data;
      }
      EXPECT_TRUE(call.op == "capability" || call.userData == &token);
    }
    EXPECT_EQ(std::make_pair(sizes, joined), std::make_pair(c.pieces, data)) << c.length;
    const auto& calls = plugin.calls;  // the finish names the handle start gave
    EXPECT_EQ(std::vector({calls.front().op, calls.front().data, calls[1].op, calls[1].data2, calls.back().op,
                           calls.back().data2}),
              std::vector<std::string>({"capability", "17", "start", "SM3", "finish", "42"}));
  }
}

TEST(CalcDigest_Fallback, OneShotWhenStepwiseIsMissingOrFails) {
  using V = std::vector<std::string>;
  const struct { const char* name; bool stepwise; int startResult, failUpdateAt, finishResult, digestResult;
                 V ops; int result; } cases[] = {
      {"no capability", false, 0, -1, 0, 0, V{"capability", "digest"}, 0},
      {"start fails, one-shot fails", true, 3, -1, 0, 9, V{"capability", "start", "digest"}, 9},
      {"second feed fails, finish works", true, 0, 1, 0, 0, V{"capability", "start", "update", "update", "finish"}, 0},
      {"finish fails", true, 0, -1, 5, 0,
       V{"capability", "start", "update", "update", "update", "update", "update", "finish", "digest"}, 0},
  };
  for (const auto& c : cases) {
    std::string data(5 * 16384 - 10, 'x');
    ScriptedPlugin plugin;
    std::tie(plugin.stepwise, plugin.startResult, plugin.failUpdateAt, plugin.finishResult, plugin.digestResult) =
        std::tie(c.stepwise, c.startResult, c.failUpdateAt, c.finishResult, c.digestResult);
    BinaryBuf digest;
    digest.AppendBuf("old", 3);
    const int result = CalcDigest(reinterpret_cast<unsigned char*>(data.data()), static_cast<unsigned>(data.size()),
                                  "SHA256", &plugin, nullptr, digest);
    EXPECT_EQ(result, c.result) << c.name;
    EXPECT_EQ(plugin.Ops(), c.ops) << c.name;
    const std::string got(reinterpret_cast<const char*>(digest.GetBuffer()),
                          static_cast<size_t>(digest.GetSize()));
    EXPECT_EQ(got, c.result == 0 ? "oldD" : "old") << c.name;
    EXPECT_TRUE(plugin.Ops().back() != "digest" || plugin.calls.back().data == data) << c.name;
  }
}

TEST(OESDigestCalculator_Binding, PassesItsPluginAndUserData) {
  ScriptedPlugin plugin;
  plugin.stepwise = false;
  int token = 0;
  OESDigestCalculator calculator(&plugin, &token);
  unsigned char data[3] = {1, 0, 2};
  BinaryBuf digest;
  EXPECT_EQ(static_cast<IDigestCalculator&>(calculator).CalcDigest(data, 3, "MD5", digest), 0);
  EXPECT_EQ(std::make_tuple(digest.GetSize(), plugin.calls.back().userData, plugin.calls.back().data),
            std::make_tuple(1, static_cast<void*>(&token), std::string("\1\0\2", 3)));
  EXPECT_NE(CalcDigest(data, 3, "MD5", nullptr, nullptr, digest), 0);  // no plug-in
  EXPECT_EQ(digest.GetSize(), 1);
}

}  // namespace
}  // namespace tarvik
