// A growable byte buffer.
#pragma once

#include <cstdint>
#include <vector>

#include "host/base/host_export.h"

namespace host {

class HOST_API BinaryBuf {
 public:
  /// Appends `length` bytes; a null pointer or a length <= 0 appends nothing.
  void AppendBuf(const void* data, int length);
  void Clear() { bytes_.clear(); }
  const uint8_t* GetBuffer() const { return bytes_.data(); }
  uint8_t* GetBuffer() { return bytes_.data(); }
  int GetSize() const { return static_cast<int>(bytes_.size()); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
};

}  // namespace host
