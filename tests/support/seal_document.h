// A one-page document holding one signature's seal files, for the tests that
// ask the seal library for seal pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/ofd/ofd_multimedia.h"
#include "support/opened_document.h"

namespace testing_support {

inline constexpr const char* kSealFile = "/Doc_0/Signs/Sign_0/Seal.esl";
inline constexpr const char* kSignedFile = "/Doc_0/Signs/Sign_0/SignedValue.dat";

/// A PNG of a `width` x `height` 32-bit bitmap filled with `argb`.
std::string SolidPng(int width, int height, uint32_t argb);

/// A loaded document whose package holds `seal` at kSealFile and
/// `signedValue` at kSignedFile, with its empty first page parsed.
class SealDocument {
 public:
  explicit SealDocument(const std::string& seal = "SEAL", const std::string& signedValue = "SIGNED");
  /// A seal of this document with the given file locations.
  std::unique_ptr<host::OfdMultiMedia> Media(const char* primary = kSealFile,
                                             const char* secondary = kSignedFile);
  host::OfdDocument* document() { return opened_.doc.get(); }
  host::OfdPage* page() { return page_.get(); }

 private:
  Opened opened_;
  std::unique_ptr<host::OfdPage> page_;
};

}  // namespace testing_support
