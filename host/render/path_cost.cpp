#include "host/render/path_cost.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/ofd/ofd_page_object.h"
#include "host/render/paint_context.h"

namespace host {

PathCost EstimatePathCost(const Path& path, const Matrix& matrix, int deviceHeight) {
  PathCost cost;
  const double rows = std::max(deviceHeight, 1);
  const int bands = static_cast<int>(rows) / kEdgeBandRows + 1;
  // Edges starting and ending per band, summed afterwards into edges per band.
  std::vector<int64_t> delta(static_cast<size_t>(bands) + 1, 0);
  int lowBand = bands, highBand = 0;
  double lastY = 0;
  for (const Path::Segment& s : path.segments()) {
    ++cost.segments;
    const int points = s.op == Path::Op::kCubic ? 3 : s.op == Path::Op::kClose ? 0 : 1;
    double low = lastY, high = lastY;
    for (int i = 0; i < points; ++i) {
      float x = s.pts[2 * i], y = s.pts[2 * i + 1];
      matrix.TransformPoint(x, y);
      const double dy = std::isfinite(y) ? static_cast<double>(y) : 0.0;
      low = std::min(low, dy);
      high = std::max(high, dy);
      lastY = dy;
    }
    // Only the part over the device is scanned.
    low = std::clamp(low, 0.0, rows);
    high = std::clamp(high, 0.0, rows);
    cost.scanRows += static_cast<uint64_t>(high - low) + 1;
    if (s.op == Path::Op::kMove) continue;
    const int first = static_cast<int>(low) / kEdgeBandRows;
    const int last = static_cast<int>(high) / kEdgeBandRows;
    ++delta[static_cast<size_t>(first)];
    --delta[static_cast<size_t>(last) + 1];
    lowBand = std::min(lowBand, first);
    highBand = std::max(highBand, last);
  }
  int64_t edges = 0;
  for (int b = 0; b <= highBand; ++b) {
    edges += delta[static_cast<size_t>(b)];
    if (b >= lowBand && edges > 1)
      cost.edgePairs += static_cast<uint64_t>(edges) * static_cast<uint64_t>(edges - 1) / 2;
  }
  return cost;
}

PathCost EstimateClipCost(const OfdPageObject& object, const Matrix& parent, int deviceHeight) {
  PathCost cost;
  if (object.clips.empty()) return cost;
  const Matrix origin = BoundaryOriginMatrix(object, parent);
  const Matrix transformed = ObjectMatrix(object, parent);
  for (const OfdClip& clip : object.clips) {
    for (const OfdClipArea& area : clip.areas) {
      const OfdPageObject* shape = area.shape.get();
      if (!shape) continue;
      if (shape->GetType() != OfdPageObject::Type::kPath) {
        cost.segments += 5;  // its box
        cost.scanRows += 5;
        continue;
      }
      const Matrix areaMatrix = area.ctm.Then(clip.transFlag ? transformed : origin);
      cost += EstimatePathCost(static_cast<const OfdPathObject*>(shape)->path,
                               ObjectMatrix(*shape, areaMatrix), deviceHeight);
    }
  }
  return cost;
}

}  // namespace host
