#include "host/base/byte_string.h"

#include <cstring>

namespace host {

int ByteString::Compare(std::string_view other) const {
  const int r = std::string_view(str_).compare(other);
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int ByteString::CompareNoCase(std::string_view other) const {
  const size_t n = std::min(str_.size(), other.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = static_cast<unsigned char>(str_[i]);
    unsigned char y = static_cast<unsigned char>(other[i]);
    if (x >= 'A' && x <= 'Z') x = static_cast<unsigned char>(x + 32);
    if (y >= 'A' && y <= 'Z') y = static_cast<unsigned char>(y + 32);
    if (x != y) return x < y ? -1 : 1;
  }
  if (str_.size() == other.size()) return 0;
  return str_.size() < other.size() ? -1 : 1;
}

unsigned int HashKey(const ByteString& key) {
  // FNV-1a: cheap, and good enough spread for short location strings.
  unsigned int h = 2166136261u;
  for (unsigned char ch : key.view()) {
    h ^= ch;
    h *= 16777619u;
  }
  return h;
}

unsigned int CalcHashTableSize(int count) {
  // An odd count keeps the modulo from discarding the hash's low bits the way
  // a power of two would, and grows by exactly what the caller asked for.
  constexpr unsigned int kMax = (1u << 24) - 3;
  if (count < 3) return 3;
  const unsigned int n = static_cast<unsigned int>(count);
  if (n >= kMax) return kMax;
  return n | 1u;
}

}  // namespace host
