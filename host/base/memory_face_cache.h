// Faces opened from font bytes (fonts embedded in documents), kept for the
// process so that the same bytes, met again in another render or document,
// give the same face: FreeType parses them once and cairo's glyph cache,
// keyed by face, keeps its glyphs. Bounded in bytes, least recently used
// first out. Thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "host/base/host_export.h"

namespace host {

class FaceSource;

class HOST_API MemoryFaceCache {
 public:
  static constexpr size_t kDefaultMaxBytes = size_t{32} << 20;

  explicit MemoryFaceCache(size_t maxBytes = kDefaultMaxBytes) : maxBytes_(maxBytes) {}
  MemoryFaceCache(const MemoryFaceCache&) = delete;
  MemoryFaceCache& operator=(const MemoryFaceCache&) = delete;

  /// The face kept for exactly these bytes and face index, or null.
  std::shared_ptr<const FaceSource> Find(const uint8_t* data, size_t size, int faceIndex);
  /// Keeps `face` for these bytes (copied), dropping the least recently
  /// used faces past the byte bound; bytes larger than the bound are not kept.
  void Add(const uint8_t* data, size_t size, int faceIndex, std::shared_ptr<const FaceSource> face);

 private:
  struct Entry {
    size_t hash;
    int faceIndex;
    std::string bytes;
    std::shared_ptr<const FaceSource> face;
  };
  std::mutex mutex_;
  std::list<Entry> entries_;  // most recently used first
  size_t bytes_ = 0;
  const size_t maxBytes_;
};

}  // namespace host
