// Page annotations: the ordinary ones of Annotations.xml, and seal
// annotations that signatures place on pages.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/byte_string.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_page_object.h"

namespace host {

/// An Annot of a page's annotation file.
class HOST_API OfdAnnotation {
 public:
  OfdAnnotation();
  ~OfdAnnotation();
  uint32_t id = 0;
  ByteString type;     // "Link", "Path", "Highlight", "Stamp", "Watermark"
  ByteString subtype;  // as written; may be empty
  bool visible = true;
  bool print = true;
  bool noZoom = false;
  bool noRotate = false;
  bool readOnly = true;
  /// The Appearance's Boundary in page millimetres (left, top, right,
  /// bottom); a null rectangle when the annotation has no appearance.
  GRect boundary;
  /// The Appearance's objects, in coordinates whose origin is the top-left
  /// corner of `boundary` (the block's own boundary stays null, as for seal
  /// appearances: the caller places the block at `boundary`). Null when none.
  std::unique_ptr<OfdPageBlock> appearance;
};

/// A seal placed on a page by a signature (one per StampAnnot). Not
/// copyable; owns its appearance and, when bound, the seal's resource.
class HOST_API OfdAnnotationSeal {
 public:
  OfdAnnotationSeal();
  ~OfdAnnotationSeal();
  OfdAnnotationSeal(const OfdAnnotationSeal&) = delete;
  OfdAnnotationSeal& operator=(const OfdAnnotationSeal&) = delete;

  /// Makes the appearance from the current `Boundary`: a page block (with a
  /// null boundary of its own: its objects are relative to Boundary's top-left
  /// corner) holding one image object that fills the boundary (boundary
  /// (0, 0, w, h), CTM (w, 0, 0, h, 0, 0)) bound to `media`, which the
  /// annotation keeps, and clipped to the current `Clip` when that is not
  /// null. Replaces any earlier appearance.
  void BindSealImage(std::unique_ptr<OfdMultiMedia> media);

  uint32_t id = 0;      // StampAnnot ID
  int pageIndex = -1;   // index of the page it lies on
  /// Boundary (left, top, right, bottom) in page millimetres.
  GRect Boundary;
  /// Clip relative to the boundary's top-left corner, in millimetres; a null
  /// rectangle when the seal is not clipped.
  GRect Clip;
  /// The appearance (an OfdPageBlock); null until made.
  std::unique_ptr<OfdPageBlock> Appearance;
  /// The seal's multimedia resource; owned; null until bound.
  std::unique_ptr<OfdMultiMedia> sealMedia;
};

}  // namespace host
