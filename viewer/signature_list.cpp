#include "signature_list.h"

#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_seal.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"

namespace tarvik::viewer {

namespace {

// What picture bytes are, from their first bytes (no decoding).
std::string SniffPicture(const std::string& bytes) {
  host::StreamReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(
      reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), 0));
  if (!reader) return "unknown";
  switch (host::GetImageFormat(reader.get())) {
    case host::kImageBmp: return "BMP";
    case host::kImageJpeg: return "JPEG";
    case host::kImagePng: return "PNG";
    case host::kImageGif: return "GIF";
    case host::kImageTiff: return "TIFF";
    case host::kImageJbig2: return "JBIG2";
    default: break;
  }
  return host::OfdPackage::CheckFileType(reader.get()) == 1 ? "OFD package" : "unknown";
}

void TakeSeal(const host::SesSeal& seal, SignatureInfo& info) {
  info.sesVersion = seal.layout;
  info.sealName = seal.name;
  info.sealId = seal.esID;
  info.validStart = seal.validStart;
  info.validEnd = seal.validEnd;
  info.pictureType = seal.picture.type;
  info.pictureFormat = SniffPicture(seal.picture.data);
  info.pictureWidth = seal.picture.width;
  info.pictureHeight = seal.picture.height;
}

// Fills the seal fields from the signed value, else from the seal file.
void ReadSealFiles(host::OfdDocument& document, SignatureInfo& info) {
  host::OfdPackage* package = document.GetPackage();
  std::string bytes;
  std::string valueProblem;
  if (!info.signedValueLocation.empty()) {
    host::SesSignature value;
    if (!package->LoadRawData(&document, info.signedValueLocation, bytes)) {
      valueProblem = info.signedValueLocation + " cannot be read";
    } else if (const host::SesResult r = host::ParseSesSignature(bytes, value); !r) {
      valueProblem = info.signedValueLocation + " is not a seal signature (" + r.description +
                     " at offset " + std::to_string(r.offset) + ")";
    } else {
      TakeSeal(value.seal, info);
      info.signingTime = value.timeInfo;
      return;
    }
  }
  if (!info.sealLocation.empty()) {
    host::SesSeal seal;
    if (!package->LoadRawData(&document, info.sealLocation, bytes)) {
      info.problems.push_back(info.sealLocation + " cannot be read");
    } else if (const host::SesResult r = host::ParseSesSeal(bytes, seal); !r) {
      info.problems.push_back(info.sealLocation + " is not a seal (" + r.description + " at offset " +
                              std::to_string(r.offset) + ")");
    } else {
      TakeSeal(seal, info);
      return;
    }
  }
  // A "Sign" signature holds a plain signature value, not a seal: not a fault.
  if (!valueProblem.empty() && info.type != "Sign") info.problems.push_back(valueProblem);
}

}  // namespace

std::vector<SignatureInfo> ListSignatures(host::OfdDocument& document,
                                          const host::OfdSignatures* signatures) {
  std::vector<SignatureInfo> list;
  if (!signatures) return list;
  for (const host::OfdSignatureInfo& sig : signatures->GetSignatures()) {
    SignatureInfo info;
    info.id = sig.id;
    info.type = sig.type;
    info.location = std::string(sig.location.view());
    info.provider = sig.providerName;
    info.signatureMethod = sig.signatureMethod;
    info.signatureDateTime = sig.signatureDateTime;
    info.checkMethod = sig.checkMethod;
    info.referenceCount = static_cast<int>(sig.references.size());
    info.sealLocation = std::string(sig.sealLocation.view());
    info.signedValueLocation = std::string(sig.signedValueLocation.view());
    info.problems = sig.skippedStampAnnots;
    for (const host::OfdStampAnnotInfo& a : sig.stampAnnots) {
      info.stamps.push_back({a.id, a.pageId, a.pageIndex, a.boundary, a.clip});
      if (a.pageIndex < 0) {
        info.problems.push_back("StampAnnot " + a.id + ": PageRef " + std::to_string(a.pageId) +
                                " names no page of the document");
      }
    }
    ReadSealFiles(document, info);
    list.push_back(std::move(info));
  }
  for (const host::OfdSkippedSignature& skipped : signatures->GetSkipped()) {
    SignatureInfo info;
    info.id = skipped.id;
    info.location = skipped.location;
    info.usable = false;
    info.problems.push_back(skipped.reason);
    list.push_back(std::move(info));
  }
  return list;
}

}  // namespace tarvik::viewer
