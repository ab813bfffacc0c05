// Colours of page objects and draw parameters: solid colours, axial and
// radial shadings, and tiling patterns.
#include "host/ofd/page_object_parser.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

#include "host/ofd/ofd_xml.h"

namespace host::ofdparse {

namespace {

using ofdxml::Attr;
using ofdxml::AttrFloat;
using ofdxml::AttrId;
using ofdxml::NameIs;

// Colour values: numbers, or "#hh" hex components; a single "#rrggbb" is
// taken as three components.
std::vector<float> ParseColorValue(std::string_view s) {
  std::vector<float> out;
  while (out.size() < 16) {
    ofdxml::SkipSeparators(s);
    if (s.empty()) break;
    if (s.front() == '#') {
      size_t n = 1;
      while (n < s.size() && std::isxdigit(static_cast<unsigned char>(s[n]))) ++n;
      const std::string_view hex = s.substr(1, n - 1);
      s.remove_prefix(n);
      if (hex.empty() || hex.size() > 8) return {};
      const uint32_t v = static_cast<uint32_t>(std::stoul(std::string(hex), nullptr, 16));
      if (hex.size() == 6) {
        out.push_back(static_cast<float>((v >> 16) & 0xFF));
        out.push_back(static_cast<float>((v >> 8) & 0xFF));
        out.push_back(static_cast<float>(v & 0xFF));
      } else {
        out.push_back(static_cast<float>(v));
      }
      continue;
    }
    float v;
    if (!ofdxml::ScanNumber(s, v)) return {};
    out.push_back(v);
  }
  return out;
}

bool ParsePoint(const char* text, float& x, float& y) {
  std::vector<float> v;
  if (!text || !ofdxml::ParseNumbers(text, v, 2) || v.size() != 2) return false;
  x = v[0];
  y = v[1];
  return true;
}

std::shared_ptr<OfdShading> ParseShading(const pugi::xml_node& node, bool radial, Context& ctx) {
  auto shd = std::make_shared<OfdShading>();
  shd->kind = radial ? OfdShading::Kind::kRadial : OfdShading::Kind::kAxial;
  if (const char* map = Attr(node, "MapType")) {
    if (std::strcmp(map, "Repeat") == 0) shd->mapType = OfdShading::MapType::kRepeat;
    if (std::strcmp(map, "Reflect") == 0) shd->mapType = OfdShading::MapType::kReflect;
  }
  shd->mapUnit = AttrFloat(node, "MapUnit", 0);
  shd->extend = static_cast<OfdShading::Extend>(
      std::clamp(static_cast<int>(AttrFloat(node, "Extend", 0)), 0, 3));
  ParsePoint(Attr(node, "StartPoint"), shd->startX, shd->startY);
  ParsePoint(Attr(node, "EndPoint"), shd->endX, shd->endY);
  if (radial) {
    shd->startRadius = AttrFloat(node, "StartRadius", 0);
    shd->endRadius = AttrFloat(node, "EndRadius", 0);
    shd->eccentricity = AttrFloat(node, "Eccentricity", 0);
    shd->angle = AttrFloat(node, "Angle", 0);
  }
  for (pugi::xml_node seg = node.first_child(); seg; seg = seg.next_sibling()) {
    if (!NameIs(seg, "Segment") || shd->segments.size() >= 256) continue;
    OfdShadingSegment s;
    s.position = AttrFloat(seg, "Position", -1);
    const pugi::xml_node color = ofdxml::Child(seg, "Color");
    if (color) {
      // A stop's colour is solid: its own shadings are not followed.
      s.color.values = ParseColorValue(Attr(color, "Value") ? Attr(color, "Value") : "");
      s.color.colorSpaceId = AttrId(color, "ColorSpace");
      s.color.alpha = std::clamp(static_cast<int>(AttrFloat(color, "Alpha", 255)), 0, 255);
      s.color.isSet = true;
      ResolveColorSpace(s.color, ctx.resources);
    }
    shd->segments.push_back(std::move(s));
  }
  return shd;
}

std::shared_ptr<OfdPattern> ParsePattern(const pugi::xml_node& node, Context& ctx) {
  auto pattern = std::make_shared<OfdPattern>();
  pattern->width = AttrFloat(node, "Width", 0);
  pattern->height = AttrFloat(node, "Height", 0);
  pattern->xStep = AttrFloat(node, "XStep", 0);
  pattern->yStep = AttrFloat(node, "YStep", 0);
  if (const char* m = Attr(node, "ReflectMethod")) {
    using Reflect = OfdPattern::ReflectMethod;
    const std::string_view v(m);
    pattern->reflectMethod = v == "Column"         ? Reflect::kColumn
                             : v == "Row"          ? Reflect::kRow
                             : v == "RowAndColumn" ? Reflect::kRowAndColumn
                                                   : Reflect::kNormal;
  }
  if (const char* r = Attr(node, "RelativeTo")) pattern->relativeToObject = std::strcmp(r, "Page") != 0;
  if (const char* m = Attr(node, "CTM")) ofdxml::ParseMatrix(m, pattern->ctm);
  auto cell = std::make_shared<OfdPageBlock>();
  if (ctx.depth < kMaxDepth) {
    Context inner = ctx;
    ++inner.depth;
    ParseBlockContent(ofdxml::Child(node, "CellContent"), *cell, GraphicState(), inner);
  }
  pattern->cell = std::move(cell);
  return pattern;
}

}  // namespace

void ResolveColorSpace(OfdColor& color, const OfdResourceContainer* resources) {
  if (!color.colorSpace && color.colorSpaceId && resources)
    color.colorSpace = resources->FindColorSpace(color.colorSpaceId);
}

OfdColor ParseColor(const pugi::xml_node& node, Context& ctx) {
  OfdColor color;
  color.isSet = true;
  if (const char* v = Attr(node, "Value")) color.values = ParseColorValue(v);
  if (const char* index = Attr(node, "Index")) {
    uint32_t i = 0;
    if (ofdxml::ParseId(index, i) && i < 65536) color.index = static_cast<int>(i);
  }
  color.colorSpaceId = AttrId(node, "ColorSpace");
  color.alpha = std::clamp(static_cast<int>(AttrFloat(node, "Alpha", 255)), 0, 255);
  ResolveColorSpace(color, ctx.resources);
  if (ctx.depth >= kMaxDepth) return color;
  for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling()) {
    if (NameIs(c, "AxialShd")) color.shading = ParseShading(c, false, ctx);
    if (NameIs(c, "RadialShd")) color.shading = ParseShading(c, true, ctx);
    if (NameIs(c, "Pattern")) color.pattern = ParsePattern(c, ctx);
  }
  return color;
}

}  // namespace host::ofdparse
