#include "host/ofd/page_object_parser.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cmath>
#include <climits>
#include <cstring>
#include <string>

#include "host/base/units.h"
#include "host/base/wide_string.h"
#include "host/ofd/ofd_xml.h"
#include "host/ofd/path_data.h"
#include "host/ofd/text_code.h"

namespace host::ofdparse {

namespace {

using ofdxml::Attr;
using ofdxml::AttrBool;
using ofdxml::AttrFloat;
using ofdxml::AttrId;
using ofdxml::NameIs;

constexpr size_t kMaxDashes = 64;
constexpr int kMaxDrawParamChain = 16;

std::optional<LineJoin> ParseJoin(const char* v) {
  if (!v) return std::nullopt;
  if (std::strcmp(v, "Round") == 0) return LineJoin::kRound;
  if (std::strcmp(v, "Bevel") == 0) return LineJoin::kBevel;
  return LineJoin::kMiter;
}

std::optional<LineCap> ParseCap(const char* v) {
  if (!v) return std::nullopt;
  if (std::strcmp(v, "Round") == 0) return LineCap::kRound;
  if (std::strcmp(v, "Square") == 0) return LineCap::kSquare;
  return LineCap::kButt;
}

std::optional<std::vector<float>> ParseDashes(const char* v) {
  std::vector<float> dashes;
  if (!v || !ofdxml::ParseNumbers(v, dashes, kMaxDashes)) return std::nullopt;
  for (float d : dashes)
    if (d < 0) return std::nullopt;
  return dashes;
}

// Stroke attributes written directly on an object or a DrawParam.
void ApplyStrokeAttributes(const pugi::xml_node& node, StrokeStyle& style) {
  style.width = std::max(0.0f, AttrFloat(node, "LineWidth", style.width));
  if (auto join = ParseJoin(Attr(node, "Join"))) style.join = *join;
  if (auto cap = ParseCap(Attr(node, "Cap"))) style.cap = *cap;
  style.miterLimit = AttrFloat(node, "MiterLimit", style.miterLimit);
  style.dashOffset = AttrFloat(node, "DashOffset", style.dashOffset);
  if (auto dashes = ParseDashes(Attr(node, "DashPattern"))) style.dashes = std::move(*dashes);
}

// Black, or transparent when not `black`; marked as not set.
OfdColor DefaultColor(bool black) {
  OfdColor color = OfdColor::Rgb(0, 0, 0);
  color.isSet = false;
  if (!black) color.alpha = 0;
  return color;
}

template <typename T>
T* Adopt(std::unique_ptr<OfdPageObject>& holder, T* object) {
  holder.reset(object);
  return object;
}

std::unique_ptr<OfdPageObject> ParseObject(const pugi::xml_node& node,
                                           const GraphicState& inherited, Context& ctx);

// Attributes and children shared by every graphic unit; resolves its drawing
// state from `inherited`, its DrawParam and its own attributes.
void ParseCommon(const pugi::xml_node& node, OfdPageObject& object, const GraphicState& inherited,
                 Context& ctx) {
  object.SetPage(ctx.page);
  object.id = AttrId(node, "ID");
  if (const char* b = Attr(node, "Boundary")) ofdxml::ParseBox(b, object.boundary);
  if (const char* m = Attr(node, "CTM")) ofdxml::ParseMatrix(m, object.ctm);
  object.alpha = std::clamp(static_cast<int>(AttrFloat(node, "Alpha", 255)), 0, 255);
  object.visible = AttrBool(node, "Visible", true);
  if (const char* blend = Attr(node, "BlendMode")) object.blendMode = blend;
  object.drawParamId = AttrId(node, "DrawParam");

  GraphicState state = inherited;
  if (object.drawParamId) ApplyDrawParam(object.drawParamId, ctx.resources, state);
  ApplyStrokeAttributes(node, state.stroke);
  for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling()) {
    if (NameIs(c, "FillColor")) state.fill = ParseColor(c, ctx);
    if (NameIs(c, "StrokeColor")) state.strokeColor = ParseColor(c, ctx);
  }
  object.strokeStyle = std::move(state.stroke);
  object.fillColor = std::move(state.fill);
  object.strokeColor = std::move(state.strokeColor);
  // Defaults when nothing sets a colour: a path is filled with nothing and
  // stroked black; text is filled black and stroked with nothing.
  const bool isText = object.GetType() == OfdPageObject::Type::kText;
  if (!object.fillColor.isSet) object.fillColor = DefaultColor(isText);
  if (!object.strokeColor.isSet) object.strokeColor = DefaultColor(!isText);

  const pugi::xml_node clips = ofdxml::Child(node, "Clips");
  if (!clips || ctx.depth >= kMaxDepth) return;
  const bool clipsFlag = AttrBool(clips, "TransFlag", false);
  Context inner = ctx;
  ++inner.depth;
  for (pugi::xml_node clipNode = clips.first_child(); clipNode; clipNode = clipNode.next_sibling()) {
    if (!NameIs(clipNode, "Clip")) continue;
    OfdClip clip;
    clip.transFlag = AttrBool(clipNode, "TransFlag", clipsFlag);
    for (pugi::xml_node areaNode = clipNode.first_child(); areaNode;
         areaNode = areaNode.next_sibling()) {
      if (!NameIs(areaNode, "Area")) continue;
      OfdClipArea area;
      if (const char* m = Attr(areaNode, "CTM")) ofdxml::ParseMatrix(m, area.ctm);
      area.drawParamId = AttrId(areaNode, "DrawParam");
      for (pugi::xml_node shape = areaNode.first_child(); shape && !area.shape;
           shape = shape.next_sibling())
        if (NameIs(shape, "Path") || NameIs(shape, "Text"))
          area.shape = ParseObject(shape, GraphicState(), inner);
      if (area.shape) clip.areas.push_back(std::move(area));
    }
    if (!clip.areas.empty()) object.clips.push_back(std::move(clip));
  }
}

void ParsePath(const pugi::xml_node& node, OfdPathObject& path, Context& ctx) {
  path.fill = AttrBool(node, "Fill", false);
  path.stroke = AttrBool(node, "Stroke", true);
  if (const char* rule = Attr(node, "Rule"))
    path.rule = std::strcmp(rule, "Even-Odd") == 0 || std::strcmp(rule, "EvenOdd") == 0
                    ? FillRule::kEvenOdd
                    : FillRule::kNonZero;
  const pugi::xml_node data = ofdxml::Child(node, "AbbreviatedData");
  const size_t before = path.path.segments().size();
  const PathDataResult r =
      ParseAbbreviatedData(ofdxml::Text(data), path.path, std::min(ctx.budget->segments, kMaxPathSegments));
  path.dataStatus = r.code;
  const size_t used = path.path.segments().size() - before;
  ctx.budget->segments -= std::min(used, ctx.budget->segments);
}

// Glyph indices from the object's CGTransforms, by character position over all
// of its text codes. A group of m characters and n glyphs gives its
// characters one glyph each while both last; further characters are joined
// into the group (drawn by nothing), further glyphs follow the last one.
void ApplyGlyphs(OfdTextObject& text) {
  std::vector<size_t> starts;  // position of each code's first character
  size_t total = 0;
  for (OfdTextCode& code : text.textCodes) {
    starts.push_back(total);
    code.glyphs.assign(static_cast<size_t>(code.text.GetLength()), -1);
    code.extraGlyphs.clear();
    total += code.glyphs.size();
  }
  auto locate = [&](size_t pos) -> std::pair<OfdTextCode*, size_t> {
    const size_t c = static_cast<size_t>(std::upper_bound(starts.begin(), starts.end(), pos) -
                                         starts.begin()) - 1;
    return {&text.textCodes[c], pos - starts[c]};
  };
  for (const OfdCGTransform& t : text.cgTransforms) {
    const size_t codes = t.codeCount;
    const size_t glyphs = std::min<size_t>(t.glyphCount, t.glyphs.size());
    if (codes == 0 || glyphs == 0 || t.codePosition >= total) continue;
    const size_t last = std::min<size_t>(codes, total - t.codePosition);
    for (size_t k = 0; k < last; ++k) {
      auto [code, i] = locate(t.codePosition + k);
      code->glyphs[i] = k < glyphs ? static_cast<int32_t>(std::min<uint32_t>(t.glyphs[k], INT32_MAX))
                                   : OfdTextCode::kJoinedGlyph;
    }
    auto [code, i] = locate(t.codePosition + std::min(last, glyphs) - 1);
    for (size_t k = last; k < glyphs; ++k)
      code->extraGlyphs.push_back({static_cast<uint32_t>(i), t.glyphs[k]});
  }
  for (OfdTextCode& code : text.textCodes)
    std::stable_sort(code.extraGlyphs.begin(), code.extraGlyphs.end(),
                     [](const auto& a, const auto& b) { return a.character < b.character; });
}

// Where glyph groups join characters or add glyphs, DeltaX and DeltaY step
// from glyph to glyph, not from character to character. Lays the code out
// again by glyph: a joined character takes its group's place (the renderer
// puts it after the characters before it when it draws characters), an
// extra glyph the next place.
void PlaceGlyphGroups(OfdTextCode& code) {
  const size_t n = code.glyphs.size();
  size_t places = 0;
  bool grouped = !code.extraGlyphs.empty();
  for (size_t i = 0; i < n; ++i) {
    if (code.glyphs[i] == OfdTextCode::kJoinedGlyph) {
      grouped = true;
    } else {
      ++places;
    }
  }
  if (!grouped || places == 0) return;
  places += code.extraGlyphs.size();
  std::vector<float> xs, ys;
  LayoutCharacters(code.x, code.y, code.deltaX, code.deltaY, places, nullptr, nullptr, xs, ys);
  size_t place = 0, extra = 0;
  for (size_t i = 0; i < n; ++i) {
    if (code.glyphs[i] == OfdTextCode::kJoinedGlyph && i > 0) {
      code.xs[i] = code.xs[i - 1];
      code.ys[i] = code.ys[i - 1];
      continue;
    }
    code.xs[i] = xs[std::min(place, places - 1)];
    code.ys[i] = ys[std::min(place, places - 1)];
    ++place;
    for (; extra < code.extraGlyphs.size() && code.extraGlyphs[extra].character == i; ++extra) {
      code.extraGlyphs[extra].x = xs[std::min(place, places - 1)];
      code.extraGlyphs[extra].y = ys[std::min(place, places - 1)];
      ++place;
    }
  }
}

void ParseText(const pugi::xml_node& node, OfdTextObject& text, Context& ctx) {
  text.fontId = AttrId(node, "Font");
  text.font = ctx.resources ? ctx.resources->FindFont(text.fontId) : nullptr;
  text.size = AttrFloat(node, "Size", 0);
  text.weight =
      std::clamp(static_cast<int>(AttrFloat(node, "Weight", kFontWeightRegular)), 0, 1000);
  text.italic = AttrBool(node, "Italic", false);
  text.hScale = AttrFloat(node, "HScale", 1);
  text.readDirection = static_cast<int>(AttrFloat(node, "ReadDirection", 0));
  text.charDirection = static_cast<int>(AttrFloat(node, "CharDirection", 0));
  text.fill = AttrBool(node, "Fill", true);
  text.stroke = AttrBool(node, "Stroke", false);
  float penX = 0, penY = 0;
  for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling()) {
    if (NameIs(c, "CGTransform")) {
      OfdCGTransform t;
      t.codePosition = AttrId(c, "CodePosition");
      t.codeCount = Attr(c, "CodeCount") ? AttrId(c, "CodeCount") : 1;
      t.glyphCount = Attr(c, "GlyphCount") ? AttrId(c, "GlyphCount") : 1;
      std::vector<float> glyphs;
      ofdxml::ParseNumbers(ofdxml::Text(ofdxml::Child(c, "Glyphs")), glyphs, 65536);
      for (float g : glyphs)
        if (g >= 0 && g < 4294967296.0f) t.glyphs.push_back(static_cast<uint32_t>(g));
      text.cgTransforms.push_back(std::move(t));
      continue;
    }
    if (!NameIs(c, "TextCode")) continue;
    OfdTextCode code;
    // Line breaks and tabs around the characters come from how the XML was
    // laid out, not from the text: no TextCode can draw them.
    std::string_view chars = c.child_value();
    while (!chars.empty() && (chars.front() == '\n' || chars.front() == '\r' || chars.front() == '\t'))
      chars.remove_prefix(1);
    while (!chars.empty() && (chars.back() == '\n' || chars.back() == '\r' || chars.back() == '\t'))
      chars.remove_suffix(1);
    code.text = WideString::FromUtf8(chars);
    const size_t n = static_cast<size_t>(code.text.GetLength());
    if (n > ctx.budget->characters) break;
    ctx.budget->characters -= n;
    code.x = AttrFloat(c, "X", penX);
    code.y = AttrFloat(c, "Y", penY);
    // Deltas past the last character place nothing; keep no more than needed.
    // Glyph groups of more glyphs than characters take a delta per glyph.
    size_t extraGlyphs = 0;
    for (const OfdCGTransform& t : text.cgTransforms)
      extraGlyphs += t.glyphCount > t.codeCount ? std::min<size_t>(t.glyphCount - t.codeCount, n) : 0;
    const size_t maxDeltas = n > 0 ? n - 1 + std::min(extraGlyphs, n) : 0;
    if (const char* dx = Attr(c, "DeltaX")) ParseDeltaList(dx, maxDeltas, code.deltaX);
    if (const char* dy = Attr(c, "DeltaY")) ParseDeltaList(dy, maxDeltas, code.deltaY);
    LayoutCharacters(code.x, code.y, code.deltaX, code.deltaY, n, nullptr, nullptr, code.xs,
                     code.ys);
    if (n > 0) {
      penX = code.xs.back() + (code.deltaX.size() >= n ? code.deltaX[n - 1] : 0);
      penY = code.ys.back() + (code.deltaY.size() >= n ? code.deltaY[n - 1] : 0);
    }
    text.textCodes.push_back(std::move(code));
  }
  ApplyGlyphs(text);
  for (OfdTextCode& code : text.textCodes) PlaceGlyphGroups(code);
}

std::unique_ptr<OfdPageObject> ParseObject(const pugi::xml_node& node,
                                           const GraphicState& inherited, Context& ctx) {
  if (ctx.budget->objects == 0 || ctx.depth > kMaxDepth) return nullptr;
  const std::string_view name = ofdxml::LocalName(node.name());
  std::unique_ptr<OfdPageObject> holder;
  if (name == "PathObject" || name == "Path") {
    OfdPathObject* path = Adopt(holder, new OfdPathObject());
    ParseCommon(node, *path, inherited, ctx);
    ParsePath(node, *path, ctx);
  } else if (name == "TextObject" || name == "Text") {
    OfdTextObject* text = Adopt(holder, new OfdTextObject());
    ParseCommon(node, *text, inherited, ctx);
    ParseText(node, *text, ctx);
  } else if (name == "ImageObject") {
    OfdImageObject* image = Adopt(holder, new OfdImageObject());
    ParseCommon(node, *image, inherited, ctx);
    image->resourceId = AttrId(node, "ResourceID");
    image->imageMaskId = AttrId(node, "ImageMask");
    if (ctx.resources) {
      image->media = ctx.resources->FindMultiMedia(image->resourceId);
      if (image->imageMaskId) image->imageMask = ctx.resources->FindMultiMedia(image->imageMaskId);
    }
  } else if (name == "CompositeObject") {
    OfdCompositeObject* composite = Adopt(holder, new OfdCompositeObject());
    ParseCommon(node, *composite, inherited, ctx);
    composite->resourceId = AttrId(node, "ResourceID");
    if (ctx.resources) composite->unit = ctx.resources->FindCompositeUnit(composite->resourceId);
  } else if (name == "PageBlock") {
    OfdPageBlock* block = Adopt(holder, new OfdPageBlock());
    ParseCommon(node, *block, inherited, ctx);
    // A block hands on what it inherited, not the defaults ParseCommon filled in.
    if (ctx.depth < kMaxDepth) {
      Context inner = ctx;
      ++inner.depth;
      ParseBlockContent(node, *block, inherited, inner);
    }
  } else {
    return nullptr;
  }
  --ctx.budget->objects;
  return holder;
}

}  // namespace

OfdDrawParam ParseDrawParam(const pugi::xml_node& node, Context& ctx) {
  OfdDrawParam p;
  p.id = AttrId(node, "ID");
  p.relative = AttrId(node, "Relative");
  if (Attr(node, "LineWidth")) p.lineWidth = std::max(0.0f, AttrFloat(node, "LineWidth", 0.353f));
  p.join = ParseJoin(Attr(node, "Join"));
  p.cap = ParseCap(Attr(node, "Cap"));
  if (Attr(node, "MiterLimit")) p.miterLimit = AttrFloat(node, "MiterLimit", 3.528f);
  if (Attr(node, "DashOffset")) p.dashOffset = AttrFloat(node, "DashOffset", 0);
  p.dashPattern = ParseDashes(Attr(node, "DashPattern"));
  for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling()) {
    if (NameIs(c, "FillColor")) p.fillColor = ParseColor(c, ctx);
    if (NameIs(c, "StrokeColor")) p.strokeColor = ParseColor(c, ctx);
  }
  return p;
}

void ApplyDrawParam(uint32_t id, const OfdResourceContainer* resources, GraphicState& state) {
  if (!resources || !id) return;
  // Collect the chain first, then apply from the farthest ancestor inward;
  // a loop in Relative ends the chain.
  const OfdDrawParam* chain[kMaxDrawParamChain];
  int n = 0;
  for (const OfdDrawParam* p = resources->FindDrawParam(id); p && n < kMaxDrawParamChain;
       p = p->relative ? resources->FindDrawParam(p->relative) : nullptr) {
    if (std::find(chain, chain + n, p) != chain + n) break;
    chain[n++] = p;
  }
  while (n-- > 0) {
    const OfdDrawParam& p = *chain[n];
    if (p.lineWidth) state.stroke.width = *p.lineWidth;
    if (p.join) state.stroke.join = *p.join;
    if (p.cap) state.stroke.cap = *p.cap;
    if (p.miterLimit) state.stroke.miterLimit = *p.miterLimit;
    if (p.dashOffset) state.stroke.dashOffset = *p.dashOffset;
    if (p.dashPattern) state.stroke.dashes = *p.dashPattern;
    if (p.fillColor.isSet) state.fill = p.fillColor;
    if (p.strokeColor.isSet) state.strokeColor = p.strokeColor;
    ResolveColorSpace(state.fill, resources);
    ResolveColorSpace(state.strokeColor, resources);
  }
}

void ParseBlockContent(const pugi::xml_node& node, OfdPageBlock& block,
                       const GraphicState& inherited, Context& ctx) {
  if (ctx.depth > kMaxDepth) return;
  for (pugi::xml_node c = node.first_child(); c && ctx.budget->objects > 0; c = c.next_sibling()) {
    if (c.type() != pugi::node_element) continue;
    if (auto object = ParseObject(c, inherited, ctx)) block.children.push_back(std::move(object));
  }
}

void ParseContent(const pugi::xml_node& content, OfdPageBlock& out, Context& ctx) {
  for (pugi::xml_node c = content.first_child(); c && ctx.budget->objects > 0; c = c.next_sibling()) {
    if (!NameIs(c, "Layer")) continue;
    auto layer = std::make_unique<OfdPageBlock>();
    layer->SetPage(ctx.page);
    layer->id = AttrId(c, "ID");
    layer->drawParamId = AttrId(c, "DrawParam");
    const char* type = Attr(c, "Type");
    const std::string_view t = type ? type : "Body";
    layer->layerType = t == "Background"   ? OfdPageBlock::LayerType::kBackground
                       : t == "Foreground" ? OfdPageBlock::LayerType::kForeground
                       : t == "Custom"     ? OfdPageBlock::LayerType::kCustom
                                           : OfdPageBlock::LayerType::kBody;
    GraphicState state;
    ApplyDrawParam(layer->drawParamId, ctx.resources, state);
    layer->strokeStyle = state.stroke;
    layer->fillColor = state.fill;
    layer->strokeColor = state.strokeColor;
    --ctx.budget->objects;
    Context inner = ctx;
    ++inner.depth;
    ParseBlockContent(c, *layer, state, inner);
    out.children.push_back(std::move(layer));
  }
}

}  // namespace host::ofdparse
