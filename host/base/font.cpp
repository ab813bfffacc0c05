#include "host/base/font.h"

#include "host/base/app_context.h"
#include "host/base/font_mgr.h"
#include "host/base/ft_face_source.h"
#include "host/base/wide_string.h"

namespace host {

FaceSource::~FaceSource() = default;

Font::Font(FontMgr* mgr) : mgr_(mgr) {
  if (!mgr_) {
    AppContext* context = AppContext::Get();
    mgr_ = context ? context->GetFontMgr() : nullptr;
  }
}

Font::~Font() = default;

int Font::LoadFont(const char32_t* family, const char32_t* altFamily, int /*flags*/, int weight, int italic) {
  if (!mgr_) return 0;
  const std::string name = WideString(family).ToUtf8();
  const std::string alt = WideString(altFamily).ToUtf8();
  const bool slanted = italic != 0;
  // The named family, then the alternative, and only then the CJK fallback.
  std::shared_ptr<const FaceSource> face = mgr_->FindExactFace(name, weight, slanted);
  if (!face && !alt.empty()) face = mgr_->FindExactFace(alt, weight, slanted);
  if (!face) face = mgr_->FindFace(name, weight, slanted);
  if (!face) return 0;
  face_ = std::move(face);
  return 1;
}

int Font::LoadFontForChar(uint32_t code, int weight, int italic) {
  if (!mgr_) return 0;
  std::shared_ptr<const FaceSource> face = mgr_->FindFaceForChar(code, weight, italic != 0);
  if (!face) return 0;
  face_ = std::move(face);
  return 1;
}

void Font::SynthesizeMissingStyle(int weight, bool italic) {
  const auto* ft = dynamic_cast<const FtFaceSource*>(face_.get());
  syntheticBold_ = ft && weight >= 600 && !ft->IsBold();
  syntheticItalic_ = ft && italic && !ft->IsItalic();
}

int Font::LoadFontFromMemory(const uint8_t* data, size_t size, int faceIndex) {
  if (!mgr_) return 0;
  std::shared_ptr<const FaceSource> face = mgr_->LoadMemoryFace(data, size, faceIndex);
  if (!face) return 0;
  face_ = std::move(face);
  return 1;
}

uint32_t Font::GetGlyphIndex(uint32_t code) const { return face_ ? face_->GlyphIndex(code) : 0; }

int Font::GetGlyphAdvance(uint32_t glyph) const { return face_ ? face_->GlyphAdvance(glyph) : 0; }

int Font::GetGlyphHeight(uint32_t glyph) const { return face_ ? face_->GlyphHeight(glyph) : 0; }

}  // namespace host
