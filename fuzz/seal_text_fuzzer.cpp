// Drives the seal text layout, its drawing and both stamp engines with
// arbitrary parameters and seal rectangles (huge, negative, zero, NaN): no
// crash, no undefined behaviour, no hang.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "host/base/bitmap_device.h"
#include "host/ofd/ofd_annotation.h"
#include "tarvik/tarvik.h"
#include "text/draw_seal_text.h"

namespace {

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
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
  host::GRect box(Take<float>(data, size), Take<float>(data, size), Take<float>(data, size),
                  Take<float>(data, size));
  std::u32string text;
  while (size >= 2 && text.size() < 64) {
    const uint16_t unit = Take<uint16_t>(data, size);
    text.push_back(unit % 0x9FFF);
  }
  p.text = host::WideString(text);
  p.fontName = U"SimSun";

  host::OfdAnnotationSeal annotation;
  annotation.Boundary = box;
  std::vector<tarvik::TextObject> records;
  tarvik::GetSealImageTextRect(&annotation, p, records);

  static std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(48, 48, host::kDibArgb32, 0xFFFFFFFF);
  tarvik::DrawSealText(device.get(), box, host::Matrix(0.5f, 0, 0, 0.5f, 0, 0), p);
  tarvik::AddStampOnDevice(device.get(), p);
  return 0;
}
