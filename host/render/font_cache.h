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

  /// The font to draw `font` with: its embedded file when it has one that
  /// loads, else the installed family it names (FamilyName, then FontName),
  /// else a CJK fallback. A null `font` gives the fallback. Null only when
  /// no font at all is installed. Owned by the cache.
  Font* GetFont(const OfdFont* font, int weight, bool italic);
  /// The installed family `font` names (never its embedded file): asked for
  /// characters an embedded subset lacks. Null as for GetFont.
  Font* GetSystemFont(const OfdFont* font, int weight, bool italic);
  /// The CJK fallback face: asked for characters the others lack.
  Font* GetFallbackFont();

 private:
  using Key = std::tuple<const OfdFont*, int, bool, bool>;  // font, weight, italic, system
  std::map<Key, std::unique_ptr<Font>> fonts_;
};

}  // namespace host
