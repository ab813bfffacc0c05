// Feeds arbitrary text to the abbreviated path parser, then draws what it
// made: the parser must stop cleanly at any fault and the device must take
// any path it returns.
#include <cstdint>
#include <memory>
#include <string_view>

#include "host/base/device.h"
#include "host/ofd/path_data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 16)) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  constexpr size_t kMaxSegments = 4096;
  host::Path path;
  const host::PathDataResult result = host::ParseAbbreviatedData(text, path, kMaxSegments);
  if (result.offset > size || path.segments().size() > kMaxSegments || !result.Description())
    __builtin_trap();

  static std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(32, 32, host::kDibArgb32, 0xFFFFFFFF);
  const host::Matrix matrix(0.5f, 0, 0, 0.5f, 1, 1);
  device->FillPath(path, matrix, 0xFF000000, host::FillRule::kEvenOdd);
  host::StrokeStyle style;
  style.width = 1;
  style.dashes = {2, 1};
  device->StrokePath(path, matrix, 0xFFFF0000, style);
  return 0;
}
