// The objects of an OFD page: a tree of page blocks (layers among them)
// holding paths, text, images and composite objects.
//
// Coordinates. Every length is in millimetres with y growing downward. An
// object's `boundary` is given in its parent's coordinates (the page's for an
// object of a layer); the object's own coordinates have their origin at the
// boundary's top-left corner, and its `ctm` maps them there: a point p of a
// path or text lands at ctm(p) + (boundary.left, boundary.top) in the parent.
// The boundary also clips what the object draws. An image covers the unit
// square (0,0)-(1,1) of its own coordinates, which its `ctm` scales to size.
// A composite object draws its unit's content in the unit's coordinates
// (Width x Height), mapped by its `ctm`.
//
// The tree is built by OfdPage::ParseContents and is read-only afterwards;
// reading it from several threads is safe.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/base/byte_string.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/matrix.h"
#include "host/base/path.h"
#include "host/base/units.h"
#include "host/base/wide_string.h"
#include "host/ofd/ofd_color.h"
#include "host/ofd/path_data.h"

namespace host {

class OfdCompositeUnit;
class OfdFont;
class OfdMultiMedia;
class OfdPage;
class OfdPageObject;

/// One part of a clip: a path's or a text's outline. `shape` (an OfdPathObject
/// or OfdTextObject) is placed as any object is, by its own boundary and CTM,
/// and then mapped by the area's `ctm` into the clipped object's coordinates.
struct HOST_API OfdClipArea {
  OfdClipArea();
  ~OfdClipArea();
  OfdClipArea(OfdClipArea&&) noexcept;
  OfdClipArea& operator=(OfdClipArea&&) noexcept;
  Matrix ctm;
  uint32_t drawParamId = 0;
  std::unique_ptr<OfdPageObject> shape;
};

/// A clip: the union of its areas. An object's clips apply one after another
/// (their intersection). With `transFlag` the clipped object's own CTM applies
/// to the areas as well; without it (the usual case) it does not.
struct HOST_API OfdClip {
  std::vector<OfdClipArea> areas;
  bool transFlag = false;
};

/// Base of every page object. Fields are public and filled by the parser.
/// Colours and stroke parameters are resolved: the object's own attributes,
/// else its DrawParam (following Relative), else its layer's DrawParam, else
/// the defaults (black, 0.353 mm, butt caps, miter joins, limit 3.528).
class HOST_API OfdPageObject {
 public:
  enum class Type : uint8_t { kPageBlock, kPath, kText, kImage, kComposite };

  virtual ~OfdPageObject();
  OfdPageObject(const OfdPageObject&) = delete;
  OfdPageObject& operator=(const OfdPageObject&) = delete;

  /// The concrete class: kPageBlock is OfdPageBlock, kPath OfdPathObject,
  /// kText OfdTextObject, kImage OfdImageObject, kComposite OfdCompositeObject.
  Type GetType() const { return type_; }
  /// Ties the object to the page it is drawn on (a page block passes it on to
  /// everything inside). The page is not owned.
  virtual void SetPage(OfdPage* page);
  /// The page set by SetPage or the parser; null when none.
  OfdPage* GetPage() const { return page_; }

  uint32_t id = 0;
  /// Boundary (left, top, right, bottom) in the parent's coordinates; a null
  /// rectangle when the element gave none (page blocks and layers).
  GRect boundary;
  Matrix ctm;
  /// Opacity of the whole object, 0 .. 255.
  int alpha = 255;
  bool visible = true;
  /// BlendMode as written ("Normal", "Multiply", "Darken", ...); may be empty.
  ByteString blendMode;
  uint32_t drawParamId = 0;
  /// Line width, caps, joins, miter limit and dashes, in the object's units.
  StrokeStyle strokeStyle;
  OfdColor fillColor;
  OfdColor strokeColor;
  std::vector<OfdClip> clips;

 protected:
  explicit OfdPageObject(Type type) : type_(type) {}

 private:
  Type type_;
  OfdPage* page_ = nullptr;
};

/// A group of objects drawn in order: a layer of the page, a PageBlock, the
/// content of a template, an annotation's appearance or a composite unit.
class HOST_API OfdPageBlock : public OfdPageObject {
 public:
  /// kNone for a block that is not a layer; otherwise the layer's Type.
  enum class LayerType : uint8_t { kNone, kBody, kBackground, kForeground, kCustom };

  OfdPageBlock();
  ~OfdPageBlock() override;
  void SetPage(OfdPage* page) override;
  /// Number of objects in this block and all blocks below it (blocks counted).
  size_t CountObjects() const;

  LayerType layerType = LayerType::kNone;
  std::vector<std::unique_ptr<OfdPageObject>> children;
};

/// A path, in the object's own coordinates.
class HOST_API OfdPathObject : public OfdPageObject {
 public:
  OfdPathObject();
  ~OfdPathObject() override;

  bool fill = false;   // Fill attribute
  bool stroke = true;  // Stroke attribute
  FillRule rule = FillRule::kNonZero;
  Path path;
  /// How the AbbreviatedData parsed; on an error `path` holds what came before.
  PathDataResult::Code dataStatus = PathDataResult::kOk;
};

/// CGTransform: `codeCount` characters from `codePosition` (counted over all
/// TextCodes of the object) are drawn as the `glyphCount` glyph indices
/// `glyphs` of the object's embedded font (2 characters as 1 glyph, 1 as 2...).
struct HOST_API OfdCGTransform {
  uint32_t codePosition = 0;
  uint32_t codeCount = 1;
  uint32_t glyphCount = 1;
  std::vector<uint32_t> glyphs;
};

/// One TextCode: characters and where each one's baseline origin lies.
struct HOST_API OfdTextCode {
  WideString text;
  float x = 0, y = 0;            // X, Y (from the previous code's end when absent)
  std::vector<float> deltaX;     // expanded DeltaX ("g" runs written out)
  std::vector<float> deltaY;
  /// Origin of each character in the object's coordinates. Where DeltaX runs
  /// out before the text does, characters advance by 0: a renderer redoes those
  /// with LayoutCharacters and the font's advances. Where glyph groups join
  /// characters, deltas step by glyph and a joined character has the origin
  /// of the character before it.
  std::vector<float> xs, ys;
  /// Per character: the glyph index a CGTransform gives it, -1 (look the
  /// character up in the font) or kJoinedGlyph (the character is part of a
  /// group whose glyphs earlier characters draw). Glyph indices belong to the
  /// embedded font file; a renderer without that file ignores them.
  std::vector<int32_t> glyphs;
  static constexpr int32_t kJoinedGlyph = -2;
  /// Glyphs of a group beyond one per character, after the glyph of
  /// `character`, in order, each at its own origin (x, y).
  struct ExtraGlyph {
    uint32_t character = 0;
    uint32_t glyph = 0;
    float x = 0, y = 0;
  };
  std::vector<ExtraGlyph> extraGlyphs;
};

class HOST_API OfdTextObject : public OfdPageObject {
 public:
  OfdTextObject();
  ~OfdTextObject() override;

  uint32_t fontId = 0;
  const OfdFont* font = nullptr;  // resolved from fontId; null when dangling
  float size = 0;                 // font size in millimetres
  int weight = kFontWeightRegular;  // 0 .. 1000
  bool italic = false;
  float hScale = 1;               // horizontal glyph scale
  int readDirection = 0;          // 0, 90, 180, 270 degrees
  int charDirection = 0;          // 0, 90, 180, 270 degrees
  bool fill = true;
  bool stroke = false;
  std::vector<OfdCGTransform> cgTransforms;
  std::vector<OfdTextCode> textCodes;
};

/// An image: a MultiMedia resource drawn over the unit square under `ctm`.
class HOST_API OfdImageObject : public OfdPageObject {
 public:
  OfdImageObject();
  ~OfdImageObject() override;

  uint32_t resourceId = 0;
  /// Resolved from resourceId, or bound directly (seal appearances); not
  /// owned; null when dangling.
  const OfdMultiMedia* media = nullptr;
  uint32_t imageMaskId = 0;
  const OfdMultiMedia* imageMask = nullptr;
};

/// A reference to a CompositeGraphicUnit drawn under `ctm`.
class HOST_API OfdCompositeObject : public OfdPageObject {
 public:
  OfdCompositeObject();
  ~OfdCompositeObject() override;

  uint32_t resourceId = 0;
  /// Resolved from resourceId; null when dangling or when it would recurse.
  const OfdCompositeUnit* unit = nullptr;
};

}  // namespace host
