#include "host/base/binary_buf.h"

namespace host {

void BinaryBuf::AppendBuf(const void* data, int length) {
  if (!data || length <= 0) return;
  const uint8_t* p = static_cast<const uint8_t*>(data);
  bytes_.insert(bytes_.end(), p, p + length);
}

}  // namespace host
