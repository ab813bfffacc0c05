#include "device_creator.h"

#include <mutex>

#include "host/base/device.h"
#include "tarvik/tarvik.h"

namespace tarvik::viewer {

void InstallBitmapDeviceCreator() {
  static std::once_flag once;
  std::call_once(once, [] { SetDeviceCreator(host::BitmapDeviceCreator, nullptr); });
}

}  // namespace tarvik::viewer
