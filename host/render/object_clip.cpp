#include "host/render/object_clip.h"

#include <cmath>

#include "host/ofd/ofd_page_object.h"
#include "host/render/paint_context.h"

namespace host {

bool AppendMappedPath(const Path& path, const Matrix& matrix, Path& out) {
  for (const Path::Segment& s : path.segments()) {
    float p[6];
    const int points = s.op == Path::Op::kCubic ? 3 : s.op == Path::Op::kClose ? 0 : 1;
    for (int i = 0; i < points; ++i) {
      p[2 * i] = s.pts[2 * i];
      p[2 * i + 1] = s.pts[2 * i + 1];
      matrix.TransformPoint(p[2 * i], p[2 * i + 1]);
      if (!std::isfinite(p[2 * i]) || !std::isfinite(p[2 * i + 1])) return false;
    }
    switch (s.op) {
      case Path::Op::kMove: out.MoveTo(p[0], p[1]); break;
      case Path::Op::kLine: out.LineTo(p[0], p[1]); break;
      case Path::Op::kCubic: out.CubicTo(p[0], p[1], p[2], p[3], p[4], p[5]); break;
      case Path::Op::kClose: out.Close(); break;
    }
  }
  return true;
}

void ApplyObjectClips(Device& device, const OfdPageObject& object, const Matrix& parent) {
  const Matrix origin = BoundaryOriginMatrix(object, parent);
  const Matrix transformed = ObjectMatrix(object, parent);
  for (const OfdClip& clip : object.clips) {
    // Areas have matrices of their own: their union is gathered in device space.
    Path united;
    for (const OfdClipArea& area : clip.areas) {
      const OfdPageObject* shape = area.shape.get();
      if (!shape) continue;
      const Matrix areaMatrix = area.ctm.Then(clip.transFlag ? transformed : origin);
      if (shape->GetType() == OfdPageObject::Type::kPath) {
        const auto* path = static_cast<const OfdPathObject*>(shape);
        AppendMappedPath(path->path, ObjectMatrix(*shape, areaMatrix), united);
      } else {
        // Text clips by the box it occupies: glyph outlines are not at hand.
        Path box;
        box.AddRect(shape->boundary.left, shape->boundary.top, shape->boundary.Width(),
                    shape->boundary.Height());
        AppendMappedPath(box, areaMatrix, united);
      }
    }
    // An empty union clips everything away, as a clip with no area should.
    device.ClipPath(united, Matrix(), FillRule::kNonZero);
  }
}

}  // namespace host
