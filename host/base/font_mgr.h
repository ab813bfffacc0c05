// The process-wide font manager: family resolution, face cache, and glyph
// operations on face handles.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/base/font.h"
#include "host/base/host_export.h"

namespace host {

/// Resolves family names to installed files (fontconfig), keeps loaded faces
/// for the life of the process, and answers glyph questions about a face
/// handle. All operations are thread-safe.
class HOST_API FontMgr {
 public:
  FontMgr();
  ~FontMgr();
  FontMgr(const FontMgr&) = delete;
  FontMgr& operator=(const FontMgr&) = delete;

  /// Starts loading the font configuration (fontconfig reading its caches,
  /// some milliseconds) on a thread of its own, unless it is loaded or
  /// loading, so that it overlaps other work such as opening a document.
  /// The first lookup waits for it. Without this call that lookup loads it.
  void Prepare();

  /// Glyph index of `code` in the face; 0 when it has none or `face` is null.
  uint32_t GetGlyphIndex(FaceHandle face, uint32_t code) const;
  /// Advance in thousandths of the font size; 0 for a null face.
  int GetGlyphAdvance(FaceHandle face, uint32_t glyph) const;
  /// Height above the baseline in thousandths of the font size; 0 for a null face.
  int GetGlyphHeight(FaceHandle face, uint32_t glyph) const;

  /// The face for a UTF-8 family name, weight and italic flag. Chinese
  /// family names (宋体, 黑体, 楷体, 仿宋, SimSun, SimHei, KaiTi, FangSong, ...)
  /// map to installed look-alikes; unknown names fall back to a CJK face.
  /// Null only when no font is installed at all. Faces are cached.
  std::shared_ptr<const FaceSource> FindFace(const std::string& family, int weight, bool italic);
  /// An installed face with a glyph for the character `code`, Chinese faces
  /// first, at `weight` and `italic` where there is a choice; null when no
  /// installed face has one. Cached.
  std::shared_ptr<const FaceSource> FindFaceForChar(uint32_t code, int weight, bool italic);
  /// A face from font bytes (copied); null when FreeType refuses them. The
  /// same bytes give the same face while a MemoryFaceCache keeps it.
  std::shared_ptr<const FaceSource> LoadMemoryFace(const uint8_t* data, size_t size, int faceIndex);

  /// Registers a face under a family name; FindFace returns it for that name
  /// (case-insensitive) whatever the weight. Tests use it for faces with fixed
  /// metrics.
  void RegisterFace(const std::string& family, std::shared_ptr<const FaceSource> face);
  void UnregisterFace(const std::string& family);

  /// The path fontconfig resolves a family to (empty when none); diagnostics.
  std::string ResolveFile(const std::string& family, int weight, bool italic, int* faceIndex);

 private:
  friend class Font;
  friend class AppContext;
  // FindFace without the CJK fallback: null when `family` is neither
  // registered, installed nor a known look-alike.
  std::shared_ptr<const FaceSource> FindExactFace(const std::string& family, int weight, bool italic);
  std::shared_ptr<const FaceSource> Find(const std::string& family, int weight, bool italic, bool fallback);
  // False when FreeType could not be initialised.
  bool Ready() const;

  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// Serialises making and freeing FT_Faces, which change the FreeType library
/// they share; each face is otherwise guarded by its owner.
HOST_API std::recursive_mutex& FtLock();

}  // namespace host
