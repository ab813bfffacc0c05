#include "host/render/font_cache.h"

#include <cctype>
#include <string>
#include <string_view>

#include "host/base/units.h"
#include "host/base/wide_string.h"
#include "host/ofd/ofd_resource.h"

namespace host {

namespace {

// Normalises the weight so that near values share one entry.
int Weight(const OfdFont* font, int weight) {
  if (font && font->bold) return kFontWeightBold;
  return weight >= 600 ? kFontWeightBold : kFontWeightRegular;
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
  // A substitute without a bold or italic face of its own is drawn emboldened
  // or slanted rather than regular.
  result->SynthesizeMissingStyle(weight, italic);
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
  const Key key{nullptr, kFontWeightRegular, false, true};
  auto it = fonts_.find(key);
  if (it == fonts_.end()) it = fonts_.emplace(key, LoadSystem(nullptr, kFontWeightRegular, false)).first;
  return it->second.get();
}

Font* FontCache::GetEmbeddedFont(const OfdFont* font) {
  if (!font || font->fontFile.IsEmpty()) return nullptr;
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
    // A file that is missing or does not parse is remembered as such.
    it = fonts_.emplace(key, std::move(loaded)).first;
  }
  return it->second.get();
}

Font* FontCache::GetFontForChar(char32_t ch, int weight, bool italic) {
  weight = weight >= 600 ? kFontWeightBold : kFontWeightRegular;
  const auto key = std::make_tuple(static_cast<uint32_t>(ch), weight, italic);
  auto it = byChar_.find(key);
  if (it != byChar_.end()) return it->second;
  Font* result = nullptr;
  auto font = std::make_unique<Font>(nullptr);
  if (font->LoadFontForChar(ch, weight, italic ? 1 : 0)) {
    // Characters from the same face share one Font.
    const FaceSource* face = font->GetFaceHandle();
    const auto faceKey = std::make_tuple(face, weight, italic);
    auto found = byFace_.find(faceKey);
    if (found == byFace_.end()) {
      font->SynthesizeMissingStyle(weight, italic);
      found = byFace_.emplace(faceKey, std::move(font)).first;
    }
    result = found->second.get();
  }
  byChar_.emplace(key, result);
  return result;
}

}  // namespace host
