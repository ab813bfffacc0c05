// A small, strictly bounded reader of DER (and BER) encoded ASN.1 values, as
// seal and signature files carry them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

/// Identifier octets of the universal types the seal formats use (with the
/// constructed bit where the type is always constructed).
enum DerTag : uint8_t {
  kDerEndOfContents = 0x00,
  kDerBoolean = 0x01,
  kDerInteger = 0x02,
  kDerBitString = 0x03,
  kDerOctetString = 0x04,
  kDerNull = 0x05,
  kDerObjectId = 0x06,
  kDerUtf8String = 0x0C,
  kDerPrintableString = 0x13,
  kDerT61String = 0x14,
  kDerIa5String = 0x16,
  kDerUtcTime = 0x17,
  kDerGeneralizedTime = 0x18,
  kDerVisibleString = 0x1A,
  kDerBmpString = 0x1E,
  kDerSequence = 0x30,
  kDerSet = 0x31,
  kDerConstructedBit = 0x20,
  kDerContext0 = 0xA0,  // [0], constructed
};

/// One encoded value. `content` views the bytes between the header and the
/// end (for an indefinite length, up to but not including the end-of-contents
/// octets); it points into the reader's input, which must outlive it.
struct HOST_API DerElement {
  uint8_t tag = 0;           // the identifier octet
  size_t offset = 0;         // where the header starts in the outermost input
  size_t headerSize = 0;     // identifier and length octets
  size_t encodedSize = 0;    // header, content and any end-of-contents octets
  bool indefinite = false;   // BER indefinite length (30 80 ... 00 00)
  std::string_view content;

  bool IsConstructed() const { return (tag & kDerConstructedBit) != 0; }
  /// The whole encoding: header, content and end-of-contents octets.
  std::string_view Encoded(std::string_view outermost) const {
    return outermost.substr(offset, encodedSize);
  }
};

/// Reads the values of one level of an encoding, one after another. Every
/// length is checked against the bytes that remain before it is used;
/// identifiers of more than one octet, lengths of more than 4 octets, an
/// indefinite length on a primitive value and nesting deeper than kMaxDepth
/// are refused. A failure is sticky: once `Failed()`, Next returns false.
/// Holds no copy of the input. A value type; not thread-safe, but readers
/// over the same bytes may be used from several threads.
class HOST_API DerReader {
 public:
  /// Most levels of nesting, counted over Enter calls and over the levels an
  /// indefinite length must be scanned through to find its end.
  static constexpr int kMaxDepth = 32;

  /// A reader over `data` at nesting level `depth`; `baseOffset` is where
  /// `data` starts in the outermost input (for DerElement::offset).
  explicit DerReader(std::string_view data, int depth = 0, size_t baseOffset = 0);

  /// True when every byte has been read and nothing failed.
  bool AtEnd() const { return !failed_ && pos_ >= data_.size(); }
  bool Failed() const { return failed_; }
  /// Offset (in the outermost input) where reading stopped or failed.
  size_t Offset() const { return base_ + pos_; }

  /// Reads the next value; false at the end or on malformed input (then
  /// Failed() is true). An end-of-contents marker at this level is malformed.
  bool Next(DerElement& out);
  /// Reads the next value and checks its identifier; false (and failed) when
  /// it differs.
  bool Next(uint8_t tag, DerElement& out);
  /// The next value's identifier without reading it; 0 at the end or when
  /// the next header is malformed (which does not fail the reader).
  uint8_t PeekTag() const;
  /// A reader over a constructed value's content, one level deeper. The
  /// returned reader has already failed when `element` is primitive or the
  /// depth limit is reached.
  DerReader Enter(const DerElement& element) const;
  /// Number of values left at this level, counted without failing the
  /// reader; -1 when one of them is malformed.
  int CountRemaining() const;

 private:
  bool Parse(size_t pos, DerElement& out) const;
  bool Fail();

  std::string_view data_;
  size_t pos_ = 0;
  size_t base_ = 0;
  int depth_ = 0;
  bool failed_ = false;
};

/// A signed INTEGER of up to 8 content octets; false for an empty, longer or
/// non-INTEGER value.
HOST_API bool DerReadInteger(const DerElement& element, int64_t& out);
/// The text of a string or time value (UTF8String, IA5String,
/// PrintableString, T61String, VisibleString, UTCTime, GeneralizedTime;
/// BMPString converted to UTF-8, a lone surrogate to U+FFFD; a BER
/// constructed string joined from its parts). False for other types or
/// malformed parts.
HOST_API bool DerReadString(const DerElement& element, std::string& out);
/// The bytes of an OCTET STRING, primitive or (BER) constructed; false for
/// other types or malformed parts.
HOST_API bool DerReadOctets(const DerElement& element, std::string& out);
/// The bytes of a BIT STRING after its unused-bits octet; false when it is
/// empty or not a BIT STRING.
HOST_API bool DerReadBitString(const DerElement& element, std::string_view& out);
/// An OBJECT IDENTIFIER in dotted form ("1.2.156.10197.1.501"); false when
/// malformed or an arc exceeds 64 bits.
HOST_API bool DerReadObjectId(const DerElement& element, std::string& out);

}  // namespace host
