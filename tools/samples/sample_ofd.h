// OFD packages for the samples: a one-page signed document and a seal
// picture drawn as a small OFD package.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sample_signer.h"

namespace samples {

/// Files of a package: (path without a leading '/', bytes).
using PackageFiles = std::vector<std::pair<std::string, std::string>>;

/// A zip archive of `files`, deflated; "" on failure.
std::string Zip(const PackageFiles& files);

/// A 40 x 40 mm seal picture as an OFD package: a red ring, a star, the
/// maker's name along the upper arc and a label under the star.
std::string SealOfdPackage();

/// A signed A4 document of one page (page ID 2): a title, a few lines of text,
/// rules and boxes, and one seal signature with a StampAnnot at
/// 120 200 40 40 holding `seal` in a signed value of `layout` 1 or 4. Layout
/// 1 names its files relative to the signature's folder, layout 4 absolutely.
/// "" on failure.
std::string SignedDocument(int layout, const SealRecipe& seal, const Sm2Signer& signer,
                           std::string_view signingTime = "20250101120000Z");

/// The files of that document, signed over the given seal file (so tests can
/// change them before zipping); empty on failure.
PackageFiles SignedDocumentFiles(int layout, const std::string& seal, const Sm2Signer& signer,
                                 std::string_view signingTime = "20250101120000Z");

}  // namespace samples
