#include "host/base/memory_face_cache.h"

#include <functional>
#include <string_view>

namespace host {

namespace {

size_t Hash(const uint8_t* data, size_t size) {
  return std::hash<std::string_view>()(std::string_view(reinterpret_cast<const char*>(data), size));
}

}  // namespace

std::shared_ptr<const FaceSource> MemoryFaceCache::Find(const uint8_t* data, size_t size,
                                                        int faceIndex) {
  if (!data || size == 0) return nullptr;
  const size_t hash = Hash(data, size);
  std::lock_guard<std::mutex> lock(mutex_);
  for (auto it = entries_.begin(); it != entries_.end(); ++it) {
    if (it->hash != hash || it->faceIndex != faceIndex ||
        it->bytes != std::string_view(reinterpret_cast<const char*>(data), size))
      continue;
    entries_.splice(entries_.begin(), entries_, it);
    return it->face;
  }
  return nullptr;
}

void MemoryFaceCache::Add(const uint8_t* data, size_t size, int faceIndex,
                          std::shared_ptr<const FaceSource> face) {
  if (!data || size == 0 || size > maxBytes_ || !face) return;
  Entry entry{Hash(data, size), faceIndex, std::string(reinterpret_cast<const char*>(data), size),
              std::move(face)};
  std::lock_guard<std::mutex> lock(mutex_);
  entries_.push_front(std::move(entry));
  bytes_ += size;
  while (bytes_ > maxBytes_ && !entries_.empty()) {
    bytes_ -= entries_.back().bytes.size();
    entries_.pop_back();
  }
}

}  // namespace host
