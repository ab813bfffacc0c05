// Fonts of one render: embedded font files are read and parsed once, system
// families resolved once. Internal to the renderer.
#pragma once

#include <map>
#include <memory>
#include <tuple>

#include "host/base/font.h"

namespace host {

class OfdFont;

class FontCache {
 public:
  FontCache();
  ~FontCache();
  FontCache(const FontCache&) = delete;
  FontCache& operator=(const FontCache&) = delete;

  /// The embedded font file of `font`, or null when it has none or the file
  /// does not load. Glyph indices of CGTransforms belong to this face only.
  Font* GetEmbeddedFont(const OfdFont* font);
  /// The installed family `font` names (FamilyName, then FontName, then
  /// look-alikes; see font_mgr.cpp), else a CJK fallback; a null `font` gives
  /// the fallback. Bold and italic the face lacks are synthesized. Null only
  /// when no font at all is installed. Owned by the cache.
  Font* GetSystemFont(const OfdFont* font, int weight, bool italic);
  /// The CJK fallback face: asked for characters the others lack.
  Font* GetFallbackFont();
  /// An installed face that has `ch` (fontconfig's choice, Chinese first);
  /// null when none has it.
  Font* GetFontForChar(char32_t ch, int weight, bool italic);

 private:
  using Key = std::tuple<const OfdFont*, int, bool, bool>;  // font, weight, italic, system
  std::map<Key, std::unique_ptr<Font>> fonts_;
  std::map<std::tuple<uint32_t, int, bool>, Font*> byChar_;
  std::map<std::tuple<const FaceSource*, int, bool>, std::unique_ptr<Font>> byFace_;
};

}  // namespace host
