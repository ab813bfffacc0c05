#include "host/base/shared_image_cache.h"

namespace host {

std::shared_ptr<const Dib> SharedImageCache::Find(const std::string& key) {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto it = index_.find(key);
  if (it == index_.end()) return nullptr;
  order_.splice(order_.begin(), order_, it->second);
  return it->second->dib;
}

void SharedImageCache::Store(const std::string& key, std::shared_ptr<const Dib> dib) {
  if (!dib) return;
  const uint64_t bytes = static_cast<uint64_t>(dib->GetPitch()) * static_cast<uint64_t>(dib->GetHeight());
  std::lock_guard<std::mutex> lock(mutex_);
  if (const auto it = index_.find(key); it != index_.end()) {
    bytes_ -= it->second->bytes;
    order_.erase(it->second);
    index_.erase(it);
  }
  if (bytes > maxBytes_) return;
  order_.push_front(Entry{key, std::move(dib), bytes});
  index_[key] = order_.begin();
  bytes_ += bytes;
  while (bytes_ > maxBytes_) {
    const Entry& last = order_.back();
    bytes_ -= last.bytes;
    index_.erase(last.key);
    order_.pop_back();
  }
}

uint64_t SharedImageCache::GetByteCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return bytes_;
}

size_t SharedImageCache::GetCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return order_.size();
}

}  // namespace host
