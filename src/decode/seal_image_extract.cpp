#include "decode/seal_image_extract.h"

#include <memory>
#include <string>

#include "decode/seal_data_type.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_resource.h"
#include "tarvik/tarvik.h"

namespace tarvik {

namespace {

// The stream's bytes, or nothing for a missing or empty stream or one that
// keeps no buffer.
std::string StreamBytes(host::StreamReader* stream) {
  if (!stream) return {};
  const uint64_t size = stream->GetSize();
  const uint8_t* bytes = stream->GetBuffer();
  if (size == 0 || !bytes) return {};
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
}

}  // namespace

bool ExtractSealImageData(host::StreamReader* primary, host::StreamReader* secondary,
                          int renderMode, host::OESPlugin* plugin, void* userData,
                          host::BinaryBuf& picture, host::ByteString& type, int* width,
                          int* height) {
  if (!primary && !secondary) return false;
  const std::string secondaryData = StreamBytes(secondary);
  const std::string primaryData = StreamBytes(primary);
  plugin->ImageCheckCallback = CheckRasterImage;

  std::string pictureOut;
  std::string typeOut;
  if (plugin->GetPrimarySealImage(userData, primaryData, renderMode, pictureOut, typeOut, *width,
                                  *height) != 0 &&
      plugin->GetSecondarySealImage(userData, secondaryData, renderMode, pictureOut, typeOut,
                                    *width, *height) != 0 &&
      plugin->GetCombinedSealImage(primaryData, secondaryData, pictureOut, typeOut, *width,
                                   *height) != 0) {
    return false;
  }
  picture.AppendBuf(pictureOut.data(), static_cast<int>(pictureOut.size()));
  type = host::ByteString(typeOut.c_str());
  return true;
}

Dib* ParseSealImage(const host::OfdMultiMedia* media, int renderMode, host::OESPlugin* plugin,
                    void* userData, int width, int height, int resolution, bool& isOfd) {
  if (!media || !plugin || !media->ResourceContainer) return nullptr;
  host::BinaryBuf picture;
  host::ByteString type;
  int pictureWidth = 0;
  int pictureHeight = 0;

  host::OfdDocument* document = media->ResourceContainer->GetDocument();
  host::OfdPackage* package = document ? document->GetPackage() : nullptr;
  if (!package) return nullptr;
  host::StreamReaderPtr primary;
  host::StreamReaderPtr secondary;
  if (media->PrimaryLoc.GetLength() > 0)
    primary.reset(package->LoadRawStream(document, media->PrimaryLoc, 1));
  if (media->SecondaryLoc.GetLength() > 0)
    secondary.reset(package->LoadRawStream(document, media->SecondaryLoc, 1));

  const bool extracted =
      ExtractSealImageData(primary.get(), secondary.get(), renderMode, plugin, userData, picture,
                           type, &pictureWidth, &pictureHeight);
  secondary.reset();
  primary.reset();
  if (!extracted) return nullptr;
  return ParseSealImage(picture.GetBuffer(), static_cast<unsigned int>(picture.GetSize()), width,
                        height, resolution, isOfd);
}

}  // namespace tarvik
