// The seal image cache of a Tarvik: raster seal bitmaps keyed by the location
// of the seal's data. Every operation holds the cache lock from start to end;
// the map takes its own lock only while it empties itself, always after ours.
#include "host/base/mutex.h"
#include "host/ofd/ofd_multimedia.h"
#include "tarvik/tarvik.h"

namespace tarvik {
namespace {

// The signed-value file identifies one signature's seal; a seal without one
// is known by its seal file. The key is a copy: entries outlive the resource.
host::ByteString CacheKey(const host::OfdMultiMedia* media) {
  return media->SecondaryLoc.IsEmpty() ? media->PrimaryLoc : media->SecondaryLoc;
}

}  // namespace

const Dib* Tarvik::GetCachedSealImage(const host::OfdMultiMedia* media) {
  if (!media) return nullptr;
  host::MutexLock lock(cacheLock_);
  uint32_t hash = 0;
  const auto* assoc = cache_.Lookup(CacheKey(media), hash);
  return assoc ? assoc->value : nullptr;
}

bool Tarvik::AddSealImageToCache(const host::OfdMultiMedia* media, const Dib* dib) {
  if (!media) return false;
  host::MutexLock lock(cacheLock_);
  const host::ByteString key = CacheKey(media);
  uint32_t hash = 0;
  auto* assoc = cache_.Lookup(key, hash);
  if (assoc && assoc->value) return false;
  if (!assoc) assoc = cache_.NewAssoc(key, hash);
  if (!assoc) return false;
  // The cache owns the bitmap from here and never changes it: devices may
  // keep their converted copy with it (and its copies) for every draw.
  if (dib) const_cast<Dib*>(dib)->KeepDeviceData();
  assoc->value = dib;
  return true;
}

void Tarvik::RemoveSealImageCache(const host::OfdMultiMedia* media) {
  if (!media) return;
  host::MutexLock lock(cacheLock_);
  const host::ByteString key = CacheKey(media);
  uint32_t hash = 0;
  if (const auto* assoc = cache_.Lookup(key, hash); assoc && assoc->value) delete assoc->value;
  cache_.RemoveKey(key);
}

}  // namespace tarvik
