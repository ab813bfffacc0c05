// Raw memory functions and blocks of fixed-size elements.
#pragma once

#include <cstddef>

#include "host/base/host_export.h"

namespace host {

/// malloc-like; null on failure or for a size of 0. Free with FreeMemory.
HOST_API void* AllocMemory(size_t size);
/// realloc-like; on failure null is returned and `p` stays valid.
HOST_API void* ReallocMemory(void* p, size_t size);
/// Frees memory from AllocMemory/ReallocMemory; null is ignored.
HOST_API void FreeMemory(void* p);
/// Deleter for std::unique_ptr over memory from AllocMemory.
struct FreeMemoryDeleter {
  void operator()(void* p) const { FreeMemory(p); }
};
/// Multiplies with overflow check; false on overflow.
HOST_API bool CheckedMul(size_t a, size_t b, size_t& out);

/// One block of `count` elements of `elementSize` bytes, linked in a chain
/// (the elements follow the header, suitably aligned).
class HOST_API Plex {
 public:
  /// Allocates a block, links it at the head of `head` and returns it; null
  /// (chain unchanged) on failure or overflow.
  static Plex* Create(Plex*& head, unsigned int count, unsigned int elementSize);
  /// Frees every block of the chain starting at this one.
  void FreeDataChain();
  void* data();
  Plex* next() const { return next_; }

 private:
  Plex* next_;
};

}  // namespace host
