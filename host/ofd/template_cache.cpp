#include "host/ofd/template_cache.h"

namespace host {

std::shared_ptr<const OfdParsedTemplate> OfdTemplateCache::Find(uint32_t id) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto it = index_.find(id);
  if (it == index_.end()) return nullptr;
  order_.splice(order_.begin(), order_, it->second);
  return it->second->parsed;
}

void OfdTemplateCache::Drop(std::list<Entry>::iterator it) {
  objects_ -= it->objects;
  index_.erase(it->id);
  order_.erase(it);
}

void OfdTemplateCache::Store(uint32_t id, std::shared_ptr<const OfdParsedTemplate> parsed) {
  if (!parsed) return;
  // An empty template still costs an entry.
  const size_t objects = parsed->cost.objects + 1;
  std::lock_guard<std::mutex> lock(mutex_);
  if (auto it = index_.find(id); it != index_.end()) Drop(it->second);
  if (objects > maxObjects_) return;
  while (objects_ + objects > maxObjects_ && !order_.empty()) Drop(std::prev(order_.end()));
  order_.push_front(Entry{id, std::move(parsed), objects});
  index_[id] = order_.begin();
  objects_ += objects;
}

}  // namespace host
