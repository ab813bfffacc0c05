// Templates parsed once per document: a template drawn on every page is read
// and parsed for the first page, and later pages share its objects. Bounded
// in objects; the least recently used go first. Thread-safe. Internal to the
// host platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/base/lru_cache.h"
#include "host/ofd/ofd_page_object.h"
#include "host/ofd/ofd_resource.h"
#include "host/ofd/page_object_parser.h"

namespace host {

/// One template file, parsed: the templates it names (drawn beneath it), its
/// PageRes resources and content, and the page budget it was parsed under and
/// took. Read-only once made.
struct OfdParsedTemplate {
  struct Named {
    uint32_t id = 0;
    bool hasZOrder = false;
    std::string zOrder;
  };
  std::vector<Named> named;
  std::shared_ptr<const OfdResourceContainer> resources;
  std::shared_ptr<const OfdPageBlock> content;
  /// The content is what a page gets with exactly `budget` left: objects
  /// past a spent budget are dropped, so another budget may give another tree.
  ofdparse::Budget budget;
  ofdparse::Budget cost{0, 0, 0};
};

class OfdTemplateCache {
 public:
  /// Objects kept at most, over all templates.
  static constexpr size_t kDefaultMaxObjects = 500000;

  explicit OfdTemplateCache(size_t maxObjects = kDefaultMaxObjects) : cache_(maxObjects) {}
  OfdTemplateCache(const OfdTemplateCache&) = delete;
  OfdTemplateCache& operator=(const OfdTemplateCache&) = delete;

  /// The template kept under `id`, now the most recently used; null when none.
  std::shared_ptr<const OfdParsedTemplate> Find(uint32_t id) { return cache_.Find(id); }
  /// Keeps `parsed` under `id` (replacing what was there) unless it alone
  /// exceeds the bound, then drops the least recently used until the total fits.
  void Store(uint32_t id, std::shared_ptr<const OfdParsedTemplate> parsed);

 private:
  LruCache<uint32_t, std::shared_ptr<const OfdParsedTemplate>> cache_;
};

}  // namespace host
