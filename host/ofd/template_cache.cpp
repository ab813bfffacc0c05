#include "host/ofd/template_cache.h"

namespace host {

void OfdTemplateCache::Store(uint32_t id, std::shared_ptr<const OfdParsedTemplate> parsed) {
  if (!parsed) return;
  // An empty template still costs an entry.
  const size_t objects = parsed->cost.objects + 1;
  cache_.Store(id, std::move(parsed), objects);
}

}  // namespace host
