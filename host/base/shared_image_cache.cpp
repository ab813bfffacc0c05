#include "host/base/shared_image_cache.h"

namespace host {

void SharedImageCache::Store(const std::string& key, std::shared_ptr<const Dib> dib) {
  if (!dib) return;
  const uint64_t bytes = static_cast<uint64_t>(dib->GetPitch()) * static_cast<uint64_t>(dib->GetHeight());
  cache_.Store(key, std::move(dib), bytes);
}

}  // namespace host
