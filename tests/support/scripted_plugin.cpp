#include "support/scripted_plugin.h"

namespace testing_support {

int ScriptedPlugin::Respond(const Answer& a, std::string& picture, std::string& type, int& width,
                            int& height) {
  if (a.result == 0 || a.write) {
    picture = a.picture;
    type = a.type;
    width = a.width;
    height = a.height;
  }
  return a.result;
}

bool ScriptedPlugin::QueryCapability(int capability) {
  calls.push_back({"capability", std::to_string(capability)});
  return capability == 17 && stepwise;
}

int ScriptedPlugin::GetCombinedSealImage(const std::string& p, const std::string& s,
                                         std::string& picture, std::string& type, int& width,
                                         int& height) {
  calls.push_back({"combined", p, s, 0, nullptr, picture, width});
  return Respond(combined, picture, type, width, height);
}

int ScriptedPlugin::GetSecondarySealImage(void* userData, const std::string& s, int renderMode,
                                          std::string& picture, std::string& type, int& width,
                                          int& height) {
  calls.push_back({"secondary", s, "", renderMode, userData, picture, width});
  return Respond(secondary, picture, type, width, height);
}

int ScriptedPlugin::GetPrimarySealImage(void* userData, const std::string& p, int renderMode,
                                        std::string& picture, std::string& type, int& width,
                                        int& height) {
  calls.push_back({"primary", p, "", renderMode, userData, picture, width});
  return Respond(primary, picture, type, width, height);
}

int ScriptedPlugin::Digest(void* userData, const std::string& data, const std::string& algorithm,
                           std::string& digest) {
  calls.push_back({"digest", data, algorithm, 0, userData});
  if (digestResult == 0) digest = digestValue;
  return digestResult;
}

int ScriptedPlugin::DigestStart(void* userData, uintptr_t* handle, const std::string& algorithm) {
  calls.push_back({"start", "", algorithm, 0, userData});
  *handle = 42;
  updates_ = 0;
  return startResult;
}

int ScriptedPlugin::DigestUpdate(void* userData, uintptr_t handle, const std::string& piece) {
  calls.push_back({"update", piece, std::to_string(handle), 0, userData});
  return updates_++ == failUpdateAt ? 7 : 0;
}

int ScriptedPlugin::DigestFinish(void* userData, uintptr_t handle, std::string& digest) {
  calls.push_back({"finish", "", std::to_string(handle), 0, userData});
  if (finishResult == 0) digest = digestValue;
  return finishResult;
}

std::vector<std::string> ScriptedPlugin::Ops() const {
  std::vector<std::string> ops;
  for (const Call& c : calls) ops.push_back(c.op);
  return ops;
}

}  // namespace testing_support
