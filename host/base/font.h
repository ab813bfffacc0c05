// Fonts: a loaded face with glyph lookup and metrics.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/base/host_export.h"

struct _cairo_font_face;

namespace host {

class FontMgr;
class FaceSource;

/// Opaque handle of a loaded face, as the FontMgr glyph operations take it.
using FaceHandle = const FaceSource*;

/// A font object. Made empty, then loaded with LoadFont. A Font is used by one
/// thread at a time; the faces behind it are shared and thread-safe.
class HOST_API Font {
 public:
  /// `mgr` may be null: the process-wide manager of AppContext::Get() is used.
  explicit Font(FontMgr* mgr);
  virtual ~Font();
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  /// Loads the best installed face for `family` (or, when that resolves to
  /// nothing, `altFamily`) at `weight` (400 regular, 700 bold) and `italic`
  /// (non-zero: italic). `flags` is reserved (callers pass 3). Unknown
  /// families fall back to a CJK face. Returns non-zero on success, 0 when no
  /// face at all can be loaded. Null names are taken as empty.
  int LoadFont(const char32_t* family, const char32_t* altFamily, int flags, int weight, int italic);
  /// Loads an installed face that has a glyph for `code`, preferring Chinese
  /// faces at `weight` and `italic`; 0 when no installed face has one.
  int LoadFontForChar(uint32_t code, int weight, int italic);
  /// Asks drawing to make up what the loaded face lacks of `weight` (600 and
  /// above: bold, by widening outlines) and `italic` (by slanting). A face
  /// that has the style itself is drawn as it is.
  void SynthesizeMissingStyle(int weight, bool italic);
  /// Whether drawing should embolden or slant this font's glyphs.
  bool SyntheticBold() const { return syntheticBold_; }
  bool SyntheticItalic() const { return syntheticItalic_; }
  /// Loads a font file held in memory (TrueType, OpenType, CFF, Type 1);
  /// non-zero on success. The bytes are copied.
  int LoadFontFromMemory(const uint8_t* data, size_t size, int faceIndex = 0);

  /// The handle of the loaded face, or null before a successful load.
  FaceHandle GetFaceHandle() const { return face_.get(); }
  /// Glyph index of a character code; 0 when the face has no glyph for it.
  virtual uint32_t GetGlyphIndex(uint32_t code) const;
  /// Advance width of a glyph in thousandths of the font size; 0 for unknown.
  virtual int GetGlyphAdvance(uint32_t glyph) const;
  /// Height of a glyph above the baseline (the top of its outline) in
  /// thousandths of the font size, never negative.
  virtual int GetGlyphHeight(uint32_t glyph) const;

  /// The shared face; kept alive by whoever holds it.
  std::shared_ptr<const FaceSource> face() const { return face_; }

 protected:
  FontMgr* mgr_;
  std::shared_ptr<const FaceSource> face_;
  bool syntheticBold_ = false;
  bool syntheticItalic_ = false;
};

/// A loaded face: glyph lookup and metrics, plus what a rasteriser needs.
/// Implementations are immutable after construction and thread-safe.
class HOST_API FaceSource {
 public:
  virtual ~FaceSource();
  virtual uint32_t GlyphIndex(uint32_t code) const = 0;
  /// Thousandths of the font size.
  virtual int GlyphAdvance(uint32_t glyph) const = 0;
  /// Top of the glyph above the baseline, thousandths of the font size, >= 0.
  virtual int GlyphHeight(uint32_t glyph) const = 0;
  /// The cairo font face to draw with, kept while this face lives and safe
  /// to draw with from several threads; null for a face that has no outlines
  /// (a synthetic face with metrics only).
  virtual _cairo_font_face* CairoFace() const { return nullptr; }
  /// Family and file the face was loaded from (diagnostics).
  virtual std::string Describe() const = 0;
};

}  // namespace host
