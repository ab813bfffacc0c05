// A finished seal picture from raw seal data: decoded, adjusted on copies
// (cross, colour, blur), drawn on a fresh device and stamped with text.
#include <memory>

#include "front/device_creator.h"
#include "image/box_filter.h"
#include "image/color_ops.h"
#include "tarvik/tarvik.h"

namespace tarvik {

Dib* RenderSealImageWithStamp(unsigned char* data, unsigned int length,
                              const RenderSealParam& param) {
  const DeviceCreator creator = GetDeviceCreator();
  if (!creator || !param.image || !param.text) return nullptr;
  const RenderSealParam::ImageParam& image = *param.image;

  bool isOfd = false;
  std::unique_ptr<Dib> work(ParseSealImage(data, length, 0, 0, 300, isOfd));
  if (!work) return nullptr;

  if (image.crossMark != 0) {
    if (std::unique_ptr<Dib> copy = work->Clone()) {
      work = std::move(copy);
      DrawCrossMark(*work);
    }
  }
  if (image.colorMode != 0) {
    if (std::unique_ptr<Dib> copy = work->Clone()) {
      if (image.colorMode == 1) {
        ConvertToGray(copy);
      } else if (image.colorMode == 2) {
        ConvertToBlack(copy);
      }
      work = std::move(copy);
    }
  }
  if (image.blur != 0) {
    // The blur works on 32-bit pixels: a picture decoded in another format
    // is copied into that format (the copy this step makes anyway).
    if (std::unique_ptr<Dib> copy = work->CloneConvert(host::kDibArgb32)) {
      BlurSealImage(*copy, image.blurRadius);
      work = std::move(copy);
    }
  }

  std::unique_ptr<Device> device(creator(work->GetWidth(), work->GetHeight(), host::kDibArgb32,
                                         0xFFFFFF, GetDeviceCreatorUserData()));
  if (!device) return nullptr;
  device->DrawBitmap(work.get(), 0, 0);
  work.reset();
  if (!AddStampOnDevice(device.get(), *param.text)) return nullptr;
  return device->TakeBitmap();
}

}  // namespace tarvik
