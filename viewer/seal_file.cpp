#include "tarvik/viewer/seal_file.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <new>

#include "device_creator.h"
#include "fail.h"
#include "host/base/binary_buf.h"
#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/oes/ses_seal.h"
#include "host/ofd/ofd_package.h"
#include "seal_problem.h"

namespace tarvik::viewer {

namespace {

// A picture the seal library can take directly: a known raster format or an
// OFD package.
SealFileKind PictureKind(const std::string& bytes) {
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(
      reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), 0));
  if (!reader) return SealFileKind::kUnknown;
  if (host::GetImageFormat(reader.get()) != host::kImageUnknown) return SealFileKind::kRaster;
  if (host::OfdPackage::CheckFileType(reader.get()) == 1) return SealFileKind::kOfd;
  return SealFileKind::kUnknown;
}

}  // namespace

std::unique_ptr<host::Dib> DecodeSeal(const void* data, size_t size, const SealDecodeOptions& options,
                                      Error* error, SealFileKind* kind) {
  if (kind) *kind = SealFileKind::kUnknown;
  try {
    if (!data || size == 0) {
      Fail(error, Status::kBadArgument, "no seal bytes");
      return nullptr;
    }
    if (size > std::numeric_limits<unsigned int>::max()) {
      Fail(error, Status::kTooLarge, "seal data larger than 4 GiB");
      return nullptr;
    }
    std::string bytes(static_cast<const char*>(data), size);
    SealFileKind found = PictureKind(bytes);
    if (found == SealFileKind::kUnknown) {
      // A seal file, or a signed value with the seal inside.
      host::SesSeal seal;
      host::SesSignature value;
      if (host::ParseSesSeal(bytes, seal)) {
        found = SealFileKind::kSeal;
        bytes = std::move(seal.picture.data);
      } else if (host::ParseSesSignature(bytes, value)) {
        found = SealFileKind::kSignedValue;
        bytes = std::move(value.seal.picture.data);
      } else {
        Fail(error, Status::kBadSeal,
             "neither a picture, an OFD seal package, a seal file nor a signed value");
        return nullptr;
      }
      if (bytes.empty()) {
        if (kind) *kind = found;
        Fail(error, Status::kBadSeal, "the seal holds no picture");
        return nullptr;
      }
    }
    if (kind) *kind = found;
    InstallBitmapDeviceCreator();
    auto* pixels = reinterpret_cast<unsigned char*>(bytes.data());
    const auto length = static_cast<unsigned int>(bytes.size());
    std::unique_ptr<host::Dib> dib;
    if (options.image || options.stamp) {
      RenderSealParam::ImageParam image;
      if (options.image) image = *options.image;
      // Without stamp text, an empty stamp in a font that loads draws nothing.
      RenderSealParam::TextParam stamp;
      stamp.fontName = U"SimSun";
      if (options.stamp) stamp = *options.stamp;
      RenderSealParam param;
      param.image = &image;
      param.text = &stamp;
      dib.reset(RenderSealImageWithStamp(pixels, length, param));
    } else {
      bool isOfd = false;
      dib.reset(ParseSealImage(pixels, length, options.width, options.height, options.dpi, isOfd));
    }
    if (!dib) {
      Fail(error, Status::kBadSeal, PictureProblem(bytes));
      return nullptr;
    }
    return dib;
  } catch (const std::bad_alloc&) {
    Fail(error, Status::kOutOfMemory, "out of memory");
    return nullptr;
  }
}

bool Digest(const void* data, size_t size, const std::string& algorithm, std::string& digest,
            Error* error) {
  if (!data && size != 0) return Fail(error, Status::kBadArgument, "no bytes");
  if (size > std::numeric_limits<unsigned int>::max()) {
    return Fail(error, Status::kTooLarge, "more than 4 GiB to digest");
  }
  try {
    host::SesPlugin plugin;
    host::BinaryBuf out;
    unsigned char empty = 0;
    auto* bytes = size ? static_cast<unsigned char*>(const_cast<void*>(data)) : &empty;
    const int code =
        CalcDigest(bytes, static_cast<unsigned int>(size), algorithm.c_str(), &plugin, nullptr, out);
    if (code != 0) {
      return Fail(error, Status::kUnsupported,
                  "unknown or failed digest algorithm '" + algorithm + "' (code " +
                      std::to_string(code) + ")");
    }
    digest.assign(reinterpret_cast<const char*>(out.GetBuffer()), static_cast<size_t>(out.GetSize()));
    return true;
  } catch (const std::bad_alloc&) {
    return Fail(error, Status::kOutOfMemory, "out of memory");
  }
}

}  // namespace tarvik::viewer
