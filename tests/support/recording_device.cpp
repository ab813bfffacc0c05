#include "support/recording_device.h"

#include <memory>
#include <string>
#include <utility>

#include "host/base/font.h"

namespace testing_support {

const char* DeviceCallName(DeviceCall::Kind kind) {
  static const char* const kNames[] = {"take", "save",   "restore",  "clip",         "bitmap",   "text",
                                       "fill", "stroke", "clippath", "bitmapmatrix", "gradient", "glyphs"};
  return kNames[kind];
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
  calls_.push_back({.kind = DeviceCall::kTakeBitmap});
  if (std::exchange(bitmapTaken_, true)) return nullptr;
  return host::Dib::Create(static_cast<int>(width_), static_cast<int>(height_), host::kDibArgb32).release();
}

void RecordingDevice::OnSaveState() { calls_.push_back({.kind = DeviceCall::kSave}); }

void RecordingDevice::OnRestoreState() { calls_.push_back({.kind = DeviceCall::kRestore}); }

void RecordingDevice::OnClipRect(const host::GRect& rect) {
  calls_.push_back({.kind = DeviceCall::kClipRect, .rect = rect});
}

bool RecordingDevice::OnDrawBitmap(const host::Dib& dib, int x, int y) {
  calls_.push_back({.kind = DeviceCall::kDrawBitmap, .dib = &dib, .dibWidth = dib.GetWidth(),
                    .dibHeight = dib.GetHeight(), .x = x, .y = y});
  return drawResult_ != 0;
}

int RecordingDevice::OnDrawText(const char32_t* codes, int count, host::Font& font,
                                const host::Matrix& matrix, uint32_t color, float fontSize) {
  calls_.push_back({.kind = DeviceCall::kDrawText, .codes = std::u32string(codes, static_cast<size_t>(count)),
                    .count = count, .font = &font, .face = font.GetFaceHandle(), .matrix = matrix,
                    .color = color, .fontSize = fontSize});
  return drawResult_;
}

bool RecordingDevice::OnFillPath(const host::Path&, const host::Matrix& matrix, uint32_t color,
                                 host::FillRule, host::BlendMode) {
  calls_.push_back({.kind = DeviceCall::kFillPath, .matrix = matrix, .color = color});
  return drawResult_ != 0;
}

bool RecordingDevice::OnStrokePath(const host::Path&, const host::Matrix& matrix, uint32_t color,
                                   const host::StrokeStyle&, host::BlendMode) {
  calls_.push_back({.kind = DeviceCall::kStrokePath, .matrix = matrix, .color = color});
  return drawResult_ != 0;
}

void RecordingDevice::OnClipPath(const host::Path&, const host::Matrix& matrix, host::FillRule) {
  calls_.push_back({.kind = DeviceCall::kClipPath, .matrix = matrix});
}

bool RecordingDevice::OnDrawBitmapMatrix(const host::Dib& dib, const host::Matrix& matrix,
                                         int alpha, host::BlendMode) {
  calls_.push_back({.kind = DeviceCall::kDrawBitmapMatrix, .dib = &dib, .dibWidth = dib.GetWidth(),
                    .dibHeight = dib.GetHeight(), .matrix = matrix, .alpha = alpha});
  return drawResult_ != 0;
}

bool RecordingDevice::OnFillPathGradient(const host::Path&, const host::Matrix& matrix,
                                         const host::Gradient&, host::FillRule, int alpha,
                                         host::BlendMode) {
  calls_.push_back({.kind = DeviceCall::kFillPathGradient, .matrix = matrix, .alpha = alpha});
  return drawResult_ != 0;
}

int RecordingDevice::OnDrawGlyphs(const host::GlyphPosition*, int count, host::Font& font,
                                  const host::Matrix& matrix, const host::Matrix&, uint32_t color,
                                  host::BlendMode) {
  calls_.push_back({.kind = DeviceCall::kDrawGlyphs, .count = count, .font = &font,
                    .face = font.GetFaceHandle(), .matrix = matrix, .color = color});
  return drawResult_;
}

}  // namespace testing_support
