// A face over a FreeType FT_Face: glyph lookup and metrics in thousandths of
// the font size.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/base/font.h"
#include "host/base/host_export.h"

struct FT_FaceRec_;
struct FT_LibraryRec_;

namespace host {

/// A FaceSource backed by FreeType. Glyph lookup and metrics use an FT_Face
/// of the host's FreeType library behind this face's own lock (making and
/// freeing it takes FtLock()). Drawing uses cairo font faces made on first
/// use and kept for this face's life, so that cairo never drops and remakes
/// them while other threads draw with them: one over a second FT_Face, in a
/// FreeType library of its own, that only cairo uses (cairo locks it while
/// it loads glyphs), and for vector output one cairo opens from the file.
/// All operations are thread-safe.
class HOST_API FtFaceSource final : public FaceSource {
 public:
  /// Opens face `faceIndex` of the font file at `path`. Null when the file
  /// cannot be read, FreeType refuses it, or the face has no scalable
  /// outlines. The face keeps `library` alive.
  static std::shared_ptr<const FtFaceSource> OpenFile(std::shared_ptr<FT_LibraryRec_> library,
                                                      const std::string& path, int faceIndex);
  /// Opens a face from font bytes, which are copied and kept with the face.
  /// Null on the same failures as OpenFile.
  static std::shared_ptr<const FtFaceSource> OpenMemory(std::shared_ptr<FT_LibraryRec_> library,
                                                        const uint8_t* data, size_t size,
                                                        int faceIndex);
  ~FtFaceSource() override;

  uint32_t GlyphIndex(uint32_t code) const override;
  int GlyphAdvance(uint32_t glyph) const override;
  int GlyphHeight(uint32_t glyph) const override;
  /// The drawing face; null when it cannot be made.
  _cairo_font_face* CairoFace() const override;
  /// A face cairo opens from the font's file itself, hinting and embedded
  /// bitmaps off: a PDF or SVG then embeds one subset per font file. Null
  /// for a face without a file. Its use is not thread-safe inside cairo:
  /// callers serialise it.
  _cairo_font_face* CairoFileFace() const;
  /// "Family Style (file#index)"; "<memory>" stands for the file of a memory face.
  std::string Describe() const override;

  /// Style flags FreeType reports for the face.
  bool IsBold() const { return bold_; }
  bool IsItalic() const { return italic_; }
  /// The file the face was opened from; empty for a memory face.
  const std::string& file() const { return file_; }
  int faceIndex() const { return faceIndex_; }

 private:
  struct FaceDeleter {
    void operator()(FT_FaceRec_* face) const;
  };
  struct CairoFaceDeleter {
    void operator()(_cairo_font_face* face) const;
  };
  using CairoFacePtr = std::unique_ptr<_cairo_font_face, CairoFaceDeleter>;
  using Bytes = std::shared_ptr<const std::vector<uint8_t>>;
  FtFaceSource(std::shared_ptr<FT_LibraryRec_> library, std::string file, Bytes bytes,
               int faceIndex);
  static std::shared_ptr<const FtFaceSource> Open(std::shared_ptr<FT_LibraryRec_> library,
                                                  std::string file, Bytes bytes, int faceIndex);
  int Thousandths(long fontUnits) const;

  // Destroyed in reverse order: the faces before their bytes, both before the library.
  std::shared_ptr<FT_LibraryRec_> library_;
  Bytes bytes_;  // null for a file face
  std::unique_ptr<FT_FaceRec_, FaceDeleter> face_;  // metrics, under mutex_
  mutable std::mutex mutex_;
  mutable std::once_flag drawOnce_, fileOnce_;
  mutable CairoFacePtr drawFace_, fileFace_;
  std::string file_;
  std::string family_;
  std::string style_;
  int faceIndex_ = 0;
  int unitsPerEm_ = 0;
  bool symbol_ = false;
  bool bold_ = false;
  bool italic_ = false;
};

}  // namespace host
