// MultiMedia resources: images (and seal data) stored as files of a package.
#pragma once

#include <cstdint>
#include <string>

#include "host/base/byte_string.h"
#include "host/base/host_export.h"

namespace host {

class OfdResourceContainer;

/// A multimedia resource. An image names one file (`PrimaryLoc`); a seal
/// names the seal file and the signed-value file (`PrimaryLoc` and
/// `SecondaryLoc`). Locations are package locations as LoadRawStream takes
/// them, normally absolute ("/Doc_0/Res/image_1.png"). A plain value class:
/// whoever makes one fills the fields.
class HOST_API OfdMultiMedia {
 public:
  uint32_t id = 0;
  /// Type as written: "Image", "Audio", "Video"; "Seal" marks seal data.
  ByteString type;
  /// Format as written ("PNG", "JPEG", "GIF", ...); often empty.
  ByteString format;
  ByteString PrimaryLoc;
  ByteString SecondaryLoc;
  /// The container that holds the resource (a document or a page's
  /// resources); its GetDocument leads to the package. Not owned.
  OfdResourceContainer* ResourceContainer = nullptr;

  bool IsSeal() const { return type == "Seal"; }
  /// Reads the file at PrimaryLoc whole; false (out empty) when there is no
  /// container, document or package, or the file is missing or unreadable.
  bool LoadData(std::string& out) const;
  /// As LoadData, for SecondaryLoc.
  bool LoadSecondaryData(std::string& out) const;
};

}  // namespace host
