#include "seal_problem.h"

#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/oes/oes_plugin.h"
#include "host/oes/ses_seal.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_package.h"

namespace tarvik::viewer {

namespace {

std::string Where(const host::SesResult& r) {
  return std::string(r.description) + " at offset " + std::to_string(r.offset);
}

}  // namespace

std::string PictureProblem(const std::string& picture) {
  if (picture.empty()) return "the seal holds no picture";
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(
      reinterpret_cast<const uint8_t*>(picture.data()), picture.size(), 0));
  if (!reader) return "out of memory";
  const host::ImageFormat format = host::GetImageFormat(reader.get());
  if (format != host::kImageUnknown) {
    return "its picture (" + std::to_string(picture.size()) +
           " bytes) is damaged or too large to decode";
  }
  if (host::OfdPackage::CheckFileType(reader.get()) == 1) {
    return "its OFD seal picture cannot be rendered";
  }
  return "its picture is of an unknown kind";
}

std::string SealProblem(host::OESPlugin& plugin, const host::OfdMultiMedia& media) {
  std::string primary, secondary;
  const bool havePrimary = media.LoadData(primary);
  const bool haveSecondary = media.LoadSecondaryData(secondary);
  if (!havePrimary && !haveSecondary) {
    return "neither " + std::string(media.PrimaryLoc.view()) + " nor " +
           std::string(media.SecondaryLoc.view()) + " can be read";
  }
  std::string picture, type;
  int width = 0, height = 0;
  if (plugin.GetCombinedSealImage(primary, secondary, picture, type, width, height) == 0) {
    return PictureProblem(picture);
  }
  // Say what is wrong with the file that should have held the seal.
  if (haveSecondary) {
    host::SesSignature value;
    const host::SesResult r = host::ParseSesSignature(secondary, value);
    if (!r) return std::string(media.SecondaryLoc.view()) + " is not a seal signature (" + Where(r) + ")";
  }
  if (havePrimary) {
    host::SesSeal seal;
    const host::SesResult r = host::ParseSesSeal(primary, seal);
    if (!r) return std::string(media.PrimaryLoc.view()) + " is not a seal (" + Where(r) + ")";
  }
  return "the seal provider gives no picture";
}

}  // namespace tarvik::viewer
