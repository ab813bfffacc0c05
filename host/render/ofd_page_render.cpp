#include "host/render/ofd_page_render.h"

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/render/ofd_clip_page_area.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"

namespace host {

RenderStop RenderPageContent(OfdPage* page, Device* device, const Matrix& matrix,
                             const RenderLimits& limits, std::string* message) {
  if (!page || !device) return RenderStop::kNone;
  OfdRenderContext context(0);
  context.AppendPage(page, matrix, OfdRenderContext::kPageAnnotations);
  device->SaveState();
  OfdClipPageArea(device, page, matrix);
  OfdProgressiveRender render(page, BitmapDeviceCreator, nullptr, 0, 0, 0);
  render.SetLimits(limits);
  render.RenderToEnd(&context, device);
  device->RestoreState();
  if (message) *message = render.GetStopMessage();
  return render.GetStopReason();
}

}  // namespace host
