#include "host/ofd/ofd_annotation.h"

namespace host {

OfdAnnotation::OfdAnnotation() = default;
OfdAnnotation::~OfdAnnotation() = default;

OfdAnnotationSeal::OfdAnnotationSeal() = default;

OfdAnnotationSeal::~OfdAnnotationSeal() = default;

void OfdAnnotationSeal::BindSealImage(std::unique_ptr<OfdMultiMedia> media) {
  auto block = std::make_unique<OfdPageBlock>();
  auto image = std::make_unique<OfdImageObject>();
  const float w = Boundary.Width(), h = Boundary.Height();
  image->boundary = GRect(0, 0, w, h);
  image->ctm = Matrix(w, 0, 0, h, 0, 0);
  image->resourceId = media ? media->id : 0;
  image->media = media.get();
  if (!Clip.IsRectNull()) {
    // A seal riding across pages shows, on each page, only the slice its
    // clip names (relative to the boundary's top-left corner, as the block).
    auto rect = std::make_unique<OfdPathObject>();
    rect->boundary = Clip;
    rect->fill = true;
    rect->stroke = false;
    rect->path.AddRect(0, 0, Clip.Width(), Clip.Height());
    OfdClipArea area;
    area.shape = std::move(rect);
    OfdClip clip;
    clip.areas.push_back(std::move(area));
    image->clips.push_back(std::move(clip));
  }
  block->children.push_back(std::move(image));
  Appearance = std::move(block);
  sealMedia = std::move(media);
}

}  // namespace host
