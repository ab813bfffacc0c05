// The job the path data fuzz target runs, shared with the corpus replay
// test: arbitrary text through the abbreviated path parser, then what it
// made drawn filled and dashed. The parser must stop cleanly at any fault
// and the device must take any path it returns. Returns the number of
// segments parsed, or -1 when the parser broke its own contract.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/ofd/path_data.h"

namespace fuzzjob {

inline int ParsePathData(std::string text) {
  if (text.size() > (1u << 16)) return 0;
  constexpr size_t kMaxSegments = 4096;
  host::Path path;
  const host::PathDataResult result = host::ParseAbbreviatedData(text, path, kMaxSegments);
  if (result.offset > text.size() || path.segments().size() > kMaxSegments || !result.Description())
    return -1;
  const std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(32, 32, host::kDibArgb32, 0xFFFFFFFF);
  const host::Matrix matrix(0.5f, 0, 0, 0.5f, 1, 1);
  device->FillPath(path, matrix, 0xFF000000, host::FillRule::kEvenOdd);
  host::StrokeStyle style;
  style.width = 1;
  style.dashes = {2, 1};
  device->StrokePath(path, matrix, 0xFFFF0000, style);
  return static_cast<int>(path.segments().size());
}

}  // namespace fuzzjob
