#include "host/base/font_mgr.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <exception>
#include <future>
#include <tuple>
#include <utility>

#include "host/base/ft_face_source.h"
#include "host/base/memory_face_cache.h"
#include "host/base/units.h"

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

// Characters whose face is remembered.
constexpr size_t kMaxCharEntries = 16384;

// Embedded fonts above this size are refused rather than copied.
constexpr size_t kMaxFontBytes = size_t{256} << 20;

// Font substitution: family names seen in real documents, and the installed
// families drawn in their place, best first. A name is compared after
// Normalise() (ASCII lower-case, blanks removed). A substitute is taken only
// when it is installed (and, for Chinese names, has Chinese glyphs); when
// none is, the CJK fallback below answers. Names not in the table still say
// which look they want (LookOf), e.g. 方正楷体_GBK or 华文中宋.
//
//  look        names                               substitutes, best first
//  ----------  ----------------------------------  ------------------------------------------
//  Song        宋体 SimSun NSimSun 新宋体 Song      AR PL UMing CN, Noto Serif CJK SC,
//                                                  Source Han Serif SC
//  SongProp    华文宋体 STSong 华文中宋 STZhongsong  Noto Serif CJK SC, Source Han Serif SC,
//                                                  AR PL UMing CN
//  Kai         楷体 KaiTi 楷体_GB2312 STKaiti ...   AR PL UKai CN, AR PL KaitiM GB
//  FangSong    仿宋 FangSong 仿宋_GB2312 ...        AR PL UMing CN, Noto Serif CJK SC
//  Hei         黑体 SimHei STHeiti 华文黑体          Noto Sans Mono CJK SC, WenQuanYi Zen Hei Mono,
//                                                  Noto Sans CJK SC, WenQuanYi Zen Hei
//  HeiProp     微软雅黑 Microsoft YaHei             Noto Sans CJK SC, Source Han Sans SC,
//                                                  WenQuanYi Zen Hei
//
// Latin families (Courier New, Times New Roman, Arial...) are not in this
// table: a lone Latin name must still give a face with Chinese glyphs. The
// page renderer passes a Latin look-alike as the alternative family instead
// (font_cache.cpp: Courier -> DejaVu Sans Mono, Times -> DejaVu Serif, Arial
// -> DejaVu Sans) and asks a CJK face for the characters it lacks.
//
// Why: SimSun, KaiTi, FangSong and SimHei draw Latin letters and digits at
// half an em, and documents place them by those widths (DeltaX). AR PL UMing
// and UKai, WenQuanYi Zen Hei Mono and Noto Sans Mono CJK keep that width,
// so long account numbers and IDs do not run into each other; the Noto CJK
// faces have proportional, wider Latin and come second (the text painter
// narrows any glyph wider than its place). A bold request takes the first
// substitute with a real bold face (Noto) before one drawn emboldened.
// UMing, a Ming face, is the nearest installed look to both SimSun and FangSong; UKai is a Kai face. The YaHei
// and STSong families are proportional themselves, so the proportional Noto
// faces come first there.
enum class Look { kNone, kSong, kSongProp, kKai, kFangSong, kHei, kHeiProp };

struct Alias {
  const char* name;
  Look look;
};
constexpr Alias kAliases[] = {
    {"宋体", Look::kSong},           {"simsun", Look::kSong},           {"nsimsun", Look::kSong},
    {"新宋体", Look::kSong},         {"song", Look::kSong},             {"宋体_gb2312", Look::kSong},
    {"华文宋体", Look::kSongProp},   {"stsong", Look::kSongProp},       {"华文中宋", Look::kSongProp},
    {"stzhongsong", Look::kSongProp},
    {"楷体", Look::kKai},            {"kaiti", Look::kKai},             {"楷体_gb2312", Look::kKai},
    {"kaiti_gb2312", Look::kKai},    {"stkaiti", Look::kKai},           {"华文楷体", Look::kKai},
    {"仿宋", Look::kFangSong},       {"fangsong", Look::kFangSong},     {"仿宋_gb2312", Look::kFangSong},
    {"fangsong_gb2312", Look::kFangSong}, {"stfangsong", Look::kFangSong}, {"华文仿宋", Look::kFangSong},
    {"黑体", Look::kHei},            {"simhei", Look::kHei},            {"stheiti", Look::kHei},
    {"华文黑体", Look::kHei},        {"微软雅黑", Look::kHeiProp},      {"microsoftyahei", Look::kHeiProp},
};

// Installed look-alikes per look, best first (see the table above).
std::vector<const char*> LookAlikes(Look look) {
  switch (look) {
    case Look::kSong: return {"AR PL UMing CN", "Noto Serif CJK SC", "Source Han Serif SC"};
    case Look::kSongProp: return {"Noto Serif CJK SC", "Source Han Serif SC", "AR PL UMing CN"};
    case Look::kKai: return {"AR PL UKai CN", "AR PL KaitiM GB"};
    case Look::kFangSong: return {"AR PL UMing CN", "Noto Serif CJK SC"};
    case Look::kHei:
      return {"Noto Sans Mono CJK SC", "WenQuanYi Zen Hei Mono", "Noto Sans CJK SC",
              "WenQuanYi Zen Hei"};
    case Look::kHeiProp: return {"Noto Sans CJK SC", "Source Han Sans SC", "WenQuanYi Zen Hei"};
    case Look::kNone: break;
  }
  return {};
}

// Asked, in this order, when nothing above answers: faces with broad Chinese
// coverage, a sans first (legible at small sizes).
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

int ClampWeight(int weight) { return weight <= 0 ? kFontWeightRegular : std::clamp(weight, 100, 1000); }

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
  // Faces found for single characters; a null value records a character no
  // installed face has.
  std::map<std::tuple<uint32_t, int, bool>, std::shared_ptr<const FaceSource>> byChar;
  // A null value records a family that resolves to nothing without fallback.
  std::map<std::tuple<std::string, int, bool>, std::shared_ptr<const FaceSource>> byRequest;
  MemoryFaceCache memoryFaces;  // its own lock

  // The configuration being loaded by Prepare; guarded by `mu`.
  std::future<FcConfig*> loading;

  ~Impl() {
    if (loading.valid()) config.reset(loading.get());
  }

  FcConfig* Config() {
    // Loading the configuration reads every font directory's cache: done
    // on first use only, or started earlier by Prepare.
    if (!configTried) {
      configTried = true;
      config.reset(loading.valid() ? loading.get() : FcInitLoadConfigAndFonts());
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
    // A bold request prefers a look-alike with a real bold face.
    const Look look = LookOf(Normalise(family));
    for (bool needBold : {weight >= 600, false}) {
      for (const char* alike : LookAlikes(look)) {
        auto face = Installed(alike, weight, italic, true);
        if (face && (!needBold || static_cast<const FtFaceSource&>(*face).IsBold())) return face;
      }
    }
    return nullptr;
  }

  std::shared_ptr<const FaceSource> ResolveChar(uint32_t code, int weight, bool italic) {
    FcConfig* cfg = Config();
    FcPatternPtr pat(FcPatternCreate());
    std::unique_ptr<FcCharSet, FcCharSetDeleter> cs(FcCharSetCreate());
    if (!cfg || !pat || !cs || !FcCharSetAddChar(cs.get(), code)) return nullptr;
    FcPatternAddCharSet(pat.get(), FC_CHARSET, cs.get());
    FcPatternAddString(pat.get(), FC_LANG, reinterpret_cast<const FcChar8*>("zh-cn"));
    FcPatternAddInteger(pat.get(), FC_WEIGHT, FcWeightFromOpenType(weight));
    FcPatternAddInteger(pat.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pat.get(), FC_SCALABLE, FcTrue);
    if (!FcConfigSubstitute(cfg, pat.get(), FcMatchPattern)) return nullptr;
    FcDefaultSubstitute(pat.get());
    FcResult result = FcResultNoMatch;
    std::unique_ptr<FcFontSet, void (*)(FcFontSet*)> set(FcFontSort(cfg, pat.get(), FcTrue, nullptr, &result),
                                                         FcFontSetDestroy);
    if (!set) return nullptr;
    // Sorted best first; the first face that really has the glyph.
    for (int i = 0; i < set->nfont && i < 64; ++i) {
      FcCharSet* has = nullptr;
      if (FcPatternGetCharSet(set->fonts[i], FC_CHARSET, 0, &has) != FcResultMatch || !has ||
          !FcCharSetHasChar(has, code)) {
        continue;
      }
      auto face = Load(set->fonts[i]);
      if (face && face->GlyphIndex(code) != 0) return face;
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

void FontMgr::Prepare() {
  std::lock_guard<std::mutex> lock(impl_->mu);
  if (impl_->configTried || impl_->loading.valid()) return;
  try {
    impl_->loading = std::async(std::launch::async, [] { return FcInitLoadConfigAndFonts(); });
  } catch (const std::exception&) {
    // No thread to spare: the first lookup loads it.
  }
}

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

std::shared_ptr<const FaceSource> FontMgr::FindFaceForChar(uint32_t code, int weight, bool italic) {
  // Characters outside Unicode and surrogates have no face.
  if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return nullptr;
  Impl& d = *impl_;
  std::lock_guard<std::mutex> lock(d.mu);
  if (!d.library) return nullptr;
  weight = ClampWeight(weight) >= 600 ? kFontWeightBold : kFontWeightRegular;
  const auto key = std::make_tuple(code, weight, italic);
  if (auto it = d.byChar.find(key); it != d.byChar.end()) return it->second;
  std::shared_ptr<const FaceSource> face = d.ResolveChar(code, weight, italic);
  // A document with very many distinct rare characters stops growing the cache.
  if (d.byChar.size() < kMaxCharEntries) d.byChar.emplace(key, face);
  return face;
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
