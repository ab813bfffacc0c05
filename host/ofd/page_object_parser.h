// Builds page object trees from the XML of pages, templates, annotations and
// composite units. Internal to the host platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/base/path.h"
#include "host/ofd/ofd_color.h"
#include "host/ofd/ofd_page_object.h"
#include "host/ofd/ofd_resource.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace host::ofdparse {

/// Nesting of blocks (PageBlock in PageBlock, composite units, clips) beyond
/// which content is dropped.
inline constexpr int kMaxDepth = 64;
/// Limits for one page (content, templates and annotations together) or for
/// the composite units of one resource container.
inline constexpr size_t kMaxObjects = 2000000;
inline constexpr size_t kMaxSegments = 16000000;
inline constexpr size_t kMaxCharacters = 8000000;

/// What may still be made; objects past a spent budget are dropped.
struct Budget {
  size_t objects = kMaxObjects;
  size_t segments = kMaxSegments;
  size_t characters = kMaxCharacters;
};

/// The drawing state a layer hands to its objects.
struct GraphicState {
  StrokeStyle stroke;
  OfdColor fill;
  OfdColor strokeColor;
};

struct Context {
  const OfdResourceContainer* resources = nullptr;  // IDs resolve here
  OfdPage* page = nullptr;                          // set on every object made
  Budget* budget = nullptr;                         // never null while parsing
  int depth = 0;
};

/// A FillColor/StrokeColor/Color element (with any shading or pattern);
/// in color_parser.cpp.
OfdColor ParseColor(const pugi::xml_node& node, Context& ctx);
/// Points `color` at its ColorSpace resource, unless already resolved.
void ResolveColorSpace(OfdColor& color, const OfdResourceContainer* resources);
/// A DrawParam resource element; colour space references stay unresolved.
OfdDrawParam ParseDrawParam(const pugi::xml_node& node, Context& ctx);
/// Applies DrawParam `id`, after the chain it is Relative to, onto `state`.
void ApplyDrawParam(uint32_t id, const OfdResourceContainer* resources, GraphicState& state);
/// Appends the objects among the children of `node` to `block`.
void ParseBlockContent(const pugi::xml_node& node, OfdPageBlock& block,
                       const GraphicState& inherited, Context& ctx);
/// The Layers of a page's or template's Content element, appended to `out`.
void ParseContent(const pugi::xml_node& content, OfdPageBlock& out, Context& ctx);

}  // namespace host::ofdparse
