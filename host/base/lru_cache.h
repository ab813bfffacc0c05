// A bounded map that drops the least recently used entries first: each entry
// has a cost (bytes, objects), and the total stays within the bound.
// Thread-safe. Values are handed out by copy (shared pointers, typically).
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace host {

template <class Key, class Value>
class LruCache {
 public:
  explicit LruCache(uint64_t maxCost) : maxCost_(maxCost) {}
  LruCache(const LruCache&) = delete;
  LruCache& operator=(const LruCache&) = delete;

  /// The value kept under `key`, now the most recently used; Value() when none.
  Value Find(const Key& key) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = index_.find(key);
    if (it == index_.end()) return Value();
    order_.splice(order_.begin(), order_, it->second);
    return it->second->value;
  }

  /// Keeps `value` under `key` (replacing what was there) unless `cost`
  /// alone exceeds the bound, then drops the least recently used until the
  /// total fits.
  void Store(const Key& key, Value value, uint64_t cost) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (const auto it = index_.find(key); it != index_.end()) Drop(it->second);
    if (cost > maxCost_) return;
    while (cost_ + cost > maxCost_) Drop(std::prev(order_.end()));
    order_.push_front(Entry{key, std::move(value), cost});
    index_[key] = order_.begin();
    cost_ += cost;
  }

  uint64_t GetCost() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return cost_;
  }
  size_t GetCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return order_.size();
  }

 private:
  struct Entry {
    Key key;
    Value value;
    uint64_t cost;
  };
  void Drop(typename std::list<Entry>::iterator it) {
    cost_ -= it->cost;
    index_.erase(it->key);
    order_.erase(it);
  }

  mutable std::mutex mutex_;
  const uint64_t maxCost_;
  uint64_t cost_ = 0;
  std::list<Entry> order_;  // most recently used first
  std::unordered_map<Key, typename std::list<Entry>::iterator> index_;
};

}  // namespace host
