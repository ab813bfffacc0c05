// JBIG2 decoding with jbig2dec: the first page of a JBIG2 file.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "host/base/codec_internal.h"
#include "host/base/memory.h"

// Last: this header defines `inline` away when it is not a macro already.
#include <jbig2.h>
#undef inline

namespace host {

namespace {

// The decoder allocates the page (and its dictionaries) as the headers say,
// before any data proves them: everything it allocates is capped.
constexpr size_t kMaxJbig2Memory = size_t{256} << 20;

// An allocator that counts live bytes and refuses to go past the cap. Each
// block carries its size in a header.
struct CappedAllocator {
  Jbig2Allocator base;  // first, so that the library's pointer converts back
  size_t used;
};

constexpr size_t kHeader = alignof(std::max_align_t);

CappedAllocator* CapOf(Jbig2Allocator* a) { return reinterpret_cast<CappedAllocator*>(a); }

size_t BlockSize(void* p) {
  size_t n;
  std::memcpy(&n, static_cast<uint8_t*>(p) - kHeader, sizeof(n));
  return n;
}

void* CappedRealloc(Jbig2Allocator* a, void* p, size_t size) {
  CappedAllocator* cap = CapOf(a);
  const size_t old = p ? BlockSize(p) : 0;
  if (size > kMaxJbig2Memory || cap->used - old + size > kMaxJbig2Memory) return nullptr;
  void* block = ReallocMemory(p ? static_cast<uint8_t*>(p) - kHeader : nullptr, size + kHeader);
  if (!block) return nullptr;
  cap->used = cap->used - old + size;
  std::memcpy(block, &size, sizeof(size));
  return static_cast<uint8_t*>(block) + kHeader;
}

void* CappedAlloc(Jbig2Allocator* a, size_t size) { return CappedRealloc(a, nullptr, size); }

void CappedFree(Jbig2Allocator* a, void* p) {
  if (!p) return;
  CapOf(a)->used -= BlockSize(p);
  FreeMemory(static_cast<uint8_t*>(p) - kHeader);
}

// Messages are dropped; failures show in the return values.
void Jbig2Silent(void*, const char*, Jbig2Severity, uint32_t) {}

struct Jbig2Deleter {
  void operator()(Jbig2Ctx* ctx) const { jbig2_ctx_free(ctx); }
};

}  // namespace

std::unique_ptr<Dib> DecodeJbig2(const uint8_t* data, size_t size) {
  static constexpr uint8_t kMagic[8] = {0x97, 0x4A, 0x42, 0x32, 0x0D, 0x0A, 0x1A, 0x0A};
  if (size < sizeof(kMagic) || std::memcmp(data, kMagic, sizeof(kMagic)) != 0) return nullptr;
  CappedAllocator allocator{{CappedAlloc, CappedFree, CappedRealloc}, 0};
  std::unique_ptr<Jbig2Ctx, Jbig2Deleter> ctx(jbig2_ctx_new(&allocator.base, static_cast<Jbig2Options>(0),
                                                            nullptr, Jbig2Silent, nullptr));
  if (!ctx) return nullptr;
  if (jbig2_data_in(ctx.get(), data, size) < 0) return nullptr;
  // Only a page whose end-of-page segment arrived is taken: a truncated file
  // gives none.
  Jbig2Image* page = jbig2_page_out(ctx.get());
  if (!page) return nullptr;
  auto release = [&](Jbig2Image* p) { jbig2_release_page(ctx.get(), p); };
  std::unique_ptr<Jbig2Image, decltype(release)> owned(page, release);

  if (!IsDibSizeAllowed(page->width, page->height)) return nullptr;
  const int width = static_cast<int>(page->width);
  const int height = static_cast<int>(page->height);
  auto dib = Dib::Create(width, height, kDibIndexed8);
  if (!dib) return nullptr;
  // A set bit is black.
  static constexpr uint32_t kPalette[2] = {0xFFFFFFFFu, 0xFF000000u};
  SetPaddedPalette(*dib, kPalette, 2);
  for (int y = 0; y < height; ++y) {
    const uint8_t* in = page->data + static_cast<size_t>(y) * page->stride;
    uint8_t* out = dib->GetScanline(y);
    for (int x = 0; x < width; ++x) out[x] = (in[x >> 3] >> (7 - (x & 7))) & 1;
  }
  return dib;
}

}  // namespace host
