// A seal-provider plug-in whose answers the test scripts, recording every
// call it receives.
#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "host/oes/oes_plugin.h"

namespace testing_support {

class ScriptedPlugin : public host::OESPlugin {
 public:
  struct Call {
    std::string op = {};     // "primary", "secondary", "combined", "digest", "start", "update", "finish", "capability"
    std::string data = {};   // the seal data, piece or whole data
    std::string data2 = {};  // combined: the secondary data; digests: the algorithm or the handle
    int renderMode = 0;
    void* userData = nullptr;
    // What the output variables held when the call came in.
    std::string pictureIn = {};
    int widthIn = 0;
  };

  /// One picture request's answer: result, and what it writes to the outputs.
  struct Answer {
    int result = 1;
    std::string picture = {}, type = {};
    int width = 0, height = 0;
    bool write = false;  // write the outputs even when failing
  };

  Answer primary, secondary, combined;
  bool stepwise = true;
  int startResult = 0, finishResult = 0, digestResult = 0;
  int failUpdateAt = -1;  // index of the feed that fails, or -1
  std::string digestValue = "D";
  std::vector<Call> calls;

  bool QueryCapability(int capability) override {
    calls.push_back({"capability", std::to_string(capability)});
    return capability == 17 && stepwise;
  }
  int GetCombinedSealImage(const std::string& p, const std::string& s, std::string& picture, std::string& type,
                           int& width, int& height) override {
    calls.push_back({"combined", p, s, 0, nullptr, picture, width});
    return Respond(combined, picture, type, width, height);
  }
  int GetSecondarySealImage(void* userData, const std::string& s, int renderMode, std::string& picture,
                            std::string& type, int& width, int& height) override {
    calls.push_back({"secondary", s, "", renderMode, userData, picture, width});
    return Respond(secondary, picture, type, width, height);
  }
  int GetPrimarySealImage(void* userData, const std::string& p, int renderMode, std::string& picture,
                          std::string& type, int& width, int& height) override {
    calls.push_back({"primary", p, "", renderMode, userData, picture, width});
    return Respond(primary, picture, type, width, height);
  }
  int Digest(void* userData, const std::string& data, const std::string& algorithm, std::string& digest) override {
    calls.push_back({"digest", data, algorithm, 0, userData});
    if (digestResult == 0) digest = digestValue;
    return digestResult;
  }
  int DigestStart(void* userData, uintptr_t* handle, const std::string& algorithm) override {
    calls.push_back({"start", "", algorithm, 0, userData});
    *handle = 42;
    updates_ = 0;
    return startResult;
  }
  int DigestUpdate(void* userData, uintptr_t handle, const std::string& piece) override {
    calls.push_back({"update", piece, std::to_string(handle), 0, userData});
    return updates_++ == failUpdateAt ? 7 : 0;
  }
  int DigestFinish(void* userData, uintptr_t handle, std::string& digest) override {
    calls.push_back({"finish", "", std::to_string(handle), 0, userData});
    if (finishResult == 0) digest = digestValue;
    return finishResult;
  }

  /// The names of the calls made, in order.
  std::vector<std::string> Ops() const {
    std::vector<std::string> ops;
    for (const Call& c : calls) ops.push_back(c.op);
    return ops;
  }

 private:
  static int Respond(const Answer& a, std::string& picture, std::string& type, int& width, int& height) {
    if (a.result == 0 || a.write) {
      std::tie(picture, type, width, height) = std::tie(a.picture, a.type, a.width, a.height);
    }
    return a.result;
  }
  int updates_ = 0;
};

}  // namespace testing_support
