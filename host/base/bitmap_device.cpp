#include "host/base/bitmap_device.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/base/cairo_canvas.h"
#include "host/base/premultiply.h"

namespace host {

BitmapDevice::BitmapDevice(int width, int height, uint32_t background,
                           std::unique_ptr<Canvas> canvas, std::unique_ptr<Dib> pixels)
    : CairoDevice(width, height, std::move(canvas)),
      background_(background),
      pixels_(std::move(pixels)) {}

// The surface draws into the pixels: it goes first.
BitmapDevice::~BitmapDevice() { canvas_.reset(); }

std::unique_ptr<BitmapDevice> BitmapDevice::Create(int width, int height, uint32_t background) {
  // cairo draws straight into the bitmap that TakeBitmap hands over, so the
  // page is neither allocated nor copied twice.
  std::unique_ptr<Dib> pixels = Dib::CreateUnfilled(width, height, kDibArgb32);
  if (!pixels || pixels->GetPitch() != cairo_format_stride_for_width(CAIRO_FORMAT_ARGB32, width))
    return nullptr;
  // One row filled pixel by pixel, the others copied from it: the copies
  // go at memory speed.
  const uint32_t pixel = PremultiplyArgb(background);
  uint8_t* first = pixels->GetScanline(0);
  std::fill_n(reinterpret_cast<uint32_t*>(first), width, pixel);
  for (int y = 1; y < height; ++y) std::memcpy(pixels->GetScanline(y), first, pixels->GetPitch());
  CairoSurfacePtr surface(cairo_image_surface_create_for_data(
      pixels->GetBuffer(), CAIRO_FORMAT_ARGB32, width, height, pixels->GetPitch()));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;

  std::unique_ptr<Canvas> canvas = Canvas::Make(std::move(surface));
  if (!canvas) return nullptr;
  std::unique_ptr<BitmapDevice> device(new (std::nothrow) BitmapDevice(
      width, height, background, std::move(canvas), std::move(pixels)));
  return device;
}

Dib* BitmapDevice::TakeBitmap() {
  if (!canvas_) return nullptr;
  cairo_surface_flush(canvas_->surface.get());
  canvas_.reset();
  UnpremultiplyInPlace(*pixels_, background_);
  return pixels_.release();
}

std::unique_ptr<Device> CreateBitmapDevice(int width, int height, DibFormat format,
                                           uint32_t background) {
  if (format != kDibArgb32) return nullptr;
  return BitmapDevice::Create(width, height, background);
}

Device* BitmapDeviceCreator(int width, int height, DibFormat format, uint32_t background,
                            void* /*userData*/) {
  return CreateBitmapDevice(width, height, format, background).release();
}

}  // namespace host
