// The process-wide device creator installed by the host.
#pragma once

#include "tarvik/tarvik.h"

namespace tarvik {

/// The installed creator, or null before SetDeviceCreator.
DeviceCreator GetDeviceCreator();
/// The user data installed with it.
void* GetDeviceCreatorUserData();

}  // namespace tarvik
