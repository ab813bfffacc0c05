// Drawing a whole page in one call, as a viewer does for a repaint.
#pragma once

#include <string>

#include "host/base/host_export.h"
#include "host/base/matrix.h"
#include "host/render/render_budget.h"

namespace host {

class Device;
class OfdPage;

/// Draws a parsed page's content (templates, layers, page annotations; not
/// seal annotations) on `device`, clipped to the page's area, to the end.
/// `matrix` maps page millimetres to device coordinates. Does nothing when
/// the page or device is null. Not thread-safe for one device or page.
/// The drawing is bounded by `limits`: the result says why it stopped early
/// (kNone when it reached the end), and `message`, when given, receives the
/// reason naming the page ("page 2: too many objects").
HOST_API RenderStop RenderPageContent(OfdPage* page, Device* device, const Matrix& matrix,
                                      const RenderLimits& limits = RenderLimits(),
                                      std::string* message = nullptr);

}  // namespace host
