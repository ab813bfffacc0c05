// Clipping a device to a page's area.
#pragma once

#include "host/base/host_export.h"
#include "host/base/matrix.h"

namespace host {

class Device;
class OfdPage;

/// Intersects the device's clip with the page's area (its PhysicalBox in
/// millimetres) mapped by `matrix`. Does nothing when the device or page is
/// null. Not thread-safe for one device.
HOST_API void OfdClipPageArea(Device* device, OfdPage* page, const Matrix& matrix);

}  // namespace host
