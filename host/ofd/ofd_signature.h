// Signatures of OFD documents: Signatures.xml, each Signature.xml it lists,
// and the seal annotations their StampAnnot elements place on pages.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/base/byte_string.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"

namespace host {

class OfdDocument;
class OfdPage;

/// A StampAnnot: where a signature's seal appears on a page.
struct HOST_API OfdStampAnnotInfo {
  std::string id;        // ID as written ("1", "s002")
  uint32_t pageId = 0;   // PageRef: a page ID, not an index
  int pageIndex = -1;    // the index of that page; -1 when no page has the ID
  /// Boundary (left, top, right, bottom) in page millimetres; width and
  /// height are positive.
  GRect boundary;
  /// Clip relative to the boundary's top-left corner, in millimetres; a null
  /// rectangle when absent.
  GRect clip;
};

/// A Reference of SignedInfo/References: a signed file and its digest.
struct HOST_API OfdSignatureReference {
  std::string fileRef;     // as written
  std::string checkValue;  // decoded from base64; empty when not valid base64
};

/// One signature of a document. Locations are absolute package locations
/// ("/Doc_0/Signs/Sign_0/SignedValue.dat"), resolved against the folder of
/// the file that names them.
struct HOST_API OfdSignatureInfo {
  std::string id;    // Signatures.xml ID as written
  std::string type;  // "Seal" (also when absent) or "Sign"
  ByteString location;  // the Signature.xml
  std::string providerName;
  std::string providerVersion;
  std::string providerCompany;
  std::string signatureMethod;
  std::string signatureDateTime;
  std::string checkMethod;  // References/@CheckMethod
  std::vector<OfdSignatureReference> references;
  std::vector<OfdStampAnnotInfo> stampAnnots;
  /// Seal/BaseLoc: the seal file; empty when the signature names none or
  /// the file is not in the package.
  ByteString sealLocation;
  /// SignedValue: the signature file; empty when it is not in the package.
  ByteString signedValueLocation;
  /// StampAnnots left out, each as "StampAnnot <ID>: <reason>".
  std::vector<std::string> skippedStampAnnots;
};

/// A signature that Signatures.xml lists but that cannot be used, and why.
struct HOST_API OfdSkippedSignature {
  std::string id;        // Signatures.xml ID as written
  std::string location;  // BaseLoc as written
  std::string reason;
};

/// The signatures of a document, read once. Entries whose Signature.xml is
/// missing, malformed, outside the package, or names neither a seal file nor
/// a signed value that exists, are left out; so are StampAnnots with a
/// missing or malformed Boundary (not finite, width or height not positive)
/// or a malformed Clip. GetSkipped and skippedStampAnnots say why. Never
/// prints. Immutable after loading: const methods may be called from several
/// threads.
class HOST_API OfdSignatures {
 public:
  /// Most signatures read from one Signatures.xml; later ones are ignored.
  static constexpr size_t kMaxSignatures = 1000;
  /// Most StampAnnots read per signature (a seal riding across pages has one
  /// per page).
  static constexpr size_t kMaxStampAnnots = 4096;
  /// Most References read per signature.
  static constexpr size_t kMaxReferences = 10000;

  /// Reads the signatures of a loaded document. Null when the document is
  /// null or has no Signatures.xml, or the file is missing or malformed; a
  /// Signatures.xml that lists nothing usable gives an empty list.
  static std::unique_ptr<OfdSignatures> Load(const OfdDocument* document);

  const std::vector<OfdSignatureInfo>& GetSignatures() const { return signatures_; }
  /// The listed signatures that were left out, in list order, with reasons.
  const std::vector<OfdSkippedSignature>& GetSkipped() const { return skipped_; }
  int CountSignatures() const { return static_cast<int>(signatures_.size()); }

  /// Adds to `page` one OfdAnnotationSeal for each StampAnnot whose PageRef is
  /// the page's ID, in signature order: its Boundary, Clip and ID, bound to a
  /// new "Seal" OfdMultiMedia (PrimaryLoc the seal file, SecondaryLoc the
  /// signed value, ResourceContainer the page's document). The page must
  /// belong to the document these signatures were read from. Returns the
  /// number added (0 for a null page).
  int AttachSealAnnotations(OfdPage* page) const;

 private:
  std::vector<OfdSignatureInfo> signatures_;
  std::vector<OfdSkippedSignature> skipped_;
};

/// Reads the signatures of the page's document and attaches the page's seal
/// annotations (OfdSignatures::Load, then AttachSealAnnotations). Returns
/// the number added; 0 when there are none or anything is missing.
HOST_API int AttachSignatureSeals(OfdPage* page);

}  // namespace host
