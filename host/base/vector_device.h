// The vector device: the same drawing operations as the bitmap device, onto
// a PDF document (any number of pages) or an SVG picture (one page). Paths
// stay paths, text stays text where the font can be embedded, and bitmaps
// are embedded at their own resolution.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "host/base/cairo_device.h"
#include "host/base/host_export.h"

namespace host {

/// kRecording keeps the drawing of one page in memory for a PDF device to
/// play later: pages can be drawn on several threads and written in order.
enum class VectorFormat : int { kPdf = 0, kSvg = 1, kRecording = 2 };

/// A CairoDevice over a PDF or SVG surface. Device units are 1/unitsPerInch
/// of an inch (y down, origin at the page's top left), so a caller maps page
/// millimetres with a scale of unitsPerInch / 25.4; whatever gets rasterised
/// on the way (OFD seal pictures) is made at that resolution. The output goes
/// to a sink as it is produced; Finish writes the rest.
class HOST_API VectorDevice final : public CairoDevice {
 public:
  /// Receives the output; returns false to report a write failure.
  using Sink = std::function<bool(const unsigned char* data, size_t size)>;

  /// A device whose first page is `widthMm` x `heightMm`; null for a size or
  /// resolution that is not positive and finite, a page wider than 5 m, or
  /// no sink (a recording needs none).
  static std::unique_ptr<VectorDevice> Create(VectorFormat format, Sink sink, double widthMm,
                                              double heightMm, double unitsPerInch);
  /// Finishes the output when Finish was not called.
  ~VectorDevice() override;

  /// Ends the current page and starts one of `widthMm` x `heightMm`. PDF
  /// only (false for SVG), and only with no state saved.
  bool NextPage(double widthMm, double heightMm);
  /// Draws what `recording` (a kRecording device of the same units per
  /// inch, not finished) holds onto the current page, as vectors. False on
  /// failure or for devices that do not fit.
  bool Play(const VectorDevice& recording);
  /// Ends the document and writes the rest; false when cairo failed or the
  /// sink refused bytes. Drawing afterwards is ignored.
  bool Finish();

  /// A vector device has no bitmap: null.
  Dib* TakeBitmap() override { return nullptr; }

 protected:
  bool OnIsRaster() const override { return false; }

 private:
  struct Output;  // the sink and whether it failed; outlives the surface

  VectorDevice(int width, int height, VectorFormat format, double unitsPerInch,
               std::unique_ptr<Output> output, std::unique_ptr<Canvas> canvas);

  VectorFormat format_;
  double unitsPerInch_;
  std::unique_ptr<Output> output_;
};

}  // namespace host
