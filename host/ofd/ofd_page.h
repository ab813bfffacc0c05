// OFD pages: the page's area, its objects (with templates and annotations)
// and the seals signatures place on it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/matrix.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_page_object.h"
#include "host/ofd/ofd_resource.h"

namespace host {

namespace ofdparse {
struct Budget;
}  // namespace ofdparse

/// A template drawn with the page: its layers in `content`, under the page's
/// content (kBackground) or over it (kForeground).
struct HOST_API OfdPageTemplate {
  OfdPageTemplate();
  ~OfdPageTemplate();
  OfdPageTemplate(OfdPageTemplate&&) noexcept;
  OfdPageTemplate& operator=(OfdPageTemplate&&) noexcept;
  uint32_t templateId = 0;
  OfdZOrder zOrder = OfdZOrder::kBackground;
  /// The template file's own PageRes (parent: the document) and content,
  /// shared with the document's other pages (OfdTemplateCache).
  std::shared_ptr<const OfdResourceContainer> resources;
  std::shared_ptr<const OfdPageBlock> content;
};

/// One page of a document, made by OfdDocument::LoadPage. Drawing order:
/// background templates in list order, the layers of GetContent, foreground
/// templates, then visible annotations and seal annotations. Not thread-safe
/// while parsing; read-only afterwards.
class HOST_API OfdPage {
 public:
  /// Most levels of templates that name further templates.
  static constexpr int kMaxTemplateDepth = 8;

  virtual ~OfdPage();
  OfdPage(const OfdPage&) = delete;
  OfdPage& operator=(const OfdPage&) = delete;

  /// Builds the page's object tree: its PageRes resources, templates, layers
  /// and annotations. Returns non-zero on success (at once when already
  /// parsed), 0 on failure. Missing templates, resources or annotation files
  /// are skipped; objects beyond the caps (ofdparse limits) are dropped.
  int ParseContents();
  bool IsParsed() const { return parsed_; }

  /// Width and height of the page in millimetres: the page's own
  /// Area/PhysicalBox, else the document's PageArea.
  float GetPageWidth() const { return area_.Width(); }
  float GetPageHeight() const { return area_.Height(); }
  /// That PhysicalBox as (left, top, right, bottom) in millimetres.
  const GRect& GetPageArea() const { return area_; }
  /// The matrix that maps page millimetres (y down) onto the device rectangle
  /// of `width` x `height` pixels at (x, y), the page turned clockwise by
  /// `rotate` quarter turns (0-3; 90, 180 and 270 are read as degrees).
  Matrix GetDisplayMatrix(int x, int y, int width, int height, int rotate) const;

  int GetPageIndex() const { return index_; }
  uint32_t GetPageId() const { return id_; }
  OfdDocument* GetDocument() const { return document_; }
  /// The page's PageRes resources; IDs it lacks are looked up in the document.
  const OfdResourceContainer* GetResources() const { return resources_.get(); }
  /// The page's layers (children, each an OfdPageBlock with a layer type);
  /// empty before ParseContents.
  const OfdPageBlock* GetContent() const { return content_.get(); }
  const std::vector<OfdPageTemplate>& GetTemplates() const { return templates_; }
  const std::vector<std::unique_ptr<OfdAnnotation>>& GetAnnotations() const { return annotations_; }
  /// Objects in content, templates and annotation appearances.
  size_t CountObjects() const;

  /// Seal annotations on this page, in the order added; owned by the page.
  std::vector<OfdAnnotationSeal*> GetSealAnnotations() const;
  int CountSealAnnotations() const { return static_cast<int>(seals_.size()); }
  /// The seal annotation at `index`, or null.
  OfdAnnotationSeal* GetSealAnnotation(int index) const;
  /// Adds a seal annotation; the page owns it from now on.
  void AddSealAnnotation(std::unique_ptr<OfdAnnotationSeal> seal);

 private:
  friend class OfdDocument;
  struct Impl;
  OfdPage(OfdDocument* document, int index);
  bool Load();
  void LoadTemplate(uint32_t id, const char* zOrder, std::vector<uint32_t>& chain,
                    ofdparse::Budget& budget);
  void LoadAnnotations(ofdparse::Budget& budget);

  OfdDocument* document_;
  int index_;
  uint32_t id_ = 0;
  GRect area_;
  bool parsed_ = false;
  std::unique_ptr<Impl> impl_;
  std::unique_ptr<OfdResourceContainer> resources_;
  std::unique_ptr<OfdPageBlock> content_;
  std::vector<OfdPageTemplate> templates_;
  std::vector<std::unique_ptr<OfdAnnotation>> annotations_;
  std::vector<std::unique_ptr<OfdAnnotationSeal>> seals_;
};

}  // namespace host
