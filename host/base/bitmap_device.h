// The bitmap device: draws with cairo into a premultiplied ARGB32 image
// surface and hands the result back as a straight-alpha kDibArgb32 Dib.
// Internal to the host platform; others make one with CreateBitmapDevice.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/device.h"

namespace host {

/// A Device over a cairo image surface. Colours and bitmaps come in with
/// straight alpha; they are premultiplied when they enter the surface and
/// unpremultiplied once, in TakeBitmap. After TakeBitmap every drawing call
/// is ignored (false / 0). Used by one thread at a time; text drawing
/// serialises on FtLock().
class BitmapDevice final : public Device {
 public:
  /// A device of `width` x `height` filled with `background` (0xAARRGGBB,
  /// straight), or null for a size IsDibSizeAllowed refuses or when cairo
  /// cannot make the surface.
  static std::unique_ptr<BitmapDevice> Create(int width, int height, uint32_t background);
  ~BitmapDevice() override;

  uint32_t GetWidth() const override { return static_cast<uint32_t>(width_); }
  uint32_t GetHeight() const override { return static_cast<uint32_t>(height_); }
  /// The picture as kDibArgb32 with straight alpha; pixels nothing covered
  /// (alpha 0) keep the background's RGB. The caller owns it. Null the
  /// second time.
  Dib* TakeBitmap() override;

 protected:
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

 private:
  struct Canvas;  // the cairo surface and context; null once the bitmap is taken

  BitmapDevice(int width, int height, uint32_t background, std::unique_ptr<Canvas> canvas);

  int width_;
  int height_;
  uint32_t background_;
  std::unique_ptr<Canvas> canvas_;
};

}  // namespace host
