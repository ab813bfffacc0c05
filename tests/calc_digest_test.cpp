// Digests through the plug-in: step-wise in pieces, with the one-shot
// fallback.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/scripted_plugin.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

using testing_support::ScriptedPlugin;

std::vector<size_t> FedSizes(const ScriptedPlugin& plugin) {
  std::vector<size_t> sizes;
  for (const auto& c : plugin.calls)
    if (c.op == "update") sizes.push_back(c.data.size());
  return sizes;
}

TEST(CalcDigest_Pieces, LengthsSplitAt16384) {
  const struct { unsigned length; std::vector<size_t> pieces; } cases[] = {
      {0, {}}, {100, {100}}, {16384, {16384}}, {16385, {16384, 1}}, {32768, {16384, 16384}},
      {50000, {16384, 16384, 16384, 848}},
  };
  for (const auto& c : cases) {
    std::string data(c.length, '\0');
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7);
    ScriptedPlugin plugin;
    BinaryBuf digest;
    int token = 0;
    EXPECT_EQ(CalcDigest(reinterpret_cast<unsigned char*>(data.data()), c.length, "SM3", &plugin,
                         &token, digest),
              0);
    EXPECT_EQ(FedSizes(plugin), c.pieces) << c.length;
    // The pieces put back together are the data, zero bytes included.
    std::string joined;
    for (const auto& call : plugin.calls) {
      if (call.op == "update") joined += call.data;
      if (call.op != "capability") {
        EXPECT_EQ(call.userData, &token);
      }
    }
    EXPECT_EQ(joined, data);
    const auto& calls = plugin.calls;  // the finish names the handle start gave
    EXPECT_EQ(std::vector({calls.front().op, calls.front().data, calls[1].op, calls[1].data2, calls.back().op,
                           calls.back().data2}),
              std::vector<std::string>({"capability", "17", "start", "SM3", "finish", "42"}));
  }
}

struct FallbackCase {
  const char* name;
  bool stepwise;
  int startResult, failUpdateAt, finishResult, digestResult;
  std::vector<std::string> ops;
  int result;
};

TEST(CalcDigest_Fallback, OneShotWhenStepwiseIsMissingOrFails) {
  using V = std::vector<std::string>;
  const FallbackCase cases[] = {
      {"no capability", false, 0, -1, 0, 0, V{"capability", "digest"}, 0},
      {"start fails", true, 3, -1, 0, 0, V{"capability", "start", "digest"}, 0},
      {"start fails, one-shot fails", true, 3, -1, 0, 9, V{"capability", "start", "digest"}, 9},
      {"second feed fails, finish works", true, 0, 1, 0, 0,
       V{"capability", "start", "update", "update", "finish"}, 0},
      {"finish fails", true, 0, -1, 5, 0,
       V{"capability", "start", "update", "update", "update", "update", "update", "finish",
         "digest"},
       0},
  };
  for (const FallbackCase& c : cases) {
    std::string data(5 * 16384 - 10, 'x');
    ScriptedPlugin plugin;
    std::tie(plugin.stepwise, plugin.startResult, plugin.failUpdateAt, plugin.finishResult, plugin.digestResult) =
        std::tie(c.stepwise, c.startResult, c.failUpdateAt, c.finishResult, c.digestResult);
    BinaryBuf digest;
    digest.AppendBuf("old", 3);
    const int result = CalcDigest(reinterpret_cast<unsigned char*>(data.data()),
                                  static_cast<unsigned>(data.size()), "SHA256", &plugin, nullptr,
                                  digest);
    EXPECT_EQ(result, c.result) << c.name;
    EXPECT_EQ(plugin.Ops(), c.ops) << c.name;
    const std::string got(reinterpret_cast<const char*>(digest.GetBuffer()),
                          static_cast<size_t>(digest.GetSize()));
    EXPECT_EQ(got, c.result == 0 ? "oldD" : "old") << c.name;
    if (plugin.Ops().back() == "digest") {
      EXPECT_EQ(plugin.calls.back().data, data) << c.name;
    }
  }
}

TEST(OESDigestCalculator_Binding, PassesItsPluginAndUserData) {
  ScriptedPlugin plugin;
  plugin.stepwise = false;
  plugin.digestValue = std::string("\0\1", 2);
  int token = 0;
  OESDigestCalculator calculator(&plugin, &token);
  IDigestCalculator& calc = calculator;
  unsigned char data[3] = {1, 0, 2};
  BinaryBuf digest;
  EXPECT_EQ(calc.CalcDigest(data, 3, "MD5", digest), 0);
  ASSERT_EQ(digest.GetSize(), 2);
  EXPECT_EQ(digest.GetBuffer()[1], 1);
  EXPECT_EQ(std::make_pair(plugin.calls.back().userData, plugin.calls.back().data),
            std::make_pair(static_cast<void*>(&token), std::string("\1\0\2", 3)));
  EXPECT_NE(CalcDigest(data, 3, "MD5", nullptr, nullptr, digest), 0);
  EXPECT_EQ(digest.GetSize(), 2);
}

}  // namespace
}  // namespace tarvik
