// A seal-provider plug-in whose answers the test scripts, recording every
// call it receives.
#pragma once

#include <utility>
#include <string>
#include <vector>

#include "host/oes/oes_plugin.h"

namespace testing_support {

class ScriptedPlugin : public host::OESPlugin {
 public:
  struct Call {
    std::string op;        // "primary", "secondary", "combined", "digest", "start", "update", "finish", "capability"
    std::string data;      // the seal data, piece or whole data
    std::string data2;     // combined: the secondary data; digests: the algorithm
    int renderMode = 0;
    void* userData = nullptr;
    // What the output variables held when the call came in.
    std::string pictureIn;
    int widthIn = 0;
    Call(std::string o, std::string d = {}, std::string d2 = {}, int mode = 0,
         void* user = nullptr, std::string picture = {}, int width = 0)
        : op(std::move(o)), data(std::move(d)), data2(std::move(d2)), renderMode(mode),
          userData(user), pictureIn(std::move(picture)), widthIn(width) {}
  };

  /// One picture request's answer: result, and what it writes to the outputs.
  struct Answer {
    int result = 1;
    std::string picture;
    std::string type;
    int width = 0;
    int height = 0;
    bool write = false;  // write the outputs even when failing
    Answer(int r = 1, std::string p = {}, std::string t = {}, int w = 0, int h = 0,
           bool alwaysWrite = false)
        : result(r), picture(std::move(p)), type(std::move(t)), width(w), height(h),
          write(alwaysWrite) {}
  };

  Answer primary, secondary, combined;
  bool stepwise = true;
  int startResult = 0;
  int finishResult = 0;
  int failUpdateAt = -1;  // index of the feed that fails, or -1
  int digestResult = 0;
  std::string digestValue = "D";
  std::vector<Call> calls;

  bool QueryCapability(int capability) override;
  int GetCombinedSealImage(const std::string& p, const std::string& s, std::string& picture,
                           std::string& type, int& width, int& height) override;
  int GetSecondarySealImage(void* userData, const std::string& s, int renderMode,
                            std::string& picture, std::string& type, int& width,
                            int& height) override;
  int GetPrimarySealImage(void* userData, const std::string& p, int renderMode,
                          std::string& picture, std::string& type, int& width,
                          int& height) override;
  int Digest(void* userData, const std::string& data, const std::string& algorithm,
             std::string& digest) override;
  int DigestStart(void* userData, uintptr_t* handle, const std::string& algorithm) override;
  int DigestUpdate(void* userData, uintptr_t handle, const std::string& piece) override;
  int DigestFinish(void* userData, uintptr_t handle, std::string& digest) override;

  /// The names of the calls made, in order.
  std::vector<std::string> Ops() const;

 private:
  int Respond(const Answer& a, std::string& picture, std::string& type, int& width, int& height);
  int updates_ = 0;
};

}  // namespace testing_support
