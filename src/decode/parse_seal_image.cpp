#include <memory>

#include "decode/ofd_seal_renderer.h"
#include "decode/seal_data_type.h"
#include "host/base/codec.h"
#include "tarvik/tarvik.h"

namespace tarvik {

Dib* ParseSealImage(unsigned char* data, unsigned int length, int width, int height,
                    int resolution, bool& isOfd) {
  if (!data || length == 0) return nullptr;
  host::ByteString kind;
  if (!DetectSealDataType(data, length, kind)) return nullptr;
  if (kind.CompareNoCase("ofd") == 0) {
    // The package renderer counts lengths in a signed 32-bit int.
    Dib* dib = length > 0x7FFFFFFFu ? nullptr
                                    : RenderOfdSealImage(data, static_cast<int>(length), width,
                                                         height, resolution);
    isOfd = true;
    return dib;
  }
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(data, length, 0));
  Dib* dib = reader ? host::LoadBitmapFromStream(reader.get(), host::kImageUnknown, nullptr,
                                                 nullptr, nullptr)
                    : nullptr;
  reader.reset();
  isOfd = false;
  return dib;
}

}  // namespace tarvik
