// Decoded pictures kept across renders, keyed by where they come from, so
// that a picture drawn on every page, or on every repaint, is decoded once.
// Bounded in bytes; the least recently used go first. Thread-safe.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/base/dib.h"
#include "host/base/host_export.h"
#include "host/base/lru_cache.h"

namespace host {

class HOST_API SharedImageCache {
 public:
  /// Bytes of pixels kept at most (default 128 MiB).
  static constexpr uint64_t kDefaultMaxBytes = uint64_t{128} << 20;

  explicit SharedImageCache(uint64_t maxBytes = kDefaultMaxBytes) : cache_(maxBytes) {}
  SharedImageCache(const SharedImageCache&) = delete;
  SharedImageCache& operator=(const SharedImageCache&) = delete;

  /// The picture kept under `key`, now the most recently used; null when none.
  std::shared_ptr<const Dib> Find(const std::string& key) { return cache_.Find(key); }
  /// Keeps `dib` under `key` (replacing what was there) unless it alone
  /// exceeds the bound, then drops the least recently used until the total
  /// fits. The picture must not change afterwards: it is shared.
  void Store(const std::string& key, std::shared_ptr<const Dib> dib);

  uint64_t GetByteCount() const { return cache_.GetCost(); }
  size_t GetCount() const { return cache_.GetCount(); }

 private:
  LruCache<std::string, std::shared_ptr<const Dib>> cache_;
};

}  // namespace host
