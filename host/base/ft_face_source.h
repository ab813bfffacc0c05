// A face over a FreeType FT_Face: glyph lookup and metrics in thousandths of
// the font size.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/base/font.h"
#include "host/base/host_export.h"

struct FT_FaceRec_;
struct FT_LibraryRec_;

namespace host {

/// A FaceSource backed by FreeType. Immutable after construction; every
/// FreeType call takes FtLock(), so all operations are thread-safe.
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
  /// The FT_Face; use it only while holding FtLock().
  void* FtFace() const override;
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
  FtFaceSource(std::shared_ptr<FT_LibraryRec_> library, std::string file, std::vector<uint8_t> bytes,
               int faceIndex);
  static std::shared_ptr<const FtFaceSource> Open(std::shared_ptr<FT_LibraryRec_> library,
                                                  std::string file, std::vector<uint8_t> bytes,
                                                  int faceIndex);
  int Thousandths(long fontUnits) const;

  // Destroyed in reverse order: the face before its bytes, both before the library.
  std::shared_ptr<FT_LibraryRec_> library_;
  std::vector<uint8_t> bytes_;
  std::unique_ptr<FT_FaceRec_, FaceDeleter> face_;
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
