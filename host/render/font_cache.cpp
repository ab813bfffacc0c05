#include "host/render/font_cache.h"

#include <cctype>
#include <string>
#include <string_view>

#include "host/base/wide_string.h"
#include "host/ofd/ofd_resource.h"

namespace host {

namespace {

// Normalises the weight so that near values share one entry.
int Weight(const OfdFont* font, int weight) {
  if (font && font->bold) return 700;
  return weight >= 600 ? 700 : 400;
}

// An installed family that looks like a Latin family which is not installed
// (Courier New, Times New Roman, Arial...), or null.
const char* LatinLookAlike(std::string_view family) {
  std::string name;
  for (char c : family) {
    if (static_cast<unsigned char>(c) >= 0x80) return nullptr;
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  if (has("courier") || has("mono") || has("consol")) return "DejaVu Sans Mono";
  if (has("times") || has("roman") || has("serif") || has("georgia") || has("garamond"))
    return "DejaVu Serif";
  if (has("arial") || has("helvetica") || has("sans") || has("verdana") || has("calibri") ||
      has("tahoma"))
    return "DejaVu Sans";
  return nullptr;
}

std::unique_ptr<Font> LoadSystem(const OfdFont* font, int weight, bool italic) {
  auto result = std::make_unique<Font>(nullptr);
  WideString family, alt;
  if (font) {
    const std::string_view name =
        font->familyName.IsEmpty() ? font->fontName.view() : font->familyName.view();
    family = WideString::FromUtf8(name);
    const char* lookAlike = LatinLookAlike(name);
    alt = WideString::FromUtf8(lookAlike ? std::string_view(lookAlike) : font->fontName.view());
  }
  if (!result->LoadFont(family.c_str(), alt.c_str(), 3, weight, italic ? 1 : 0)) return nullptr;
  return result;
}

}  // namespace

FontCache::FontCache() = default;
FontCache::~FontCache() = default;

Font* FontCache::GetSystemFont(const OfdFont* font, int weight, bool italic) {
  weight = Weight(font, weight);
  italic = italic || (font && font->italic);
  const Key key{font, weight, italic, true};
  auto it = fonts_.find(key);
  if (it == fonts_.end()) it = fonts_.emplace(key, LoadSystem(font, weight, italic)).first;
  return it->second.get();
}

Font* FontCache::GetFallbackFont() {
  const Key key{nullptr, 400, false, true};
  auto it = fonts_.find(key);
  if (it == fonts_.end()) it = fonts_.emplace(key, LoadSystem(nullptr, 400, false)).first;
  return it->second.get();
}

Font* FontCache::GetFont(const OfdFont* font, int weight, bool italic) {
  if (!font || font->fontFile.IsEmpty()) return GetSystemFont(font, weight, italic);
  // The file is the face whatever the weight asked for.
  const Key key{font, 0, false, false};
  auto it = fonts_.find(key);
  if (it == fonts_.end()) {
    std::unique_ptr<Font> loaded;
    std::string bytes;
    if (font->LoadFontFile(bytes)) {
      loaded = std::make_unique<Font>(nullptr);
      if (!loaded->LoadFontFromMemory(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()))
        loaded.reset();
    }
    // A file that is missing or does not parse: the family it names.
    it = fonts_.emplace(key, std::move(loaded)).first;
  }
  return it->second ? it->second.get() : GetSystemFont(font, weight, italic);
}

}  // namespace host
