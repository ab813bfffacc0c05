#include "host/base/ft_face_source.h"

#include <cairo-ft.h>
#include <fontconfig/fontconfig.h>
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

void FtFaceSource::CairoFaceDeleter::operator()(_cairo_font_face* face) const {
  cairo_font_face_destroy(face);
}

FtFaceSource::FtFaceSource(std::shared_ptr<FT_LibraryRec_> library, std::string file, Bytes bytes,
                           int faceIndex)
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
  return Open(std::move(library), {}, std::make_shared<const std::vector<uint8_t>>(data, data + size),
              faceIndex);
}

namespace {

// Chooses the Unicode map, else the symbol map, else the first.
void SelectCharmap(FT_Face face) {
  if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) == 0 ||
      FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL) == 0)
    return;
  if (face->num_charmaps > 0) FT_Set_Charmap(face, face->charmaps[0]);
}

// Face `index` of the file, or of `bytes` when not null, in `library`.
FT_Face NewFace(FT_Library library, const std::string& file,
                const std::shared_ptr<const std::vector<uint8_t>>& bytes, int index) {
  FT_Face face = nullptr;
  const FT_Error err =
      bytes ? FT_New_Memory_Face(library, bytes->data(), static_cast<FT_Long>(bytes->size()), index, &face)
            : FT_New_Face(library, file.c_str(), index, &face);
  if (err != 0) return nullptr;
  SelectCharmap(face);
  return face;
}

// The FT_Face behind a drawing face, in a FreeType library of its own so that
// making and freeing it touches nothing another thread uses. cairo keeps
// font faces past our last reference and frees this with the font face.
struct DrawingFace {
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  std::shared_ptr<const std::vector<uint8_t>> bytes;
  ~DrawingFace() {
    if (face) FT_Done_Face(face);
    if (library) FT_Done_FreeType(library);
  }
};
const cairo_user_data_key_t kDrawingFaceKey{};

}  // namespace

std::shared_ptr<const FtFaceSource> FtFaceSource::Open(std::shared_ptr<FT_LibraryRec_> library,
                                                       std::string file, Bytes bytes, int faceIndex) {
  if (!library || faceIndex < 0) return nullptr;
  std::shared_ptr<FtFaceSource> src(new FtFaceSource(library, std::move(file), std::move(bytes), faceIndex));
  {
    std::lock_guard<std::recursive_mutex> lock(FtLock());
    src->face_.reset(NewFace(library.get(), src->file_, src->bytes_, faceIndex));
  }
  const FT_Face face = src->face_.get();
  if (!face) return nullptr;
  // Metrics in thousandths of the font size need outlines and a design grid.
  if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) return nullptr;
  src->unitsPerEm_ = face->units_per_EM;
  // A symbol map is only chosen when the face has no Unicode map.
  src->symbol_ = face->charmap && face->charmap->encoding == FT_ENCODING_MS_SYMBOL;
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
  std::lock_guard<std::mutex> lock(mutex_);
  FT_UInt gi = FT_Get_Char_Index(face_.get(), code);
  // Symbol fonts map their codes into the private-use page U+F0xx.
  if (gi == 0 && symbol_ && code < 0x100) gi = FT_Get_Char_Index(face_.get(), 0xF000 + code);
  return gi;
}

int FtFaceSource::GlyphAdvance(uint32_t glyph) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (glyph >= static_cast<uint32_t>(face_->num_glyphs)) return 0;
  FT_Fixed advance = 0;
  // Unscaled: the advance is in font units.
  if (FT_Get_Advance(face_.get(), glyph, FT_LOAD_NO_SCALE, &advance) != 0) return 0;
  return Thousandths(advance);
}

int FtFaceSource::GlyphHeight(uint32_t glyph) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (glyph >= static_cast<uint32_t>(face_->num_glyphs)) return 0;
  if (FT_Load_Glyph(face_.get(), glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP) != 0) return 0;
  const FT_GlyphSlot slot = face_->glyph;
  long yMax = slot->metrics.horiBearingY;
  if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
    FT_BBox box{};
    FT_Outline_Get_CBox(&slot->outline, &box);
    yMax = box.yMax;
  }
  return std::max(0, Thousandths(yMax));
}

_cairo_font_face* FtFaceSource::CairoFace() const {
  std::call_once(drawOnce_, [this] {
    auto owner = std::make_unique<DrawingFace>();
    if (FT_Init_FreeType(&owner->library) != 0) return;
    owner->bytes = bytes_;
    owner->face = NewFace(owner->library, file_, bytes_, faceIndex_);
    if (!owner->face) return;
    // Outlines only: hinting and embedded bitmaps look wrong on rotated text.
    CairoFacePtr face(
        cairo_ft_font_face_create_for_ft_face(owner->face, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP));
    if (cairo_font_face_status(face.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_font_face_set_user_data(face.get(), &kDrawingFaceKey, owner.get(), [](void* p) {
          delete static_cast<DrawingFace*>(p);
        }) != CAIRO_STATUS_SUCCESS)
      return;
    owner.release();
    drawFace_ = std::move(face);
  });
  return drawFace_.get();
}

_cairo_font_face* FtFaceSource::CairoFileFace() const {
  std::call_once(fileOnce_, [this] {
    if (file_.empty()) return;
    std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> pattern(FcPatternCreate(),
                                                                     FcPatternDestroy);
    if (!pattern ||
        !FcPatternAddString(pattern.get(), FC_FILE, reinterpret_cast<const FcChar8*>(file_.c_str())) ||
        !FcPatternAddInteger(pattern.get(), FC_INDEX, faceIndex_) ||
        !FcPatternAddBool(pattern.get(), FC_HINTING, FcFalse) ||
        !FcPatternAddBool(pattern.get(), FC_EMBEDDED_BITMAP, FcFalse)) {
      return;
    }
    CairoFacePtr face(cairo_ft_font_face_create_for_pattern(pattern.get()));
    if (cairo_font_face_status(face.get()) == CAIRO_STATUS_SUCCESS) fileFace_ = std::move(face);
  });
  return fileFace_.get();
}

std::string FtFaceSource::Describe() const {
  return family_ + " " + style_ + " (" + (file_.empty() ? std::string("<memory>") : file_) + "#" +
         std::to_string(faceIndex_) + ")";
}

}  // namespace host
