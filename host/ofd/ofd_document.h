// OFD documents: Document.xml with its common data, page list and resources.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/base/byte_string.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/shared_image_cache.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_resource.h"

namespace host {

class OfdPage;
class OfdTemplateCache;

/// Where a template is drawn relative to the page's own content.
enum class OfdZOrder : uint8_t { kBackground, kForeground };

/// A TemplatePage of CommonData. `location` is an absolute package location.
struct HOST_API OfdTemplateEntry {
  uint32_t id = 0;
  ByteString location;
  OfdZOrder zOrder = OfdZOrder::kBackground;
};

/// A Page of the Pages list. `location` is an absolute package location.
struct HOST_API OfdPageEntry {
  uint32_t id = 0;
  ByteString location;
};

/// A loaded document. It is the resource container of PublicRes and
/// DocumentRes (GetDocument gives the document itself). It keeps a pointer to
/// its package, which must outlive it; pages keep a pointer to the document,
/// which must outlive them. Loading is single-threaded; afterwards pages may
/// be loaded and parsed from several threads.
class HOST_API OfdDocument : public OfdResourceContainer {
 public:
  OfdDocument();
  ~OfdDocument() override;

  /// Reads the Document.xml that `entry` names from `package`, and the
  /// document's resources and annotation list. `flag` is reserved (callers
  /// pass -1). Returns 0 on success (also for a document without pages), else
  /// an OfdLoadResult code; a document loads once.
  int LoadDocument(OfdPackage* package, const OfdDocBody* entry, int flag);
  /// Why the last LoadDocument failed (code 0 after a success).
  const OfdLoadError& GetLoadError() const { return loadError_; }
  /// Pictures of this document decoded by earlier renders, shared by its
  /// pages and by renders on several threads. Thread-safe.
  SharedImageCache& GetImageCache() const { return imageCache_; }
  /// Templates of this document already parsed, shared by its pages and by
  /// pages on several threads. Thread-safe.
  OfdTemplateCache& GetTemplateCache() const { return *templateCache_; }
  /// Number of pages listed; 0 before loading.
  int CountPages() const { return static_cast<int>(pages_.size()); }
  /// A new page object for the page at `index`, with its page XML read but
  /// its objects not yet parsed (OfdPage::ParseContents). The caller deletes
  /// it. `flag` is reserved (callers pass 1). Null when the index is out of
  /// range or the page's file is missing or malformed.
  OfdPage* LoadPage(int index, int flag);
  OfdPackage* GetPackage() const { return package_; }

  /// Index of the page whose ID is `id`, or -1.
  int FindPageIndexById(uint32_t id) const;
  /// The page list entry at `index`, or null.
  const OfdPageEntry* GetPageEntry(int index) const;
  /// The TemplatePage with that ID, or null.
  const OfdTemplateEntry* FindTemplate(uint32_t id) const;
  const std::vector<OfdTemplateEntry>& GetTemplates() const { return templates_; }

  /// Package folder of Document.xml with a trailing '/' ("Doc_0/"); relative
  /// locations in the document resolve against it.
  const std::string& GetFolder() const { return folder_; }
  /// Absolute location of Document.xml.
  const ByteString& GetDocRoot() const { return docRoot_; }
  /// Absolute location of the document's Signatures.xml (from its DocBody);
  /// empty when it has none.
  const ByteString& GetSignaturesLocation() const { return signatures_; }
  /// Absolute location of Annotations.xml; empty when none.
  const ByteString& GetAnnotationsLocation() const { return annotations_; }
  /// Annotation files (absolute locations) Annotations.xml lists for a page.
  std::vector<ByteString> GetAnnotationFiles(uint32_t pageId) const;

  /// CommonData/PageArea/PhysicalBox (left, top, right, bottom) in mm; A4
  /// (0, 0, 210, 297) when absent or malformed.
  const GRect& GetPageArea() const { return pageArea_; }
  uint32_t GetMaxUnitId() const { return maxUnitId_; }

 private:
  int Load(OfdPackage* package, const OfdDocBody* entry, int flag);
  void LoadAnnotationList();

  OfdLoadError loadError_;
  mutable SharedImageCache imageCache_;
  std::unique_ptr<OfdTemplateCache> templateCache_;
  OfdPackage* package_ = nullptr;
  bool loaded_ = false;
  std::string folder_;
  ByteString docRoot_;
  ByteString signatures_;
  ByteString annotations_;
  GRect pageArea_{0, 0, 210, 297};
  uint32_t maxUnitId_ = 0;
  std::vector<OfdPageEntry> pages_;
  std::map<uint32_t, int> pageIndexById_;
  std::vector<OfdTemplateEntry> templates_;
  std::multimap<uint32_t, ByteString> annotationFiles_;
};

}  // namespace host
