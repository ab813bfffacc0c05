#include "decode/seal_data_type.h"

#include <cstdio>

#include "host/base/app_context.h"
#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_package.h"

namespace tarvik {

bool DetectSealDataType(const unsigned char* data, unsigned int length, host::ByteString& kind) {
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(data, length, 0));
  if (!reader) return false;
  // A picture that a codec recognises is "image" whatever else it could be.
  if (host::GetImageFormat(reader.get()) != host::kImageUnknown) {
    kind = "image";
    return true;
  }
  reader->SetPosition(0);
  if (host::OfdPackage::CheckFileType(reader.get()) == 1) {
    kind = "ofd";
    return true;
  }
  reader.reset();
  std::fputs("Found unknown seal image type\n", stdout);
  return false;
}

int CheckRasterImage(unsigned char* data, unsigned long length) {
  if (!host::AppContext::Get()) return 0;
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(data, length, 0));
  if (!reader) return 0;
  std::unique_ptr<host::Dib> dib(
      host::LoadBitmapFromStream(reader.get(), host::kImageUnknown, nullptr, nullptr, nullptr));
  return dib ? 1 : 0;
}

}  // namespace tarvik
