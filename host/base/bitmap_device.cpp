#include "host/base/bitmap_device.h"

#include <algorithm>
#include <new>

#include "host/base/cairo_canvas.h"
#include "host/base/premultiply.h"

namespace host {

BitmapDevice::BitmapDevice(int width, int height, uint32_t background,
                           std::unique_ptr<Canvas> canvas)
    : CairoDevice(width, height, std::move(canvas)), background_(background) {}

BitmapDevice::~BitmapDevice() = default;

std::unique_ptr<BitmapDevice> BitmapDevice::Create(int width, int height, uint32_t background) {
  if (!IsDibSizeAllowed(width, height)) return nullptr;
  CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;

  cairo_surface_flush(surface.get());
  uint8_t* data = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  const uint32_t pixel = PremultiplyArgb(background);
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<uint32_t*>(data + static_cast<size_t>(y) * stride);
    std::fill_n(row, width, pixel);
  }
  cairo_surface_mark_dirty(surface.get());

  std::unique_ptr<Canvas> canvas = Canvas::Make(std::move(surface));
  if (!canvas) return nullptr;
  std::unique_ptr<BitmapDevice> device(
      new (std::nothrow) BitmapDevice(width, height, background, std::move(canvas)));
  return device;
}

Dib* BitmapDevice::TakeBitmap() {
  if (!canvas_) return nullptr;
  std::unique_ptr<Canvas> canvas = std::move(canvas_);
  auto dib = Dib::CreateUnfilled(width_, height_, kDibArgb32);
  if (!dib) return nullptr;
  cairo_surface_flush(canvas->surface.get());
  CopyUnpremultiplied(cairo_image_surface_get_data(canvas->surface.get()),
                      cairo_image_surface_get_stride(canvas->surface.get()), background_, *dib);
  return dib.release();
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
