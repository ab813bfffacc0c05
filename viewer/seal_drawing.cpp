#include "seal_drawing.h"

#include <memory>
#include <new>
#include <string>

#include "host/base/device.h"
#include "host/base/path.h"
#include "host/oes/oes_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "seal_problem.h"

namespace tarvik::viewer {

namespace {

// Reads the seal's picture before its first drawing in the document, so
// that a seal that cannot be shown is reported; a raster picture read here
// goes into the cache, so drawing it costs nothing more. Later renders take
// what this found from `drawing.readings`.
SealReadings::Reading ReadSeal(const SealDrawing& drawing, const host::OfdAnnotationSeal& seal,
                               int renderMode) {
  SealReadings::Reading reading;
  const host::OfdMultiMedia* media = seal.sealMedia.get();
  if (!media) {
    reading.reason = "the seal has no data";
    return reading;
  }
  const std::string key = std::string(media->PrimaryLoc.view()) + "\n" +
                          std::string(media->SecondaryLoc.view()) + "\n" + std::to_string(renderMode);
  if (drawing.readings && drawing.readings->Find(key, reading)) return reading;
  const bool useCache = renderMode == RenderSealParam::ImageParam::kRenderNormal;
  const host::Dib* cached = useCache ? drawing.tarvik->GetCachedSealImage(media) : nullptr;
  std::unique_ptr<host::Dib> dib;
  bool isOfd = false;
  if (!cached) dib.reset(ParseSealImage(media, renderMode, drawing.plugin, nullptr, 1, 1, 0, isOfd));
  const host::Dib* picture = cached ? cached : dib.get();
  reading.readable = picture != nullptr;
  if (picture) {
    reading.bpp = picture->GetBPP();
    reading.width = picture->GetWidth();
  } else {
    reading.reason = SealProblem(*drawing.plugin, *media);
  }
  if (dib && !isOfd && useCache && drawing.tarvik->AddSealImageToCache(media, dib.get())) {
    dib.release();
  }
  if (drawing.readings) drawing.readings->Store(key, reading);
  return reading;
}

// The seal library draws its cross into seal pictures of 24 and 32 bits
// only. A paletted picture of a seal that must show the cross gets the same
// cross drawn over it on the device: red, three picture pixels wide, corner
// to corner of the seal's boundary, inside its clip.
void DrawCrossOver(host::Device& device, const host::OfdAnnotationSeal& seal,
                   const host::Matrix& pageToDevice, int pictureWidth) {
  const host::GRect& b = seal.Boundary;
  host::Path cross;
  cross.MoveTo(b.left, b.top);
  cross.LineTo(b.right, b.bottom);
  cross.MoveTo(b.right, b.top);
  cross.LineTo(b.left, b.bottom);
  host::StrokeStyle style;
  style.width = pictureWidth > 0 ? 3 * b.Width() / static_cast<float>(pictureWidth) : 0;
  device.SaveState();
  host::GRect clip = b;
  if (!seal.Clip.IsRectNull()) {
    clip = seal.Clip;
    clip.OffsetRect(b.left, b.top);
  }
  pageToDevice.TransformRect(clip);
  device.ClipRect(clip);
  device.StrokePath(cross, pageToDevice, 0xFFFF0000, style, host::BlendMode::kNormal);
  device.RestoreState();
}

}  // namespace

void DrawPageSeals(const SealDrawing& drawing, host::OfdPage& page, host::Device& device,
                   const host::Matrix& pageToDevice, const RenderOptions& options,
                   std::vector<SealResult>& results) {
  if (!drawing.signatures || drawing.signatures->AttachSealAnnotations(&page) == 0) return;
  RenderSealParam::ImageParam image;
  image.renderMode = options.renderMode == 0 ? RenderSealParam::ImageParam::kRenderNormal
                                             : RenderSealParam::ImageParam::kRenderPrint;
  image.colorMode = options.colorMode;
  RenderSealParam param;
  param.image = &image;
  // RenderSealParam takes a mutable pointer but only reads the record.
  param.text = const_cast<RenderSealParam::TextParam*>(options.sealText);

  // Annotations come in signature order, then StampAnnot order: pair them
  // with the signature list the same way.
  std::vector<std::pair<int, const StampInfo*>> owners;
  const uint32_t pageId = page.GetPageId();
  for (size_t s = 0; drawing.list && s < drawing.list->size(); ++s) {
    const SignatureInfo& sig = (*drawing.list)[s];
    if (!sig.usable) continue;
    for (const StampInfo& stamp : sig.stamps) {
      if (stamp.pageId == pageId) owners.emplace_back(static_cast<int>(s), &stamp);
    }
  }
  const std::vector<host::OfdAnnotationSeal*> seals = page.GetSealAnnotations();
  for (size_t i = 0; i < seals.size(); ++i) {
    host::OfdAnnotationSeal* seal = seals[i];
    SealResult result;
    if (i < owners.size()) {
      result.signature = owners[i].first;
      result.stampId = owners[i].second->id;
    } else {
      result.stampId = std::to_string(seal->id);
    }
    // A signature verified invalid gets the cross; an unknown verdict does not.
    const bool invalid = options.crossInvalid && result.signature >= 0 &&
                         (*drawing.list)[static_cast<size_t>(result.signature)].verdict == Verdict::kInvalid;
    image.crossMark = options.cross || invalid ? 1 : 0;
    const SealReadings::Reading reading = ReadSeal(drawing, *seal, image.renderMode);
    result.drawn = reading.readable;
    result.reason = reading.reason;
    result.crossed = reading.readable && image.crossMark != 0;
    drawing.tarvik->RenderSignature(&page, drawing.plugin, nullptr, seal, param, &device, pageToDevice);
    if (result.crossed && reading.bpp < 24) DrawCrossOver(device, *seal, pageToDevice, reading.width);
    results.push_back(std::move(result));
  }
}

}  // namespace tarvik::viewer
