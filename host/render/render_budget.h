// Bounds on the work and memory of one render (one page, or the blocks of
// one render context), so that a hostile document cannot make a page take
// unbounded time or memory. When a bound is reached the render stops: what
// was drawn so far stays on the device, and the reason can be read back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/base/host_export.h"

namespace host {

/// The limits of one render; the defaults are far above what real pages
/// need at usual resolutions. A host may lower or raise any of them per
/// renderer (OfdProgressiveRender::SetLimits); zero means no limit.
struct RenderLimits {
  /// Objects visited: every path, text, image, page block and composite
  /// object met while walking the page, including those drawn again through
  /// composite units.
  uint64_t maxObjects = 250000;
  /// Path segments sent to the device, clips included.
  uint64_t maxSegments = 4000000;
  /// Scan-conversion work: for every segment drawn, the number of device
  /// rows it spans (plus one). A path zigzagging across the whole page costs
  /// its segments times the page height; ordinary outlines cost a few rows
  /// a segment. The sum bounds the time spent filling and stroking.
  uint64_t maxScanRows = 60000000;
  /// Sorting work of scan conversion: for every band of 8 device rows, the
  /// pairs of segments of one path that both reach into it. Edges that cross
  /// reorder on every row; this bounds how often.
  uint64_t maxEdgePairs = 400000000;
  /// Bytes of decoded pictures (and seal pictures) held by the render.
  uint64_t maxImageBytes = uint64_t{512} << 20;
};

/// Why a render stopped before its end.
enum class RenderStop : uint8_t {
  kNone,         // finished (or not started)
  kObjects,      // maxObjects reached
  kSegments,     // maxSegments reached
  kScanRows,     // maxScanRows or maxEdgePairs reached
  kMemory,       // maxImageBytes reached, or memory ran out
};

/// "too many objects", "too many path segments", "paths too complex",
/// "too much memory"; empty for kNone.
HOST_API const char* RenderStopText(RenderStop stop);

/// What a render has spent so far, checked against its limits.
struct RenderSpent {
  uint64_t objects = 0;
  uint64_t segments = 0;
  uint64_t scanRows = 0;
  uint64_t edgePairs = 0;
  uint64_t imageBytes = 0;

  /// The first limit that `spent` has passed, or kNone.
  RenderStop Check(const RenderLimits& limits) const {
    auto over = [](uint64_t value, uint64_t limit) { return limit != 0 && value > limit; };
    if (over(objects, limits.maxObjects)) return RenderStop::kObjects;
    if (over(segments, limits.maxSegments)) return RenderStop::kSegments;
    if (over(scanRows, limits.maxScanRows) || over(edgePairs, limits.maxEdgePairs))
      return RenderStop::kScanRows;
    if (over(imageBytes, limits.maxImageBytes)) return RenderStop::kMemory;
    return RenderStop::kNone;
  }
};

}  // namespace host
