// The per-document object: draws seal annotations through the page renderer,
// answers the renderer's seal picture requests from the cache or the seal
// provider, and draws the signature's text over the seal.
#include "tarvik/tarvik.h"

#include <memory>

#include "front/device_creator.h"
#include "front/seal_image_request.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_page_object.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"
#include "image/color_ops.h"
#include "text/draw_seal_text.h"

namespace tarvik {
Tarvik::Tarvik(host::OfdDocument* document) : document_(document) {}

Tarvik::~Tarvik() {
  host::MutexLock lock(cacheLock_);
  cache_.ForEach([](auto& assoc) { delete assoc.value; });
  cache_.RemoveAll();
}

void Tarvik::RenderSignature(host::OfdPage* page, host::OESPlugin* plugin, void* userData,
                             host::OfdAnnotationSeal* annotation, const RenderSealParam& param,
                             Device* device, const Matrix& matrix) {
  if (!annotation || !device) return;
  if (param.image && annotation->Appearance) {
    const bool print = param.image->renderMode == RenderSealParam::ImageParam::kRenderPrint;
    host::OfdRenderContext context(print ? host::OfdRenderContext::kPrint : 0);
    context.AppendPageBlock(annotation->Appearance.get(), matrix, annotation->Boundary);
    annotation->Appearance->SetPage(page);
    host::OfdProgressiveRender render(page, GetDeviceCreator(), GetDeviceCreatorUserData(), 0, 0,
                                      0);
    SealImageRequest request{plugin, userData, param.image, param.text, this};
    render.SetSealImageParser(&Tarvik::GetSealImage, &request);
    render.RenderToEnd(&context, device);
  }
  if (!param.text) return;

  const GRect boundary = annotation->Boundary;
  GRect clip = annotation->Clip;
  if (clip.IsRectNull() || param.text->layoutKind == 0) {
    DrawSealText(device, boundary, matrix, *param.text);
    return;
  }
  // An ellipse of text on a seal that is cut (a seal across page edges):
  // only the part inside the clip is drawn.
  device->SaveState();
  clip.OffsetRect(boundary.left, boundary.top);
  matrix.TransformRect(clip);
  device->ClipRect(clip);
  DrawSealText(device, boundary, matrix, *param.text);
  device->RestoreState();
}

Dib* Tarvik::GetSealImage(const host::OfdMultiMedia* media, const Size& size, void* request) {
  const auto* req = static_cast<const SealImageRequest*>(request);
  if (!media || !req || !req->image || !req->owner) return nullptr;
  const RenderSealParam::ImageParam& image = *req->image;

  // `cached` stays the cache's: never changed or deleted here.
  const bool useCache = image.renderMode == RenderSealParam::ImageParam::kRenderNormal;
  const Dib* cached = useCache ? req->owner->GetCachedSealImage(media) : nullptr;
  std::unique_ptr<Dib> work;
  if (!cached) {
    bool isOfd = false;
    work.reset(ParseSealImage(media, image.renderMode, req->plugin, req->userData, size.width,
                              size.height, 0, isOfd));
    if (!work) return nullptr;
    // Raster seals are cached as decoded, before any adjustment, so requests
    // with other adjustments share the entry. OFD seals render per size.
    if (!isOfd && useCache && req->owner->AddSealImageToCache(media, work.get()))
      cached = work.release();
  }
  // A cached bitmap is adjusted and handed out as a copy.
  if (cached) work = cached->Clone();
  if (!work) return nullptr;
  if (image.crossMark != 0) DrawCrossMark(*work);
  if (image.colorMode == 2) {
    ConvertToBlack(work);
  } else if (image.colorMode != 0) {
    ConvertToGray(work);
  }
  return work.release();
}

}  // namespace tarvik
