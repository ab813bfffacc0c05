#include "front/device_creator.h"

namespace tarvik {
namespace {
// Written once by the host before rendering starts, then only read.
DeviceCreator gCreator = nullptr;
void* gCreatorUserData = nullptr;
}  // namespace

void SetDeviceCreator(DeviceCreator creator, void* userData) {
  gCreator = creator;
  gCreatorUserData = userData;
}

DeviceCreator GetDeviceCreator() { return gCreator; }

void* GetDeviceCreatorUserData() { return gCreatorUserData; }

}  // namespace tarvik
