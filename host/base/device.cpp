#include "host/base/device.h"

#include "host/base/font.h"

namespace host {

Device::~Device() = default;

void Device::SaveState() {
  OnSaveState();
  ++saveDepth_;
}

void Device::RestoreState() {
  if (saveDepth_ == 0) return;
  --saveDepth_;
  OnRestoreState();
}

void Device::ClipRect(const GRect& rect) { OnClipRect(rect); }

bool Device::DrawBitmap(const Dib* dib, int x, int y) { return dib && OnDrawBitmap(*dib, x, y); }

int Device::DrawText(const char32_t* codes, int count, Font* font, const Matrix* matrix,
                     uint32_t color, float fontSize) {
  if (!codes || count <= 0 || !font || !font->GetFaceHandle()) return 0;
  return OnDrawText(codes, count, *font, matrix ? *matrix : Matrix(), color, fontSize);
}

bool Device::FillPath(const Path& path, const Matrix& matrix, uint32_t color, FillRule rule,
                      BlendMode blend) {
  return !path.IsEmpty() && OnFillPath(path, matrix, color, rule, blend);
}

bool Device::StrokePath(const Path& path, const Matrix& matrix, uint32_t color,
                        const StrokeStyle& style, BlendMode blend) {
  return !path.IsEmpty() && OnStrokePath(path, matrix, color, style, blend);
}

void Device::ClipPath(const Path& path, const Matrix& matrix, FillRule rule) {
  OnClipPath(path, matrix, rule);
}

bool Device::DrawBitmapMatrix(const Dib* dib, const Matrix& matrix, int alpha, BlendMode blend) {
  return dib && OnDrawBitmapMatrix(*dib, matrix, alpha, blend);
}

bool Device::FillPathGradient(const Path& path, const Matrix& matrix, const Gradient& gradient,
                              FillRule rule, int alpha, BlendMode blend) {
  return !path.IsEmpty() && !gradient.stops.empty() &&
         OnFillPathGradient(path, matrix, gradient, rule, alpha, blend);
}

int Device::DrawGlyphs(const GlyphPosition* glyphs, int count, Font* font, const Matrix& matrix,
                       const Matrix& glyphMatrix, uint32_t color, BlendMode blend) {
  if (!glyphs || count <= 0 || !font || !font->GetFaceHandle()) return 0;
  return OnDrawGlyphs(glyphs, count, *font, matrix, glyphMatrix, color, blend);
}

}  // namespace host
