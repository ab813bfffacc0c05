// Drawing a whole page in one call, as a viewer does for a repaint.
#pragma once

#include "host/base/host_export.h"
#include "host/base/matrix.h"

namespace host {

class Device;
class OfdPage;

/// Draws a parsed page's content (templates, layers, page annotations; not
/// seal annotations) on `device`, clipped to the page's area, to the end.
/// `matrix` maps page millimetres to device coordinates. Does nothing when
/// the page or device is null. Not thread-safe for one device or page.
HOST_API void RenderPageContent(OfdPage* page, Device* device, const Matrix& matrix);

}  // namespace host
