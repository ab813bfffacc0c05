// The seal library's device creator, installed once per process.
#pragma once

namespace tarvik::viewer {

/// Installs the host's bitmap device as the seal library's device creator,
/// the first time it is called in the process. Thread-safe.
void InstallBitmapDeviceCreator();

}  // namespace tarvik::viewer
