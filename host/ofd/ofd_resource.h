// Resources of OFD documents and pages (PublicRes, DocumentRes, PageRes):
// fonts, colour spaces, draw parameters, multimedia and composite units.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/base/byte_string.h"
#include "host/base/host_export.h"
#include "host/base/path.h"
#include "host/ofd/ofd_color.h"
#include "host/ofd/ofd_multimedia.h"

namespace host {

class OfdDocument;
class OfdPageBlock;
class OfdResourceContainer;

/// A font resource. Names are UTF-8 as written.
class HOST_API OfdFont {
 public:
  uint32_t id = 0;
  ByteString fontName;
  ByteString familyName;
  ByteString charset;
  bool bold = false;
  bool italic = false;
  bool serif = false;
  bool fixedWidth = false;
  /// Absolute location of the embedded font file; empty when the font is
  /// to be found by name.
  ByteString fontFile;
  const OfdResourceContainer* container = nullptr;

  /// Reads the embedded font file; false (out empty) when there is none.
  bool LoadFontFile(std::string& out) const;
};

/// A DrawParam resource: only what it gave is set. `relative` names the
/// DrawParam it inherits the rest from (0: none).
struct HOST_API OfdDrawParam {
  uint32_t id = 0;
  uint32_t relative = 0;
  std::optional<float> lineWidth;
  std::optional<LineJoin> join;
  std::optional<LineCap> cap;
  std::optional<float> miterLimit;
  std::optional<float> dashOffset;
  std::optional<std::vector<float>> dashPattern;
  OfdColor fillColor;    // isSet false when not given
  OfdColor strokeColor;  // isSet false when not given
};

/// A CompositeGraphicUnit: a page block in its own coordinates.
class HOST_API OfdCompositeUnit {
 public:
  OfdCompositeUnit();
  ~OfdCompositeUnit();
  uint32_t id = 0;
  float width = 0, height = 0;
  /// The unit's objects; never null once loaded (possibly empty).
  std::unique_ptr<OfdPageBlock> content;
  const OfdResourceContainer* container = nullptr;
};

/// Holds the resources of one or more Res files and finds them by ID, asking
/// its parent when it has no resource of that ID (page -> document). Filled
/// while a document or page loads (AddResourceFile for each file, then
/// FinishLoading); read-only and thread-safe afterwards.
class HOST_API OfdResourceContainer {
 public:
  /// `document` gives the package files are read from; `parent` is asked for
  /// IDs this container lacks. Neither is owned; both may be null.
  OfdResourceContainer(OfdDocument* document, const OfdResourceContainer* parent);
  virtual ~OfdResourceContainer();
  OfdResourceContainer(const OfdResourceContainer&) = delete;
  OfdResourceContainer& operator=(const OfdResourceContainer&) = delete;

  /// The document the resources belong to; null for a free container.
  OfdDocument* GetDocument() const { return document_; }
  const OfdResourceContainer* GetParent() const { return parent_; }

  /// Look-ups by ID through this container and its parents; null when no
  /// container has it. The result lives as long as its container.
  const OfdFont* FindFont(uint32_t id) const;
  const OfdColorSpace* FindColorSpace(uint32_t id) const;
  const OfdDrawParam* FindDrawParam(uint32_t id) const;
  const OfdMultiMedia* FindMultiMedia(uint32_t id) const;
  /// A unit whose content is still being built (a unit reaching itself
  /// through its own content) reads as absent, so the tree never loops.
  const OfdCompositeUnit* FindCompositeUnit(uint32_t id) const;
  /// Number of resources held by this container itself (parents excluded).
  size_t CountOwnResources() const;

  /// Reads the Res file at the package path `path` and keeps its XML for
  /// FinishLoading. False when it is missing or malformed.
  bool AddResourceFile(const std::string& path);
  /// Builds the resources of every added file, in the order added; of two
  /// resources with the same ID the first is kept. Composite unit contents are
  /// parsed last, so they may use every other resource.
  void FinishLoading();

 private:
  struct Pending;
  void BuildUnitContent(OfdCompositeUnit* unit) const;

  OfdDocument* document_;
  const OfdResourceContainer* parent_;
  std::map<uint32_t, std::unique_ptr<OfdFont>> fonts_;
  std::map<uint32_t, std::unique_ptr<OfdColorSpace>> colorSpaces_;
  std::map<uint32_t, std::unique_ptr<OfdDrawParam>> drawParams_;
  std::map<uint32_t, std::unique_ptr<OfdMultiMedia>> multiMedias_;
  std::map<uint32_t, std::unique_ptr<OfdCompositeUnit>> units_;
  // Files added and not yet built; units whose content is not built yet.
  mutable std::unique_ptr<Pending> pending_;
};

}  // namespace host
