#include "host/render/ofd_clip_page_area.h"

#include "host/base/device.h"
#include "host/base/path.h"
#include "host/ofd/ofd_page.h"

namespace host {

void OfdClipPageArea(Device* device, OfdPage* page, const Matrix& matrix) {
  if (!device || !page) return;
  const GRect& area = page->GetPageArea();
  Path rect;
  rect.AddRect(area.left, area.top, area.Width(), area.Height());
  device->ClipPath(rect, matrix, FillRule::kNonZero);
}

}  // namespace host
