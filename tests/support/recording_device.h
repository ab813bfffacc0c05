// A device that draws nothing and records every call that reaches it, in
// order and with its arguments, so that tests can check exactly what a
// drawing routine asked of a device.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/base/device.h"

namespace testing_support {

/// One recorded device call. Only the fields of its kind are set.
struct DeviceCall {
  enum Kind {
    kTakeBitmap,
    kSave,
    kRestore,
    kClipRect,
    kDrawBitmap,
    kDrawText,
    kFillPath,
    kStrokePath,
    kClipPath,
    kDrawBitmapMatrix,
    kFillPathGradient,
    kDrawGlyphs,
  };
  Kind kind = kSave;
  host::GRect rect{};              // kClipRect
  const host::Dib* dib = nullptr;  // kDrawBitmap, kDrawBitmapMatrix (borrowed; may dangle later)
  int dibWidth = 0;                // kDrawBitmap, kDrawBitmapMatrix
  int dibHeight = 0;
  int x = 0;  // kDrawBitmap
  int y = 0;
  std::u32string codes{};      // kDrawText: the characters passed
  int count = 0;               // kDrawText, kDrawGlyphs
  host::Font* font = nullptr;  // kDrawText, kDrawGlyphs (borrowed; may dangle later)
  const void* face = nullptr;  // kDrawText, kDrawGlyphs: the font's face at the call
  host::Matrix matrix{};       // every kind that takes a matrix
  uint32_t color = 0;          // kDrawText, kFillPath, kStrokePath, kDrawGlyphs
  float fontSize = 0;          // kDrawText
  int alpha = 0;               // kDrawBitmapMatrix, kFillPathGradient
};

/// Name of a call kind ("save", "restore", "clip", "bitmap", "text", ...).
const char* DeviceCallName(DeviceCall::Kind kind);

/// A host::Device of a given size that records its calls. Calls that the
/// Device base class filters out (a null bitmap, no characters, a font
/// without a face, a restore without a save) never reach it and are not
/// recorded. Drawing calls return `drawResult` (non-zero: success).
/// TakeBitmap returns a new transparent kDibArgb32 bitmap of the device's
/// size the first time (owned by the caller) and null afterwards. Used by one
/// thread at a time.
class RecordingDevice : public host::Device {
 public:
  explicit RecordingDevice(uint32_t width = 100, uint32_t height = 100, int drawResult = 1)
      : width_(width), height_(height), drawResult_(drawResult) {}

  uint32_t GetWidth() const override { return width_; }
  uint32_t GetHeight() const override { return height_; }
  host::Dib* TakeBitmap() override;

  const std::vector<DeviceCall>& calls() const { return calls_; }
  /// The kinds of the recorded calls, by name, in order.
  std::vector<std::string> Names() const;
  /// The recorded calls of one kind, in order.
  std::vector<DeviceCall> Of(DeviceCall::Kind kind) const;
  void Clear() { calls_.clear(); }
  void set_draw_result(int result) { drawResult_ = result; }

 protected:
  void OnSaveState() override;
  void OnRestoreState() override;
  void OnClipRect(const host::GRect& rect) override;
  bool OnDrawBitmap(const host::Dib& dib, int x, int y) override;
  int OnDrawText(const char32_t* codes, int count, host::Font& font, const host::Matrix& matrix,
                 uint32_t color, float fontSize) override;
  bool OnFillPath(const host::Path& path, const host::Matrix& matrix, uint32_t color,
                  host::FillRule rule, host::BlendMode blend) override;
  bool OnStrokePath(const host::Path& path, const host::Matrix& matrix, uint32_t color,
                    const host::StrokeStyle& style, host::BlendMode blend) override;
  void OnClipPath(const host::Path& path, const host::Matrix& matrix, host::FillRule rule) override;
  bool OnDrawBitmapMatrix(const host::Dib& dib, const host::Matrix& matrix, int alpha,
                          host::BlendMode blend) override;
  bool OnFillPathGradient(const host::Path& path, const host::Matrix& matrix,
                          const host::Gradient& gradient, host::FillRule rule, int alpha,
                          host::BlendMode blend) override;
  int OnDrawGlyphs(const host::GlyphPosition* glyphs, int count, host::Font& font,
                   const host::Matrix& matrix, const host::Matrix& glyphMatrix, uint32_t color,
                   host::BlendMode blend) override;

 private:
  uint32_t width_;
  uint32_t height_;
  int drawResult_;
  bool bitmapTaken_ = false;
  std::vector<DeviceCall> calls_;
};

}  // namespace testing_support
