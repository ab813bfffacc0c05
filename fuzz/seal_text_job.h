// The job the seal text fuzz target runs, shared with the corpus replay
// test: the seal text layout, its drawing and both stamp engines driven with
// arbitrary parameters and seal rectangles (huge, negative, zero, NaN). No
// crash, no undefined behaviour, no hang. Returns 1 when the text was laid
// out, 0 when there was nothing to lay out.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "host/base/bitmap_device.h"
#include "host/ofd/ofd_annotation.h"
#include "tarvik/tarvik.h"
#include "text/draw_seal_text.h"

namespace fuzzjob {

// Takes the next `sizeof(T)` bytes, zeros when they run out.
template <class T>
T Take(const uint8_t*& data, size_t& size) {
  T v{};
  const size_t n = std::min(sizeof(T), size);
  std::memcpy(&v, data, n);
  data += n;
  size -= n;
  return v;
}

inline int DrawSealText(std::string bytes) {
  const uint8_t* data = reinterpret_cast<const uint8_t*>(bytes.data());
  size_t size = bytes.size();
  tarvik::RenderSealParam::TextParam p;
  p.widthPercent = Take<uint32_t>(data, size);
  p.fontSize = Take<uint32_t>(data, size) % 2000;
  p.outside = Take<int8_t>(data, size);
  p.bold = Take<uint8_t>(data, size) & 1;
  p.layoutKind = Take<uint8_t>(data, size) % 4;
  p.verticalAlign = Take<uint8_t>(data, size) % 4;
  p.horizontalAlign = Take<uint8_t>(data, size) % 4;
  p.angle = Take<float>(data, size);
  p.offsetX = Take<int32_t>(data, size);
  p.offsetY = Take<int32_t>(data, size);
  // Arguments are evaluated in an unspecified order: take the corners first.
  const float left = Take<float>(data, size), top = Take<float>(data, size);
  const float right = Take<float>(data, size), bottom = Take<float>(data, size);
  const host::GRect box(left, top, right, bottom);
  std::u32string text;
  while (size >= 2 && text.size() < 64) text.push_back(Take<uint16_t>(data, size) % 0x9FFF);
  p.text = host::WideString(text);
  p.fontName = U"SimSun";

  host::OfdAnnotationSeal annotation;
  annotation.Boundary = box;
  std::vector<tarvik::TextObject> records;
  const int laidOut = tarvik::GetSealImageTextRect(&annotation, p, records);
  const std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(48, 48, host::kDibArgb32, 0xFFFFFFFF);
  tarvik::DrawSealText(device.get(), box, host::Matrix(0.5f, 0, 0, 0.5f, 0, 0), p);
  tarvik::AddStampOnDevice(device.get(), p);
  return laidOut;
}

}  // namespace fuzzjob
