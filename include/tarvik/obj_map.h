// The hash map behind the seal image cache: chained buckets, associations
// handed out from blocks with a free list, stored hashes, and a lock of its
// own. Only ByteString keys are supported (HashKey, Compare).
#pragma once

#include <cstdint>
#include <cstring>
#include <new>

#include "host/base/byte_string.h"
#include "host/base/memory.h"
#include "host/base/mutex.h"

namespace tarvik {

template <class Key, class Value>
class ObjMap : public host::MutexObject {
 public:
  struct Assoc {
    Assoc* next;
    uint32_t hash;
    Key key;
    Value value;
  };

  static constexpr uint32_t kInitialBuckets = 17;
  static constexpr int32_t kBlockSize = 10;

  ObjMap() = default;
  /// Removes everything (values are left alone) under the map's own lock.
  ~ObjMap() override { RemoveAll(); }

  /// The association for `key`, or null; `hash` receives HashKey(key) in
  /// either case.
  Assoc* Lookup(const Key& key, uint32_t& hash) const {
    hash = host::HashKey(key);
    if (!buckets_) return nullptr;
    for (Assoc* a = buckets_[hash % bucketCount_]; a; a = a->next) {
      if (a->key.Compare(key.view()) == 0) return a;
    }
    return nullptr;
  }

  /// Makes an association for a key that a lookup did not find, with its
  /// value null. Null when memory runs out (the map is unchanged).
  Assoc* NewAssoc(const Key& key, uint32_t hash) {
    if (!buckets_) {
      const uint32_t n = host::CalcHashTableSize(static_cast<int>(bucketCount_));
      auto** buckets = static_cast<Assoc**>(host::AllocMemory(sizeof(Assoc*) * n));
      if (!buckets) return nullptr;
      std::memset(buckets, 0, sizeof(Assoc*) * n);
      buckets_ = buckets;
      bucketCount_ = n;
    }
    if (static_cast<uint32_t>(count_) >= bucketCount_) Grow();
    if (!freeList_ && !AddBlock()) return nullptr;

    Assoc* a = freeList_;
    freeList_ = a->next;
    ++count_;
    new (&a->key) Key();
    a->value = Value();
    a->hash = hash;
    a->key = key;
    Assoc*& head = buckets_[hash % bucketCount_];
    a->next = head;
    head = a;
    return a;
  }

  /// Removes `key` if present; removing the last entry frees everything.
  void RemoveKey(const Key& key) {
    if (!buckets_) return;
    const uint32_t hash = host::HashKey(key);
    for (Assoc** link = &buckets_[hash % bucketCount_]; *link; link = &(*link)->next) {
      Assoc* a = *link;
      if (a->key.Compare(key.view()) != 0) continue;
      *link = a->next;
      a->key.~Key();
      a->next = freeList_;
      freeList_ = a;
      if (--count_ == 0) RemoveAll();
      return;
    }
  }

  /// Drops every association, the bucket array and every block; the bucket
  /// count stays. Values are not touched. Holds the map's own lock.
  void RemoveAll() {
    host::MutexLock lock(*this);
    if (buckets_) {
      for (uint32_t i = 0; i < bucketCount_; ++i) {
        for (Assoc* a = buckets_[i]; a; a = a->next) a->key.~Key();
      }
      host::FreeMemory(buckets_);
      buckets_ = nullptr;
    }
    count_ = 0;
    freeList_ = nullptr;
    if (blocks_) {
      blocks_->FreeDataChain();
      blocks_ = nullptr;
    }
  }

  /// Calls `visit(assoc)` for every association, bucket by bucket in
  /// ascending order, each chain from its head.
  template <class Visit>
  void ForEach(Visit&& visit) const {
    if (!buckets_) return;
    for (uint32_t i = 0; i < bucketCount_; ++i) {
      for (Assoc* a = buckets_[i]; a; a = a->next) visit(*a);
    }
  }

  int32_t GetCount() const { return count_; }
  uint32_t GetBucketCount() const { return bucketCount_; }
  bool HasBuckets() const { return buckets_ != nullptr; }

 private:
  // Rehashes into CalcHashTableSize(count * 1.5) buckets from the stored
  // hashes. When the array cannot grow, the map keeps its buckets.
  void Grow() {
    const uint32_t n = host::CalcHashTableSize(count_ + count_ / 2);
    if (n <= bucketCount_) return;
    // Collect the live associations in visiting order before the array is
    // cleared, then link each at the head of its new bucket in that order.
    Assoc* first = nullptr;
    Assoc** tail = &first;
    for (uint32_t i = 0; i < bucketCount_; ++i) {
      for (Assoc* a = buckets_[i]; a;) {
        Assoc* next = a->next;
        *tail = a;
        tail = &a->next;
        a = next;
      }
    }
    *tail = nullptr;
    auto** buckets = static_cast<Assoc**>(host::ReallocMemory(buckets_, sizeof(Assoc*) * n));
    if (buckets) {
      buckets_ = buckets;
      bucketCount_ = n;
    }
    std::memset(buckets_, 0, sizeof(Assoc*) * bucketCount_);
    for (Assoc* a = first; a;) {
      Assoc* next = a->next;
      Assoc*& head = buckets_[a->hash % bucketCount_];
      a->next = head;
      head = a;
      a = next;
    }
  }

  // Puts a new block's associations on the free list so that they are handed
  // out first to last.
  bool AddBlock() {
    host::Plex* block = host::Plex::Create(blocks_, static_cast<unsigned>(blockSize_), sizeof(Assoc));
    if (!block) return false;
    Assoc* items = static_cast<Assoc*>(block->data());
    for (int32_t i = blockSize_ - 1; i >= 0; --i) {
      items[i].next = freeList_;
      freeList_ = &items[i];
    }
    return true;
  }

  Assoc** buckets_ = nullptr;
  uint32_t bucketCount_ = kInitialBuckets;
  Assoc* freeList_ = nullptr;
  host::Plex* blocks_ = nullptr;
  int32_t count_ = 0;
  int32_t blockSize_ = kBlockSize;
};

}  // namespace tarvik
