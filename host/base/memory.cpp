#include "host/base/memory.h"

#include <cstdlib>
#include <limits>

namespace host {

void* AllocMemory(size_t size) { return size ? std::malloc(size) : nullptr; }

void* ReallocMemory(void* p, size_t size) {
  if (size == 0) return nullptr;  // p stays valid: the caller frees it
  return std::realloc(p, size);
}

void FreeMemory(void* p) { std::free(p); }

bool CheckedMul(size_t a, size_t b, size_t& out) {
  if (a != 0 && b > std::numeric_limits<size_t>::max() / a) return false;
  out = a * b;
  return true;
}

namespace {
// Elements start past the header, aligned for any type.
constexpr size_t kPlexHeader = (sizeof(void*) + alignof(std::max_align_t) - 1) /
                               alignof(std::max_align_t) * alignof(std::max_align_t);
}  // namespace

Plex* Plex::Create(Plex*& head, unsigned int count, unsigned int elementSize) {
  size_t bytes = 0;
  if (!CheckedMul(count, elementSize, bytes) || bytes > std::numeric_limits<size_t>::max() - kPlexHeader)
    return nullptr;
  void* mem = AllocMemory(kPlexHeader + bytes);
  if (!mem) return nullptr;
  Plex* p = static_cast<Plex*>(mem);
  p->next_ = head;
  head = p;
  return p;
}

void* Plex::data() { return reinterpret_cast<unsigned char*>(this) + kPlexHeader; }

void Plex::FreeDataChain() {
  Plex* p = this;
  while (p) {
    Plex* next = p->next_;
    FreeMemory(p);
    p = next;
  }
}

}  // namespace host
