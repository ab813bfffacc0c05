#include "host/render/image_painter.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_page_object.h"
#include "host/render/image_cache.h"

namespace host {

namespace {

void PaintSeal(PaintContext& pc, const OfdMultiMedia& media, const Matrix& matrix, int opacity) {
  if (!pc.sealParser) return;
  // The picture's own axes, so that a turned seal is asked for at its size.
  const double width = std::round(matrix.XUnit()), height = std::round(matrix.YUnit());
  if (!(width >= 1 && height >= 1 && width <= kMaxDibSide && height <= kMaxDibSide) ||
      !IsDibSizeAllowed(static_cast<int64_t>(width), static_cast<int64_t>(height))) {
    return;
  }
  const Size size(static_cast<int>(width), static_cast<int>(height));
  std::unique_ptr<Dib> picture(pc.sealParser(&media, size, pc.sealRequest));
  if (!picture) return;
  // Ink on paper: an opaque picture's white background must not hide the page.
  const BlendMode blend = HasTransparency(*picture) ? BlendMode::kNormal : BlendMode::kMultiply;
  pc.device->DrawBitmapMatrix(picture.get(), matrix, opacity, blend);
}

// The size a picture is drawn at on a raster device, in pixels along its own
// axes; empty (the whole picture) for other devices or absurd sizes.
Size ShownSize(const Device& device, const Matrix& matrix) {
  if (!device.IsRaster()) return Size();
  const double width = std::max(1.0, std::ceil(static_cast<double>(matrix.XUnit())));
  const double height = std::max(1.0, std::ceil(static_cast<double>(matrix.YUnit())));
  if (!(width <= kMaxDibSide && height <= kMaxDibSide)) return Size();
  return Size(static_cast<int>(width), static_cast<int>(height));
}

}  // namespace

void PaintImage(PaintContext& pc, const OfdImageObject& object, const Matrix& parent, int alpha) {
  if (!object.media) return;
  const Matrix matrix = ObjectMatrix(object, parent);
  if (!IsFiniteMatrix(matrix)) return;
  const int opacity = alpha * object.alpha / 255;
  if (opacity <= 0) return;
  if (object.media->IsSeal()) {
    PaintSeal(pc, *object.media, matrix, opacity);
    return;
  }
  const Dib* picture =
      pc.images->Get(object.media, object.imageMask, ShownSize(*pc.device, matrix));
  if (picture) pc.device->DrawBitmapMatrix(picture, matrix, opacity, ObjectBlendMode(object));
}

}  // namespace host
