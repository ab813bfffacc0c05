#include "support/recording_device.h"

#include <memory>

#include "host/base/font.h"

namespace testing_support {

const char* DeviceCallName(DeviceCall::Kind kind) {
  switch (kind) {
    case DeviceCall::kTakeBitmap: return "take";
    case DeviceCall::kSave: return "save";
    case DeviceCall::kRestore: return "restore";
    case DeviceCall::kClipRect: return "clip";
    case DeviceCall::kDrawBitmap: return "bitmap";
    case DeviceCall::kDrawText: return "text";
    case DeviceCall::kFillPath: return "fill";
    case DeviceCall::kStrokePath: return "stroke";
    case DeviceCall::kClipPath: return "clippath";
    case DeviceCall::kDrawBitmapMatrix: return "bitmapmatrix";
    case DeviceCall::kFillPathGradient: return "gradient";
    case DeviceCall::kDrawGlyphs: return "glyphs";
  }
  return "?";
}

DeviceCall& RecordingDevice::Add(DeviceCall::Kind kind) {
  calls_.emplace_back();
  calls_.back().kind = kind;
  return calls_.back();
}

std::vector<std::string> RecordingDevice::Names() const {
  std::vector<std::string> names;
  for (const DeviceCall& c : calls_) names.emplace_back(DeviceCallName(c.kind));
  return names;
}

std::vector<DeviceCall> RecordingDevice::Of(DeviceCall::Kind kind) const {
  std::vector<DeviceCall> out;
  for (const DeviceCall& c : calls_)
    if (c.kind == kind) out.push_back(c);
  return out;
}

host::Dib* RecordingDevice::TakeBitmap() {
  Add(DeviceCall::kTakeBitmap);
  if (bitmapTaken_) return nullptr;
  bitmapTaken_ = true;
  return host::Dib::Create(static_cast<int>(width_), static_cast<int>(height_), host::kDibArgb32)
      .release();
}

void RecordingDevice::OnSaveState() { Add(DeviceCall::kSave); }

void RecordingDevice::OnRestoreState() { Add(DeviceCall::kRestore); }

void RecordingDevice::OnClipRect(const host::GRect& rect) {
  Add(DeviceCall::kClipRect).rect = rect;
}

bool RecordingDevice::OnDrawBitmap(const host::Dib& dib, int x, int y) {
  DeviceCall& c = Add(DeviceCall::kDrawBitmap);
  c.dib = &dib;
  c.dibWidth = dib.GetWidth();
  c.dibHeight = dib.GetHeight();
  c.x = x;
  c.y = y;
  return drawResult_ != 0;
}

int RecordingDevice::OnDrawText(const char32_t* codes, int count, host::Font& font,
                                const host::Matrix& matrix, uint32_t color, float fontSize) {
  DeviceCall& c = Add(DeviceCall::kDrawText);
  c.codes.assign(codes, static_cast<size_t>(count));
  c.count = count;
  c.font = &font;
  c.face = font.GetFaceHandle();
  c.matrix = matrix;
  c.color = color;
  c.fontSize = fontSize;
  return drawResult_;
}

bool RecordingDevice::OnFillPath(const host::Path&, const host::Matrix& matrix, uint32_t color,
                                 host::FillRule, host::BlendMode) {
  DeviceCall& c = Add(DeviceCall::kFillPath);
  c.matrix = matrix;
  c.color = color;
  return drawResult_ != 0;
}

bool RecordingDevice::OnStrokePath(const host::Path&, const host::Matrix& matrix, uint32_t color,
                                   const host::StrokeStyle&, host::BlendMode) {
  DeviceCall& c = Add(DeviceCall::kStrokePath);
  c.matrix = matrix;
  c.color = color;
  return drawResult_ != 0;
}

void RecordingDevice::OnClipPath(const host::Path&, const host::Matrix& matrix, host::FillRule) {
  Add(DeviceCall::kClipPath).matrix = matrix;
}

bool RecordingDevice::OnDrawBitmapMatrix(const host::Dib& dib, const host::Matrix& matrix,
                                         int alpha, host::BlendMode) {
  DeviceCall& c = Add(DeviceCall::kDrawBitmapMatrix);
  c.dib = &dib;
  c.dibWidth = dib.GetWidth();
  c.dibHeight = dib.GetHeight();
  c.matrix = matrix;
  c.alpha = alpha;
  return drawResult_ != 0;
}

bool RecordingDevice::OnFillPathGradient(const host::Path&, const host::Matrix& matrix,
                                         const host::Gradient&, host::FillRule, int alpha,
                                         host::BlendMode) {
  DeviceCall& c = Add(DeviceCall::kFillPathGradient);
  c.matrix = matrix;
  c.alpha = alpha;
  return drawResult_ != 0;
}

int RecordingDevice::OnDrawGlyphs(const host::GlyphPosition*, int count, host::Font& font,
                                  const host::Matrix& matrix, const host::Matrix&, uint32_t color,
                                  host::BlendMode) {
  DeviceCall& c = Add(DeviceCall::kDrawGlyphs);
  c.count = count;
  c.font = &font;
  c.face = font.GetFaceHandle();
  c.matrix = matrix;
  c.color = color;
  return drawResult_;
}

}  // namespace testing_support
