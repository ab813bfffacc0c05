// The drawing operations of the cairo-backed devices: the bitmap device and
// the vector (PDF, SVG) device share them and differ only in the surface
// they draw onto and what they hand back.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/device.h"

namespace host {

/// A Device over a cairo surface that a subclass makes. Colours and bitmaps
/// come in with straight alpha and are premultiplied as they enter cairo.
/// Once the canvas is gone (a taken bitmap, a finished document) every
/// drawing call is ignored (false / 0). Used by one thread at a time.
class CairoDevice : public Device {
 public:
  ~CairoDevice() override;

  uint32_t GetWidth() const override { return static_cast<uint32_t>(width_); }
  uint32_t GetHeight() const override { return static_cast<uint32_t>(height_); }

  /// The cairo surface, context and font options (cairo_canvas.h).
  struct Canvas;

 protected:
  CairoDevice(int width, int height, std::unique_ptr<Canvas> canvas);

  void OnSaveState() override;
  void OnRestoreState() override;
  void OnClipRect(const GRect& rect) override;
  bool OnDrawBitmap(const Dib& dib, int x, int y) override;
  int OnDrawText(const char32_t* codes, int count, Font& font, const Matrix& matrix, uint32_t color,
                 float fontSize) override;
  bool OnFillPath(const Path& path, const Matrix& matrix, uint32_t color, FillRule rule,
                  BlendMode blend) override;
  bool OnStrokePath(const Path& path, const Matrix& matrix, uint32_t color,
                    const StrokeStyle& style, BlendMode blend) override;
  void OnClipPath(const Path& path, const Matrix& matrix, FillRule rule) override;
  bool OnDrawBitmapMatrix(const Dib& dib, const Matrix& matrix, int alpha,
                          BlendMode blend) override;
  bool OnFillPathGradient(const Path& path, const Matrix& matrix, const Gradient& gradient,
                          FillRule rule, int alpha, BlendMode blend) override;
  int OnDrawGlyphs(const GlyphPosition* glyphs, int count, Font& font, const Matrix& matrix,
                   const Matrix& glyphMatrix, uint32_t color, BlendMode blend) override;

  int width_;
  int height_;
  std::unique_ptr<Canvas> canvas_;  // null once the device is done
};

}  // namespace host
