#include "der_writer.h"

#include <string>
#include <vector>

namespace samples::der {

std::string Tlv(uint8_t tag, std::string_view content) {
  std::string out(1, static_cast<char>(tag));
  const size_t n = content.size();
  if (n < 0x80) {
    out += static_cast<char>(n);
  } else {
    std::string len;
    for (size_t v = n; v > 0; v >>= 8) len.insert(len.begin(), static_cast<char>(v & 0xFF));
    out += static_cast<char>(0x80 | len.size());
    out += len;
  }
  out.append(content);
  return out;
}

std::string Sequence(std::initializer_list<std::string_view> parts) {
  std::string content;
  for (std::string_view p : parts) content.append(p);
  return Tlv(0x30, content);
}

std::string Context(int n, std::initializer_list<std::string_view> parts) {
  std::string content;
  for (std::string_view p : parts) content.append(p);
  return Tlv(static_cast<uint8_t>(0xA0 | n), content);
}

std::string Integer(int64_t value) {
  // Two's complement, big-endian, in the fewest octets that keep the sign.
  std::string bytes;
  uint64_t v = static_cast<uint64_t>(value);
  for (int i = 0; i < 8; ++i, v >>= 8) bytes.insert(bytes.begin(), static_cast<char>(v & 0xFF));
  size_t skip = 0;
  while (skip + 1 < bytes.size()) {
    const auto b0 = static_cast<uint8_t>(bytes[skip]), b1 = static_cast<uint8_t>(bytes[skip + 1]);
    if ((b0 == 0x00 && !(b1 & 0x80)) || (b0 == 0xFF && (b1 & 0x80))) {
      ++skip;
    } else {
      break;
    }
  }
  return Tlv(0x02, std::string_view(bytes).substr(skip));
}

std::string Ia5String(std::string_view text) { return Tlv(0x16, text); }
std::string Utf8String(std::string_view text) { return Tlv(0x0C, text); }
std::string OctetString(std::string_view bytes) { return Tlv(0x04, bytes); }
std::string BitString(std::string_view bytes) {
  // No unused bits: a leading zero byte, then the bits.
  std::string content;
  content.reserve(bytes.size() + 1);
  content.push_back('\0');
  content.append(bytes.data(), bytes.size());
  return Tlv(0x03, content);
}
std::string UtcTime(std::string_view text) { return Tlv(0x17, text); }
std::string GeneralizedTime(std::string_view text) { return Tlv(0x18, text); }

std::string ObjectId(std::string_view dotted) {
  std::vector<uint64_t> arcs;
  uint64_t arc = 0;
  for (char c : dotted) {
    if (c == '.') {
      arcs.push_back(arc);
      arc = 0;
    } else {
      arc = arc * 10 + static_cast<uint64_t>(c - '0');
    }
  }
  arcs.push_back(arc);
  std::string content;
  for (size_t i = 1; i < arcs.size(); ++i) {
    uint64_t v = i == 1 ? arcs[0] * 40 + arcs[1] : arcs[i];
    std::string base128(1, static_cast<char>(v & 0x7F));
    for (v >>= 7; v > 0; v >>= 7) base128.insert(base128.begin(), static_cast<char>(0x80 | (v & 0x7F)));
    content += base128;
  }
  return Tlv(0x06, content);
}

}  // namespace samples::der
