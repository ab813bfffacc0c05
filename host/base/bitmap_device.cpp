#include "host/base/bitmap_device.h"

#include <algorithm>
#include <new>

#include "host/base/cairo_canvas.h"

namespace host {

namespace {

uint32_t Unpremultiply(uint32_t pixel, uint32_t background) {
  const uint32_t a = pixel >> 24;
  if (a == 0) return background & 0x00FFFFFF;
  if (a == 255) return pixel;
  auto channel = [&](int shift) {
    return std::min<uint32_t>(255, (((pixel >> shift) & 0xFF) * 255 + a / 2) / a) << shift;
  };
  return a << 24 | channel(16) | channel(8) | channel(0);
}

}  // namespace

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
  auto dib = Dib::Create(width_, height_, kDibArgb32);
  if (!dib) return nullptr;
  cairo_surface_flush(canvas->surface.get());
  const uint8_t* data = cairo_image_surface_get_data(canvas->surface.get());
  const int stride = cairo_image_surface_get_stride(canvas->surface.get());
  for (int y = 0; y < height_; ++y) {
    const auto* in = reinterpret_cast<const uint32_t*>(data + static_cast<size_t>(y) * stride);
    uint8_t* out = dib->GetScanline(y);
    for (int x = 0; x < width_; ++x) {
      const uint32_t argb = Unpremultiply(in[x], background_);
      out[4 * x] = static_cast<uint8_t>(argb);
      out[4 * x + 1] = static_cast<uint8_t>(argb >> 8);
      out[4 * x + 2] = static_cast<uint8_t>(argb >> 16);
      out[4 * x + 3] = static_cast<uint8_t>(argb >> 24);
    }
  }
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
