// Electronic seals and seal signatures in their two public DER layouts:
// version 1 (SESeal / SES_Signature of two fields) and version 4 (SES_Seal /
// SES_Signature of four or five fields). The layout is told from the
// structure, not from the version numbers inside, which real files set to 1,
// 2, 4 or 5 in either layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

/// Outcome of a seal or signature parse.
enum class SesStatus : int {
  kOk = 0,
  kEmpty = 1,      // no bytes
  kMalformed = 2,  // the encoding is broken (lengths, tags, nesting)
  kNotSes = 3,     // well-formed, but not a seal or signature of either layout
};

/// A parse result: a status, the offset of the value where parsing stopped
/// and a short static description ("" on success).
struct HOST_API SesResult {
  SesStatus status = SesStatus::kOk;
  size_t offset = 0;
  const char* description = "";
  explicit operator bool() const { return status == SesStatus::kOk; }
};

/// SES_ESPictrueInfo: the seal's picture as stored.
struct HOST_API SesPicture {
  std::string type;  // as written: "PNG", "png", "ofd", "GIF", "bmp", ...
  std::string data;  // the picture file's bytes
  int width = 0;     // millimetres; 0 when negative or out of range
  int height = 0;
};

/// The fields of a seal that a viewer shows. Strings are UTF-8; dates are
/// the UTCTime or GeneralizedTime text as written.
struct HOST_API SesSeal {
  int layout = 0;             // 1 (two fields) or 4 (four fields)
  int64_t headerVersion = 0;  // SES_Header version as written
  std::string headerId;       // "ES"
  std::string vid;            // maker's identifier
  std::string esID;
  int64_t type = 0;           // SES_ESPropertyInfo type
  std::string name;
  std::string createDate;
  std::string validStart;
  std::string validEnd;
  SesPicture picture;
  std::string signatureAlgorithm;  // dotted OID of the maker's signature; may be empty
};

/// A seal signature (the signed-value file of an OFD signature).
struct HOST_API SesSignature {
  int layout = 0;         // 1 (two fields) or 4 (four or five fields)
  int64_t version = 0;    // TBS_Sign version as written
  SesSeal seal;           // the seal it was made with
  std::string timeInfo;   // GeneralizedTime text, or the bytes of a v1 BIT STRING
  std::string propertyInfo;
  std::string signatureAlgorithm;  // dotted OID; may be empty
};

/// Parses a seal file (SESeal or SES_Seal, DER or BER). On failure `out` is
/// left unchanged. Bytes after the seal are ignored. Thread-safe; never
/// prints; reads nothing outside `der`.
HOST_API SesResult ParseSesSeal(std::string_view der, SesSeal& out);

/// Parses a signed-value file (SES_Signature of either layout) with the seal
/// inside it. PKCS#7 ContentInfo, a raw SM2 SEQUENCE{r, s} and other values
/// give kNotSes. On failure `out` is left unchanged. Thread-safe; never
/// prints; reads nothing outside `der`.
HOST_API SesResult ParseSesSignature(std::string_view der, SesSignature& out);

}  // namespace host
