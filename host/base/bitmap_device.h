// The bitmap device: draws with cairo into a premultiplied ARGB32 image
// surface and hands the result back as a straight-alpha kDibArgb32 Dib.
// Internal to the host platform; others make one with CreateBitmapDevice.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/cairo_device.h"

namespace host {

/// A CairoDevice over an image surface. Colours and bitmaps come in with
/// straight alpha; they are premultiplied when they enter the surface and
/// unpremultiplied once, in TakeBitmap. After TakeBitmap every drawing call
/// is ignored (false / 0). Used by one thread at a time.
class BitmapDevice final : public CairoDevice {
 public:
  /// A device of `width` x `height` filled with `background` (0xAARRGGBB,
  /// straight), or null for a size IsDibSizeAllowed refuses or when cairo
  /// cannot make the surface.
  static std::unique_ptr<BitmapDevice> Create(int width, int height, uint32_t background);
  ~BitmapDevice() override;

  /// The picture as kDibArgb32 with straight alpha; pixels nothing covered
  /// (alpha 0) keep the background's RGB. The caller owns it. Null the
  /// second time.
  Dib* TakeBitmap() override;

 private:
  BitmapDevice(int width, int height, uint32_t background, std::unique_ptr<Canvas> canvas,
               std::unique_ptr<Dib> pixels);

  uint32_t background_;
  std::unique_ptr<Dib> pixels_;  // what the canvas draws into
};

}  // namespace host
