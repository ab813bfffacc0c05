#include "host/ofd/ofd_annotation.h"

namespace host {

OfdAnnotation::OfdAnnotation() = default;
OfdAnnotation::~OfdAnnotation() = default;

OfdAnnotationSeal::OfdAnnotationSeal() = default;

OfdAnnotationSeal::~OfdAnnotationSeal() { delete Appearance; }

void OfdAnnotationSeal::BindSealImage(std::unique_ptr<OfdMultiMedia> media) {
  auto block = std::make_unique<OfdPageBlock>();
  auto image = std::make_unique<OfdImageObject>();
  const float w = Boundary.Width(), h = Boundary.Height();
  image->boundary = GRect(0, 0, w, h);
  image->ctm = Matrix(w, 0, 0, h, 0, 0);
  image->resourceId = media ? media->id : 0;
  image->media = media.get();
  block->children.push_back(std::move(image));
  delete Appearance;
  Appearance = block.release();
  sealMedia = std::move(media);
}

}  // namespace host
