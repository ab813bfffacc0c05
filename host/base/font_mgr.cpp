#include "host/base/font_mgr.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "host/base/ft_face_source.h"
#include "host/base/memory_face_cache.h"

namespace host {

std::recursive_mutex& FtLock() {
  static std::recursive_mutex mutex;
  return mutex;
}

namespace {

struct FcConfigDeleter {
  void operator()(FcConfig* c) const { FcConfigDestroy(c); }
};
struct FcPatternDeleter {
  void operator()(FcPattern* p) const { FcPatternDestroy(p); }
};
struct FcCharSetDeleter {
  void operator()(FcCharSet* c) const { FcCharSetDestroy(c); }
};
using FcPatternPtr = std::unique_ptr<FcPattern, FcPatternDeleter>;

// A character every Chinese face has; a face without it would draw boxes.
constexpr FcChar32 kCjkProbe = 0x4E2D;  // 中

// Embedded fonts above this size are refused rather than copied.
constexpr size_t kMaxFontBytes = size_t{256} << 20;

// The look a Chinese family name asks for.
enum class Look { kNone, kKai, kSong, kFangSong, kHei };

// Names as Normalise() leaves them: ASCII lower-case, blanks removed.
struct Alias {
  const char* name;
  Look look;
};
constexpr Alias kAliases[] = {
    {"楷体", Look::kKai},          {"kaiti", Look::kKai},           {"楷体_gb2312", Look::kKai},
    {"kaiti_gb2312", Look::kKai},  {"stkaiti", Look::kKai},         {"华文楷体", Look::kKai},
    {"宋体", Look::kSong},         {"simsun", Look::kSong},         {"nsimsun", Look::kSong},
    {"新宋体", Look::kSong},       {"stsong", Look::kSong},         {"华文宋体", Look::kSong},
    {"song", Look::kSong},         {"仿宋", Look::kFangSong},       {"fangsong", Look::kFangSong},
    {"仿宋_gb2312", Look::kFangSong}, {"fangsong_gb2312", Look::kFangSong},
    {"stfangsong", Look::kFangSong},  {"华文仿宋", Look::kFangSong}, {"黑体", Look::kHei},
    {"simhei", Look::kHei},        {"微软雅黑", Look::kHei},        {"microsoftyahei", Look::kHei},
    {"stheiti", Look::kHei},       {"华文黑体", Look::kHei},
};

// Free look-alikes per look, best first.
std::vector<const char*> LookAlikes(Look look) {
  switch (look) {
    case Look::kKai: return {"AR PL UKai CN", "AR PL KaitiM GB"};
    case Look::kSong: return {"Noto Serif CJK SC", "Source Han Serif SC", "AR PL UMing CN"};
    case Look::kFangSong: return {"AR PL UMing CN", "Noto Serif CJK SC"};
    case Look::kHei: return {"Noto Sans CJK SC", "Source Han Sans SC", "WenQuanYi Zen Hei"};
    case Look::kNone: break;
  }
  return {};
}

constexpr const char* kCjkFallbacks[] = {"WenQuanYi Zen Hei", "Noto Sans CJK SC", "Noto Serif CJK SC",
                                         "AR PL UMing CN"};

std::string Normalise(const std::string& name) {
  std::string out;
  for (char c : name) {
    if (c == ' ' || c == '\t') continue;
    out.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
  }
  return out;
}

Look LookOf(const std::string& norm) {
  for (const Alias& a : kAliases) {
    if (norm == a.name) return a.look;
  }
  // Names not in the table (方正楷体_GBK, 华文中宋, ...) still say which look they want.
  auto has = [&](const char* s) { return norm.find(s) != std::string::npos; };
  if (has("仿宋") || has("fangsong")) return Look::kFangSong;
  if (has("楷") || has("kai")) return Look::kKai;
  if (has("宋") || has("song") || has("ming")) return Look::kSong;
  if (has("黑") || has("hei")) return Look::kHei;
  return Look::kNone;
}

bool IsNonAscii(const std::string& s) {
  return std::any_of(s.begin(), s.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

int ClampWeight(int weight) { return weight <= 0 ? 400 : std::clamp(weight, 100, 1000); }

bool HasCjk(FcPattern* m) {
  FcCharSet* cs = nullptr;
  return FcPatternGetCharSet(m, FC_CHARSET, 0, &cs) == FcResultMatch && cs && FcCharSetHasChar(cs, kCjkProbe);
}

// True when `family` is one of the matched font's own names (not a substitute).
bool HasFamily(FcPattern* m, const std::string& family) {
  const std::string want = Normalise(family);
  FcChar8* name = nullptr;
  for (int i = 0; FcPatternGetString(m, FC_FAMILY, i, &name) == FcResultMatch; ++i) {
    if (name && Normalise(reinterpret_cast<const char*>(name)) == want) return true;
  }
  return false;
}

}  // namespace

struct FontMgr::Impl {
  std::shared_ptr<FT_LibraryRec_> library;
  std::mutex mu;  // guards everything below
  std::unique_ptr<FcConfig, FcConfigDeleter> config;
  bool configTried = false;
  std::map<std::string, std::shared_ptr<const FaceSource>> registered;
  std::map<std::pair<std::string, int>, std::shared_ptr<const FaceSource>> byFile;
  // A null value records a family that resolves to nothing without fallback.
  std::map<std::tuple<std::string, int, bool>, std::shared_ptr<const FaceSource>> byRequest;
  MemoryFaceCache memoryFaces;  // its own lock

  FcConfig* Config() {
    // Loading the configuration scans font directories: do it on first use only.
    if (!configTried) {
      configTried = true;
      config.reset(FcInitLoadConfigAndFonts());
    }
    return config.get();
  }

  FcPatternPtr Match(const std::string& family, int weight, bool italic, bool wantCjk) {
    FcConfig* cfg = Config();
    FcPatternPtr pat(FcPatternCreate());
    if (!cfg || !pat) return nullptr;
    if (!family.empty()) FcPatternAddString(pat.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddInteger(pat.get(), FC_WEIGHT, FcWeightFromOpenType(weight));
    FcPatternAddInteger(pat.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pat.get(), FC_SCALABLE, FcTrue);
    if (wantCjk) {
      std::unique_ptr<FcCharSet, FcCharSetDeleter> cs(FcCharSetCreate());
      if (cs && FcCharSetAddChar(cs.get(), kCjkProbe)) FcPatternAddCharSet(pat.get(), FC_CHARSET, cs.get());
      FcPatternAddString(pat.get(), FC_LANG, reinterpret_cast<const FcChar8*>("zh-cn"));
    }
    if (!FcConfigSubstitute(cfg, pat.get(), FcMatchPattern)) return nullptr;
    FcDefaultSubstitute(pat.get());
    FcResult result = FcResultNoMatch;
    return FcPatternPtr(FcFontMatch(cfg, pat.get(), &result));
  }

  std::shared_ptr<const FaceSource> Load(FcPattern* m) {
    FcChar8* file = nullptr;
    int index = 0;
    if (FcPatternGetString(m, FC_FILE, 0, &file) != FcResultMatch || !file) return nullptr;
    FcPatternGetInteger(m, FC_INDEX, 0, &index);
    auto key = std::make_pair(std::string(reinterpret_cast<const char*>(file)), index);
    auto it = byFile.find(key);
    if (it != byFile.end()) return it->second;
    std::shared_ptr<const FaceSource> face = FtFaceSource::OpenFile(library, key.first, index);
    if (face) byFile.emplace(std::move(key), face);
    return face;
  }

  // The installed face whose own name is `family`.
  std::shared_ptr<const FaceSource> Installed(const std::string& family, int weight, bool italic, bool needCjk) {
    FcPatternPtr m = Match(family, weight, italic, false);
    if (!m || !HasFamily(m.get(), family) || (needCjk && !HasCjk(m.get()))) return nullptr;
    return Load(m.get());
  }

  std::shared_ptr<const FaceSource> ResolveExact(const std::string& family, int weight, bool italic) {
    // A Chinese name must give a face with Chinese glyphs.
    if (auto face = Installed(family, weight, italic, IsNonAscii(family))) return face;
    for (const char* alike : LookAlikes(LookOf(Normalise(family)))) {
      if (auto face = Installed(alike, weight, italic, true)) return face;
    }
    return nullptr;
  }

  std::shared_ptr<const FaceSource> ResolveFallback(int weight, bool italic) {
    // A bold request prefers a fallback that has a real bold face.
    for (bool needBold : {weight >= 600, false}) {
      for (const char* family : kCjkFallbacks) {
        auto face = Installed(family, weight, italic, true);
        if (face && (!needBold || static_cast<const FtFaceSource&>(*face).IsBold())) return face;
      }
    }
    // Any face with Chinese glyphs, then any face at all.
    for (bool wantCjk : {true, false}) {
      FcPatternPtr m = Match("", weight, italic, wantCjk);
      if (m && (!wantCjk || HasCjk(m.get()))) {
        if (auto face = Load(m.get())) return face;
      }
    }
    return nullptr;
  }
};

FontMgr::FontMgr() : impl_(std::make_unique<Impl>()) {
  // Taking FtLock first makes its mutex, so it outlives this manager at exit.
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  FT_Library library = nullptr;
  if (FT_Init_FreeType(&library) == 0) {
    impl_->library.reset(library, [](FT_Library lib) {
      std::lock_guard<std::recursive_mutex> l(FtLock());
      FT_Done_FreeType(lib);
    });
  }
}

FontMgr::~FontMgr() = default;

bool FontMgr::Ready() const { return impl_->library != nullptr; }

uint32_t FontMgr::GetGlyphIndex(FaceHandle face, uint32_t code) const {
  return face ? face->GlyphIndex(code) : 0;
}

int FontMgr::GetGlyphAdvance(FaceHandle face, uint32_t glyph) const {
  return face ? face->GlyphAdvance(glyph) : 0;
}

int FontMgr::GetGlyphHeight(FaceHandle face, uint32_t glyph) const {
  return face ? face->GlyphHeight(glyph) : 0;
}

std::shared_ptr<const FaceSource> FontMgr::FindFace(const std::string& family, int weight, bool italic) {
  return Find(family, weight, italic, true);
}

std::shared_ptr<const FaceSource> FontMgr::FindExactFace(const std::string& family, int weight, bool italic) {
  return Find(family, weight, italic, false);
}

std::shared_ptr<const FaceSource> FontMgr::Find(const std::string& family, int weight, bool italic,
                                                bool fallback) {
  Impl& d = *impl_;
  std::lock_guard<std::mutex> lock(d.mu);
  const std::string norm = Normalise(family);
  if (auto it = d.registered.find(norm); it != d.registered.end()) return it->second;
  if (!d.library) return nullptr;
  weight = ClampWeight(weight);
  if (!norm.empty()) {
    auto key = std::make_tuple(norm, weight, italic);
    auto it = d.byRequest.find(key);
    if (it == d.byRequest.end()) it = d.byRequest.emplace(key, d.ResolveExact(family, weight, italic)).first;
    if (it->second || !fallback) return it->second;
  }
  if (!fallback) return nullptr;
  // The empty name keys the fallback face.
  auto key = std::make_tuple(std::string(), weight, italic);
  auto it = d.byRequest.find(key);
  if (it == d.byRequest.end()) it = d.byRequest.emplace(key, d.ResolveFallback(weight, italic)).first;
  return it->second;
}

std::shared_ptr<const FaceSource> FontMgr::LoadMemoryFace(const uint8_t* data, size_t size, int faceIndex) {
  if (!impl_->library || size > kMaxFontBytes) return nullptr;
  if (std::shared_ptr<const FaceSource> kept = impl_->memoryFaces.Find(data, size, faceIndex))
    return kept;
  std::shared_ptr<const FaceSource> face = FtFaceSource::OpenMemory(impl_->library, data, size, faceIndex);
  impl_->memoryFaces.Add(data, size, faceIndex, face);
  return face;
}

void FontMgr::RegisterFace(const std::string& family, std::shared_ptr<const FaceSource> face) {
  const std::string norm = Normalise(family);
  if (norm.empty() || !face) return;
  std::lock_guard<std::mutex> lock(impl_->mu);
  impl_->registered[norm] = std::move(face);
}

void FontMgr::UnregisterFace(const std::string& family) {
  std::lock_guard<std::mutex> lock(impl_->mu);
  impl_->registered.erase(Normalise(family));
}

std::string FontMgr::ResolveFile(const std::string& family, int weight, bool italic, int* faceIndex) {
  auto face = std::dynamic_pointer_cast<const FtFaceSource>(FindFace(family, weight, italic));
  if (faceIndex) *faceIndex = face ? face->faceIndex() : 0;
  return face ? face->file() : std::string();
}

}  // namespace host
