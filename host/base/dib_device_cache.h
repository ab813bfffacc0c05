// What a device derives from a bitmap's pixels (a converted copy), kept with
// the bitmap so that a bitmap drawn many times is converted once. Shared by
// the bitmap's unchanged clones, and so by several threads: every access
// holds the lock.
#pragma once

#include <memory>
#include <mutex>

#include "host/base/host_export.h"

namespace host {

class HOST_API DibDeviceCache {
 public:
  /// What was stored under `key` (a device kind's own tag), or null.
  std::shared_ptr<const void> Find(const void* key) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return key == key_ ? value_ : nullptr;
  }
  /// Keeps `value` under `key`, replacing what another key stored.
  void Store(const void* key, std::shared_ptr<const void> value) {
    std::lock_guard<std::mutex> lock(mutex_);
    key_ = key;
    value_ = std::move(value);
  }

 private:
  mutable std::mutex mutex_;
  const void* key_ = nullptr;
  std::shared_ptr<const void> value_;
};

}  // namespace host
