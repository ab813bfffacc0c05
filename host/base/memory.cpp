#include "host/base/memory.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>

#include "host/base/allocation_failure.h"

namespace host {

namespace {

// Allocations to go before the injected failure; 0 or less when none is armed.
std::atomic<int64_t> gFailCountdown{0};

bool InjectedFailure() {
  if (gFailCountdown.load(std::memory_order_relaxed) <= 0) return false;
  return gFailCountdown.fetch_sub(1, std::memory_order_relaxed) == 1;
}

}  // namespace

int64_t FailNthAllocation(int64_t n) {
  return std::max<int64_t>(0, gFailCountdown.exchange(std::max<int64_t>(n, 0)));
}

void* AllocMemory(size_t size) {
  if (size == 0 || InjectedFailure()) return nullptr;
  return std::malloc(size);
}

void* ReallocMemory(void* p, size_t size) {
  // On failure p stays valid: the caller frees it.
  if (size == 0 || InjectedFailure()) return nullptr;
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
