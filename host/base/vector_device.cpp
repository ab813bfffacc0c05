#include "host/base/units.h"
#include "host/base/vector_device.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cmath>
#include <new>

#include "host/base/cairo_canvas.h"

namespace host {

namespace {

constexpr double kMaxPageMm = 5000;

bool GoodSize(double widthMm, double heightMm) {
  return std::isfinite(widthMm) && std::isfinite(heightMm) && widthMm > 0 && heightMm > 0 &&
         widthMm <= kMaxPageMm && heightMm <= kMaxPageMm;
}

// Device units of a length in millimetres, rounded up to a whole unit.
int Units(double mm, double unitsPerInch) {
  return static_cast<int>(std::ceil(mm / kMmPerInch * unitsPerInch));
}

// Surface units per inch: PDF surfaces measure in points, SVG surfaces in
// millimetres (cairo writes the SVG size in the document unit unconverted).
double SurfaceUnitsPerInch(VectorFormat format) {
  return format == VectorFormat::kPdf ? kPointsPerInch : kMmPerInch;
}

}  // namespace

struct VectorDevice::Output {
  Sink sink;
  bool failed = false;

  static cairo_status_t Write(void* closure, const unsigned char* data, unsigned int length) {
    auto* out = static_cast<Output*>(closure);
    if (!out->failed && !out->sink(data, length)) out->failed = true;
    return out->failed ? CAIRO_STATUS_WRITE_ERROR : CAIRO_STATUS_SUCCESS;
  }
};

VectorDevice::VectorDevice(int width, int height, VectorFormat format, double unitsPerInch,
                           std::unique_ptr<Output> output, std::unique_ptr<Canvas> canvas)
    : CairoDevice(width, height, std::move(canvas)),
      format_(format),
      unitsPerInch_(unitsPerInch),
      output_(std::move(output)) {}

VectorDevice::~VectorDevice() { Finish(); }

std::unique_ptr<VectorDevice> VectorDevice::Create(VectorFormat format, Sink sink, double widthMm,
                                                   double heightMm, double unitsPerInch) {
  const bool recording = format == VectorFormat::kRecording;
  if ((!sink && !recording) || !GoodSize(widthMm, heightMm) || !std::isfinite(unitsPerInch) ||
      !(unitsPerInch > 0) || Units(kMaxPageMm, unitsPerInch) >= (1 << 22)) {
    return nullptr;
  }
  std::unique_ptr<Output> output(new (std::nothrow) Output{std::move(sink)});
  if (!output) return nullptr;
  const double toPoints = kPointsPerInch / kMmPerInch;
  const int width = Units(widthMm, unitsPerInch), height = Units(heightMm, unitsPerInch);
  // A recording is kept in device units; the device that plays it scales.
  const cairo_rectangle_t extents{0, 0, static_cast<double>(width), static_cast<double>(height)};
  CairoSurfacePtr surface(
      format == VectorFormat::kPdf
          ? cairo_pdf_surface_create_for_stream(&Output::Write, output.get(), widthMm * toPoints,
                                                heightMm * toPoints)
      : format == VectorFormat::kSvg
          ? cairo_svg_surface_create_for_stream(&Output::Write, output.get(), widthMm, heightMm)
          : cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  if (format == VectorFormat::kSvg) {
    // Sizes in millimetres as the page gives them, not in points.
    cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_MM);
  }
  // Device units below cairo's user space: every matrix the drawing code
  // sets is in device units, and this scale turns them into surface units.
  if (!recording) {
    const double scale = SurfaceUnitsPerInch(format) / unitsPerInch;
    cairo_surface_set_device_scale(surface.get(), scale, scale);
  }
  std::unique_ptr<Canvas> canvas = Canvas::Make(std::move(surface));
  if (!canvas) return nullptr;
  canvas->forDocuments = true;
  std::unique_ptr<VectorDevice> device(new (std::nothrow) VectorDevice(
      width, height, format, unitsPerInch, std::move(output), std::move(canvas)));
  return device;
}

bool VectorDevice::NextPage(double widthMm, double heightMm) {
  if (!canvas_ || format_ != VectorFormat::kPdf || SaveDepth() != 0 ||
      !GoodSize(widthMm, heightMm)) {
    return false;
  }
  cairo_show_page(canvas_->cr.get());
  const double toPoints = kPointsPerInch / kMmPerInch;
  cairo_pdf_surface_set_size(canvas_->surface.get(), widthMm * toPoints, heightMm * toPoints);
  width_ = Units(widthMm, unitsPerInch_);
  height_ = Units(heightMm, unitsPerInch_);
  return cairo_status(canvas_->cr.get()) == CAIRO_STATUS_SUCCESS && !output_->failed;
}

bool VectorDevice::Play(const VectorDevice& recording) {
  if (!canvas_ || !recording.canvas_ || recording.format_ != VectorFormat::kRecording ||
      format_ == VectorFormat::kRecording || recording.unitsPerInch_ != unitsPerInch_) {
    return false;
  }
  cairo_t* cr = canvas_->cr.get();
  cairo_surface_flush(recording.canvas_->surface.get());
  cairo_save(cr);
  cairo_identity_matrix(cr);
  cairo_set_source_surface(cr, recording.canvas_->surface.get(), 0, 0);
  cairo_paint(cr);
  cairo_restore(cr);
  return cairo_status(cr) == CAIRO_STATUS_SUCCESS && !output_->failed;
}

bool VectorDevice::Finish() {
  if (!canvas_) return !output_->failed;
  std::unique_ptr<Canvas> canvas = std::move(canvas_);
  canvas->faces.clear();
  const bool drawn = cairo_status(canvas->cr.get()) == CAIRO_STATUS_SUCCESS;
  canvas->cr.reset();
  cairo_surface_finish(canvas->surface.get());
  const bool finished = cairo_surface_status(canvas->surface.get()) == CAIRO_STATUS_SUCCESS;
  return drawn && finished && !output_->failed;
}

}  // namespace host
