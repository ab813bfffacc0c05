// Drawing devices.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/dib.h"
#include "host/base/geometry.h"
#include "host/base/gradient.h"
#include "host/base/host_export.h"
#include "host/base/matrix.h"
#include "host/base/path.h"

namespace host {

class Font;

/// A glyph of a font and where its origin lies, in the user units of the
/// matrix it is drawn under.
struct GlyphPosition {
  uint32_t glyph = 0;
  float x = 0;
  float y = 0;
};

/// An abstract drawing surface in device pixels (y down). Public calls keep
/// the invariants (balanced save/restore, null bitmaps ignored) and forward to
/// the protected virtual operations, whose first nine keep this order:
/// destructor, width, height, take bitmap, save, restore, clip to rectangle,
/// draw bitmap at point, draw text. A device is used by one thread at a time.
class HOST_API Device {
 public:
  virtual ~Device();
  virtual uint32_t GetWidth() const = 0;
  virtual uint32_t GetHeight() const = 0;
  /// The device's bitmap in kDibArgb32, straight alpha; from then on it belongs
  /// to the caller and survives the device. Null when there is none or it was
  /// already taken; later drawing on the device is ignored.
  virtual Dib* TakeBitmap() = 0;

  /// Pushes the clip and drawing state.
  void SaveState();
  /// Pops what SaveState pushed; ignored when nothing is saved.
  void RestoreState();
  /// Intersects the clip with a rectangle in device pixels.
  void ClipRect(const GRect& rect);
  /// Draws `dib` unscaled with its top-left corner at (x, y); false for a null
  /// bitmap or on failure.
  bool DrawBitmap(const Dib* dib, int x, int y);
  /// Draws `count` characters with `font` at `fontSize` user units; `matrix`
  /// maps the text's space (origin at the left end of the baseline, y down)
  /// to the device. `color` is 0xAARRGGBB. Non-zero on success; 0 for no
  /// font, no characters or a face that cannot be drawn.
  int DrawText(const char32_t* codes, int count, Font* font, const Matrix* matrix, uint32_t color,
               float fontSize);

  // Operations the page renderer needs beyond the nine.
  /// Fills `path` (user units) mapped by `matrix`.
  bool FillPath(const Path& path, const Matrix& matrix, uint32_t color, FillRule rule,
                BlendMode blend = BlendMode::kNormal);
  /// Strokes `path`; widths are in user units, scaled by `matrix`.
  bool StrokePath(const Path& path, const Matrix& matrix, uint32_t color, const StrokeStyle& style,
                  BlendMode blend = BlendMode::kNormal);
  /// Intersects the clip with `path` mapped by `matrix`.
  void ClipPath(const Path& path, const Matrix& matrix, FillRule rule);
  /// Draws `dib` so that its unit square (0,0)-(1,1) maps through `matrix`;
  /// `alpha` in 0..255 scales its opacity.
  bool DrawBitmapMatrix(const Dib* dib, const Matrix& matrix, int alpha = 255,
                        BlendMode blend = BlendMode::kNormal);
  /// Fills `path` mapped by `matrix` with `gradient` (whose geometry is in
  /// the same user units); `alpha` in 0..255 scales its opacity. False for an
  /// empty path, a gradient without stops, or on failure.
  bool FillPathGradient(const Path& path, const Matrix& matrix, const Gradient& gradient,
                        FillRule rule, int alpha = 255, BlendMode blend = BlendMode::kNormal);
  /// Draws glyphs of `font` by index. `glyphMatrix` maps glyph space (one em
  /// is 1, y down) to user space at each glyph's origin (it carries the font
  /// size, any horizontal scale and rotation); `matrix` maps user space to
  /// the device. Non-zero on success; 0 for no font, no glyphs or a face that
  /// cannot be drawn.
  int DrawGlyphs(const GlyphPosition* glyphs, int count, Font* font, const Matrix& matrix,
                 const Matrix& glyphMatrix, uint32_t color, BlendMode blend = BlendMode::kNormal);
  /// Number of unmatched SaveState calls.
  int SaveDepth() const { return saveDepth_; }
  /// True when drawing ends in pixels of the device's own (a bitmap), so
  /// that a picture need not be finer than them; false for output that keeps
  /// pictures at their own resolution (PDF, SVG).
  bool IsRaster() const { return OnIsRaster(); }

 protected:
  virtual void OnSaveState() = 0;
  virtual void OnRestoreState() = 0;
  virtual void OnClipRect(const GRect& rect) = 0;
  virtual bool OnDrawBitmap(const Dib& dib, int x, int y) = 0;
  virtual int OnDrawText(const char32_t* codes, int count, Font& font, const Matrix& matrix,
                         uint32_t color, float fontSize) = 0;
  virtual bool OnFillPath(const Path&, const Matrix&, uint32_t, FillRule, BlendMode) { return false; }
  virtual bool OnStrokePath(const Path&, const Matrix&, uint32_t, const StrokeStyle&, BlendMode) {
    return false;
  }
  virtual void OnClipPath(const Path&, const Matrix&, FillRule) {}
  virtual bool OnDrawBitmapMatrix(const Dib&, const Matrix&, int, BlendMode) { return false; }
  virtual bool OnFillPathGradient(const Path&, const Matrix&, const Gradient&, FillRule, int,
                                  BlendMode) {
    return false;
  }
  virtual int OnDrawGlyphs(const GlyphPosition*, int, Font&, const Matrix&, const Matrix&,
                           uint32_t, BlendMode) {
    return 0;
  }
  virtual bool OnIsRaster() const { return true; }

 private:
  int saveDepth_ = 0;
};

/// A device that draws with cairo into an image surface.
/// Makes a device over a new bitmap of `width` x `height` filled with
/// `background` (0xAARRGGBB; 0xFFFFFF is white with alpha 0). Only format
/// kDibArgb32 is supported. Null for a size that is zero, negative or too
/// large (see IsDibSizeAllowed), or another format.
HOST_API std::unique_ptr<Device> CreateBitmapDevice(int width, int height, DibFormat format,
                                                    uint32_t background);

/// CreateBitmapDevice with the signature of a device creator callback; the
/// user data is ignored. The caller owns the result.
HOST_API Device* BitmapDeviceCreator(int width, int height, DibFormat format, uint32_t background,
                                     void* userData);

}  // namespace host
