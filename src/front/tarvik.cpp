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
namespace {

// A full copy, or null when it cannot be made.
Dib* Copy(const Dib* dib) { return dib->Clone().release(); }

}  // namespace

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
    host::OfdRenderContext context(param.image->renderMode == 1 ? 1 : 0);
    context.AppendPageBlock(annotation->Appearance, matrix, annotation->Boundary);
    annotation->Appearance->SetPage(page);
    host::OfdProgressiveRender render(page, GetDeviceCreator(), GetDeviceCreatorUserData(), 0, 0,
                                      0);
    SealImageRequest request{plugin, userData, param.image, param.text, this};
    render.SetSealImageParser(&Tarvik::GetSealImage, &request);
    render.StartRender(&context, device);
    while (render.Continue() != 0) {
    }
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
  const Dib* cached = nullptr;
  Dib* work = nullptr;
  if (image.renderMode == 0) {
    cached = req->owner->GetCachedSealImage(media);
    if (cached) {
      work = Copy(cached);
      if (!work) return nullptr;
    }
  }
  if (!work) {
    bool isOfd = false;
    work = ParseSealImage(media, image.renderMode, req->plugin, req->userData, size.width,
                          size.height, 0, isOfd);
    if (!work) return nullptr;
    // Raster seals are cached as decoded, before any adjustment, so requests
    // with other adjustments share the entry. OFD seals render per size.
    if (!isOfd && image.renderMode == 0 && req->owner->AddSealImageToCache(media, work)) {
      cached = work;
    }
  }
  auto replace = [&](Dib* copy) {
    if (work != cached) delete work;
    work = copy;
  };
  if (image.crossMark != 0) {
    if (Dib* copy = Copy(work)) {
      replace(copy);
      DrawCrossMark(*work);
    }
  }
  if (image.colorMode != 0) {
    if (Dib* copy = Copy(work)) {
      replace(copy);
      if (image.colorMode == 2) {
        ConvertToBlack(work);
      } else {
        ConvertToGray(work);
      }
      return work;
    }
  }
  return work == cached ? Copy(work) : work;
}

}  // namespace tarvik
