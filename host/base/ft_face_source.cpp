#include "host/base/ft_face_source.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

#include "host/base/font_mgr.h"

namespace host {

void FtFaceSource::FaceDeleter::operator()(FT_FaceRec_* face) const {
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  FT_Done_Face(face);
}

FtFaceSource::FtFaceSource(std::shared_ptr<FT_LibraryRec_> library, std::string file,
                           std::vector<uint8_t> bytes, int faceIndex)
    : library_(std::move(library)), bytes_(std::move(bytes)), file_(std::move(file)), faceIndex_(faceIndex) {}

FtFaceSource::~FtFaceSource() = default;

std::shared_ptr<const FtFaceSource> FtFaceSource::OpenFile(std::shared_ptr<FT_LibraryRec_> library,
                                                           const std::string& path, int faceIndex) {
  if (path.empty()) return nullptr;
  return Open(std::move(library), path, {}, faceIndex);
}

std::shared_ptr<const FtFaceSource> FtFaceSource::OpenMemory(std::shared_ptr<FT_LibraryRec_> library,
                                                             const uint8_t* data, size_t size,
                                                             int faceIndex) {
  if (!data || size == 0 || size > static_cast<size_t>(std::numeric_limits<FT_Long>::max())) return nullptr;
  return Open(std::move(library), {}, std::vector<uint8_t>(data, data + size), faceIndex);
}

std::shared_ptr<const FtFaceSource> FtFaceSource::Open(std::shared_ptr<FT_LibraryRec_> library,
                                                       std::string file, std::vector<uint8_t> bytes,
                                                       int faceIndex) {
  if (!library || faceIndex < 0) return nullptr;
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  std::shared_ptr<FtFaceSource> src(new FtFaceSource(library, std::move(file), std::move(bytes), faceIndex));
  FT_Face face = nullptr;
  const FT_Error err =
      src->bytes_.empty()
          ? FT_New_Face(library.get(), src->file_.c_str(), faceIndex, &face)
          : FT_New_Memory_Face(library.get(), src->bytes_.data(), static_cast<FT_Long>(src->bytes_.size()),
                               faceIndex, &face);
  if (err != 0 || !face) return nullptr;
  src->face_.reset(face);
  // Metrics in thousandths of the font size need outlines and a design grid.
  if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) return nullptr;
  src->unitsPerEm_ = face->units_per_EM;

  if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) != 0) {
    if (FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL) == 0) {
      src->symbol_ = true;
    } else if (face->num_charmaps > 0) {
      FT_Set_Charmap(face, face->charmaps[0]);
    }
  }
  src->family_ = face->family_name ? face->family_name : "";
  src->style_ = face->style_name ? face->style_name : "";
  src->bold_ = (face->style_flags & FT_STYLE_FLAG_BOLD) != 0;
  src->italic_ = (face->style_flags & FT_STYLE_FLAG_ITALIC) != 0;
  return src;
}

int FtFaceSource::Thousandths(long fontUnits) const {
  const double v = std::round(static_cast<double>(fontUnits) * 1000.0 / unitsPerEm_);
  return static_cast<int>(std::clamp(v, -1.0e9, 1.0e9));
}

uint32_t FtFaceSource::GlyphIndex(uint32_t code) const {
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  FT_UInt gi = FT_Get_Char_Index(face_.get(), code);
  // Symbol fonts map their codes into the private-use page U+F0xx.
  if (gi == 0 && symbol_ && code < 0x100) gi = FT_Get_Char_Index(face_.get(), 0xF000 + code);
  return gi;
}

int FtFaceSource::GlyphAdvance(uint32_t glyph) const {
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  if (glyph >= static_cast<uint32_t>(face_->num_glyphs)) return 0;
  FT_Fixed advance = 0;
  // Unscaled: the advance is in font units.
  if (FT_Get_Advance(face_.get(), glyph, FT_LOAD_NO_SCALE, &advance) != 0) return 0;
  return Thousandths(advance);
}

int FtFaceSource::GlyphHeight(uint32_t glyph) const {
  std::lock_guard<std::recursive_mutex> lock(FtLock());
  if (glyph >= static_cast<uint32_t>(face_->num_glyphs)) return 0;
  // The face is shared with the drawing device, which leaves its own glyph
  // transform (a rotation, for turned text) on it: measure without it, and
  // put it back for the device.
  FT_Matrix transform;
  FT_Vector delta;
  FT_Get_Transform(face_.get(), &transform, &delta);
  FT_Set_Transform(face_.get(), nullptr, nullptr);
  const FT_Error error = FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP);
  FT_Set_Transform(face_.get(), &transform, &delta);
  if (error != 0) return 0;
  const FT_GlyphSlot slot = face_->glyph;
  long yMax = slot->metrics.horiBearingY;
  if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
    FT_BBox box{};
    FT_Outline_Get_CBox(&slot->outline, &box);
    yMax = box.yMax;
  }
  return std::max(0, Thousandths(yMax));
}

void* FtFaceSource::FtFace() const { return face_.get(); }

std::string FtFaceSource::Describe() const {
  return family_ + " " + style_ + " (" + (file_.empty() ? std::string("<memory>") : file_) + "#" +
         std::to_string(faceIndex_) + ")";
}

}  // namespace host
