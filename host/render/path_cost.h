// What drawing a path costs the device, estimated before it is drawn: its
// segments, and the device rows its segments span (the work of scan
// conversion). Internal to the renderer.
#pragma once

#include <cstdint>

#include "host/base/matrix.h"
#include "host/base/path.h"

namespace host {

class OfdPageObject;

/// Rows of the device grouped for counting the edges that share rows.
inline constexpr int kEdgeBandRows = 8;

struct PathCost {
  uint64_t segments = 0;
  uint64_t scanRows = 0;   // per segment: rows spanned on the device (clamped), plus one
  uint64_t edgePairs = 0;  // per band of kEdgeBandRows rows: pairs of segments both in it

  PathCost& operator+=(const PathCost& other) {
    segments += other.segments;
    scanRows += other.scanRows;
    edgePairs += other.edgePairs;
    return *this;
  }
  /// The cost of drawing the same path `times` times; `edgeFactor` more
  /// edges each time (a stroke's outline has both sides of each segment).
  PathCost Scaled(uint64_t times, uint64_t edgeFactor) const {
    return PathCost{segments * times, scanRows * times * edgeFactor,
                    edgePairs * times * edgeFactor * edgeFactor};
  }
};

/// The cost of filling `path` under `matrix` on a device `deviceHeight` rows
/// high. Scan conversion walks every edge over every row it spans, and sorts
/// the edges met on each row: edges that cross reorder, and a path whose
/// edges cross each other everywhere costs the square of its edges a row.
/// Pairs of edges sharing a band of rows bound those crossings.
PathCost EstimatePathCost(const Path& path, const Matrix& matrix, int deviceHeight);

/// The cost of the clip paths of `object` drawn under `parent`.
PathCost EstimateClipCost(const OfdPageObject& object, const Matrix& parent, int deviceHeight);

}  // namespace host
