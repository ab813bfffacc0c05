#include "host/oes/der_reader.h"

#include "host/base/wide_string.h"

namespace host {
namespace {

constexpr size_t kNoEnd = static_cast<size_t>(-1);

struct Header {
  uint8_t tag = 0;
  size_t size = 0;      // identifier and length octets
  size_t length = 0;    // content length when definite
  bool indefinite = false;
};

// Reads the identifier and length octets at `pos`; the content of a definite
// length is checked to lie within `data`.
bool ReadHeader(std::string_view data, size_t pos, Header& h) {
  if (pos >= data.size() || data.size() - pos < 2) return false;
  h.tag = static_cast<uint8_t>(data[pos]);
  // Identifiers of several octets never occur in the seal formats.
  if ((h.tag & 0x1F) == 0x1F) return false;
  const uint8_t first = static_cast<uint8_t>(data[pos + 1]);
  h.indefinite = false;
  if (first < 0x80) {
    h.size = 2;
    h.length = first;
  } else if (first == 0x80) {
    if ((h.tag & kDerConstructedBit) == 0) return false;
    h.size = 2;
    h.length = 0;
    h.indefinite = true;
    return true;
  } else {
    const size_t n = first & 0x7F;
    if (n > 4 || data.size() - pos - 2 < n) return false;
    size_t length = 0;
    for (size_t i = 0; i < n; ++i) length = (length << 8) | static_cast<uint8_t>(data[pos + 2 + i]);
    h.size = 2 + n;
    h.length = length;
  }
  return h.length <= data.size() - pos - h.size;
}

// Finds the end of an indefinite-length value whose content starts at
// `start`: the offset just past its end-of-contents octets, or kNoEnd.
size_t ScanIndefinite(std::string_view data, size_t start, int depth) {
  if (depth > DerReader::kMaxDepth) return kNoEnd;
  size_t p = start;
  while (p < data.size()) {
    Header h;
    if (!ReadHeader(data, p, h)) return kNoEnd;
    if (h.tag == kDerEndOfContents) {
      return (!h.indefinite && h.length == 0) ? p + 2 : kNoEnd;
    }
    if (h.indefinite) {
      p = ScanIndefinite(data, p + h.size, depth + 1);
      if (p == kNoEnd) return kNoEnd;
    } else {
      p += h.size + h.length;
    }
  }
  return kNoEnd;
}

bool AppendBmp(std::string_view s, std::string& out) {
  if (s.size() % 2 != 0) return false;
  for (size_t i = 0; i < s.size(); i += 2) {
    uint32_t c = (static_cast<uint8_t>(s[i]) << 8) | static_cast<uint8_t>(s[i + 1]);
    if (c >= 0xD800 && c < 0xDC00 && i + 3 < s.size()) {
      const uint32_t low = (static_cast<uint8_t>(s[i + 2]) << 8) | static_cast<uint8_t>(s[i + 3]);
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      }
    }
    WideString::AppendUtf8(c, out);
  }
  return true;
}

// Joins the parts of a string value of universal type `type` (primitive, or
// BER constructed from parts of the same type), nested at most kMaxDepth.
bool JoinParts(const DerElement& e, uint8_t type, int depth, std::string& out) {
  if (e.tag == type) {
    if (type == kDerBmpString) return AppendBmp(e.content, out);
    out.append(e.content);
    return true;
  }
  if (e.tag != (type | kDerConstructedBit) || depth >= DerReader::kMaxDepth) return false;
  DerReader parts(e.content, depth + 1, e.offset + e.headerSize);
  DerElement part;
  while (parts.Next(part)) {
    if (!JoinParts(part, type, depth + 1, out)) return false;
  }
  return parts.AtEnd();
}

}  // namespace

DerReader::DerReader(std::string_view data, int depth, size_t baseOffset)
    : data_(data), base_(baseOffset), depth_(depth), failed_(depth > kMaxDepth) {}

bool DerReader::Fail() {
  failed_ = true;
  return false;
}

bool DerReader::Parse(size_t pos, DerElement& out) const {
  Header h;
  if (!ReadHeader(data_, pos, h)) return false;
  if (h.tag == kDerEndOfContents) return false;
  out.tag = h.tag;
  out.offset = base_ + pos;
  out.headerSize = h.size;
  out.indefinite = h.indefinite;
  if (h.indefinite) {
    const size_t end = ScanIndefinite(data_, pos + h.size, depth_ + 1);
    if (end == kNoEnd) return false;
    out.content = data_.substr(pos + h.size, end - 2 - pos - h.size);
    out.encodedSize = end - pos;
  } else {
    out.content = data_.substr(pos + h.size, h.length);
    out.encodedSize = h.size + h.length;
  }
  return true;
}

bool DerReader::Next(DerElement& out) {
  if (failed_ || pos_ >= data_.size()) return false;
  if (!Parse(pos_, out)) return Fail();
  pos_ += out.encodedSize;
  return true;
}

bool DerReader::Next(uint8_t tag, DerElement& out) {
  if (!Next(out)) return false;
  return out.tag == tag || Fail();
}

uint8_t DerReader::PeekTag() const {
  DerElement e;
  if (failed_ || pos_ >= data_.size() || !Parse(pos_, e)) return 0;
  return e.tag;
}

DerReader DerReader::Enter(const DerElement& element) const {
  if (!element.IsConstructed() || failed_) {
    DerReader bad(std::string_view(), depth_ + 1, element.offset);
    bad.failed_ = true;
    return bad;
  }
  return DerReader(element.content, depth_ + 1, element.offset + element.headerSize);
}

int DerReader::CountRemaining() const {
  if (failed_) return -1;
  int count = 0;
  for (size_t p = pos_; p < data_.size(); ++count) {
    DerElement e;
    if (!Parse(p, e)) return -1;
    p += e.encodedSize;
  }
  return count;
}

bool DerReadInteger(const DerElement& e, int64_t& out) {
  if (e.tag != kDerInteger || e.content.empty() || e.content.size() > 8) return false;
  uint64_t v = static_cast<uint8_t>(e.content[0]) & 0x80 ? ~uint64_t{0} : 0;
  for (char c : e.content) v = (v << 8) | static_cast<uint8_t>(c);
  out = static_cast<int64_t>(v);
  return true;
}

bool DerReadString(const DerElement& e, std::string& out) {
  const uint8_t type = e.tag & ~kDerConstructedBit;
  switch (type) {
    case kDerUtf8String:
    case kDerPrintableString:
    case kDerT61String:
    case kDerIa5String:
    case kDerUtcTime:
    case kDerGeneralizedTime:
    case kDerVisibleString:
    case kDerBmpString:
      break;
    default:
      return false;
  }
  std::string text;
  if (!JoinParts(e, type, 0, text)) return false;
  out = std::move(text);
  return true;
}

bool DerReadOctets(const DerElement& e, std::string& out) {
  std::string bytes;
  if (!JoinParts(e, kDerOctetString, 0, bytes)) return false;
  out = std::move(bytes);
  return true;
}

bool DerReadBitString(const DerElement& e, std::string_view& out) {
  if (e.tag != kDerBitString || e.content.empty() || static_cast<uint8_t>(e.content[0]) > 7) {
    return false;
  }
  out = e.content.substr(1);
  return true;
}

bool DerReadObjectId(const DerElement& e, std::string& out) {
  if (e.tag != kDerObjectId || e.content.empty()) return false;
  std::string text;
  uint64_t arc = 0;
  bool first = true;
  for (size_t i = 0; i < e.content.size(); ++i) {
    const uint8_t b = static_cast<uint8_t>(e.content[i]);
    if (arc > (~uint64_t{0} >> 7)) return false;
    arc = (arc << 7) | (b & 0x7F);
    if (b & 0x80) continue;
    if (first) {
      const uint64_t top = arc < 40 ? 0 : arc < 80 ? 1 : 2;
      text = std::to_string(top) + '.' + std::to_string(arc - top * 40);
      first = false;
    } else {
      text += '.' + std::to_string(arc);
    }
    arc = 0;
  }
  // The last octet must close its arc.
  if (static_cast<uint8_t>(e.content.back()) & 0x80) return false;
  out = std::move(text);
  return true;
}

}  // namespace host
