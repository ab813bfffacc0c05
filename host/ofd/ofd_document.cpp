#include "host/ofd/ofd_document.h"

#include <pugixml.hpp>

#include <new>

#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/template_cache.h"
#include "host/ofd/ofd_xml.h"

namespace host {

using ofdxml::Attr;
using ofdxml::AttrId;
using ofdxml::NameIs;

namespace {

// An absolute location for a file that a document file names: resolved
// against `folder`, else from the root (some producers write root-relative
// paths), whichever exists; the first when neither does.
ByteString Locate(const OfdPackage* package, const std::string& folder, std::string_view name) {
  if (name.empty()) return ByteString();
  const std::string first = ResolveLocation(folder, name);
  for (const std::string& c : {first, ResolveLocation("", name)}) {
    std::string real = package->FindEntry(c);
    if (!real.empty()) return ByteString("/" + real);
  }
  return ByteString("/" + first);
}

}  // namespace

OfdDocument::OfdDocument()
    : OfdResourceContainer(this, nullptr), templateCache_(std::make_unique<OfdTemplateCache>()) {}

OfdDocument::~OfdDocument() = default;

int OfdDocument::LoadDocument(OfdPackage* package, const OfdDocBody* entry, int flag) {
  if (loaded_) return kOfdLoadBadArgument;
  loadError_ = OfdLoadError();
  const int code = Load(package, entry, flag);
  if (code == kOfdLoadSuccess) {
    loadError_ = OfdLoadError();
  } else {
    loadError_.code = code;
  }
  return code;
}

int OfdDocument::Load(OfdPackage* package, const OfdDocBody* entry, int /*flag*/) {
  if (!package || !entry) {
    loadError_.description = "no package or document entry";
    return kOfdLoadBadArgument;
  }
  try {
    const std::string path = NormalizeLocation(entry->docRoot.view());
    loadError_.entry = path.empty() ? std::string(entry->docRoot.view()) : path;
    std::string bytes;
    if (path.empty() || !package->ReadEntry(path, bytes)) {
      loadError_.description = path.empty() ? "DocRoot names no file" : "missing or unreadable";
      return kOfdLoadMissingFile;
    }
    pugi::xml_document xml;
    if (!ofdxml::LoadXml(xml, bytes, loadError_)) return kOfdLoadBadXml;
    const pugi::xml_node root = xml.document_element();
    if (!NameIs(root, "Document")) {
      loadError_.description = "the root element is not Document";
      return kOfdLoadBadXml;
    }

    package_ = package;
    loaded_ = true;
    folder_ = FolderOf(path);
    docRoot_ = ByteString("/" + path);
    signatures_ = entry->signatures;

    const pugi::xml_node common = ofdxml::Child(root, "CommonData");
    uint32_t maxUnit = 0;
    if (ofdxml::ParseId(ofdxml::Text(ofdxml::Child(common, "MaxUnitID")), maxUnit)) maxUnitId_ = maxUnit;
    GRect area;
    if (ofdxml::ParseBox(ofdxml::Text(ofdxml::Child(ofdxml::Child(common, "PageArea"), "PhysicalBox")), area) &&
        area.Width() > 0 && area.Height() > 0)
      pageArea_ = area;
    for (const char* kind : {"PublicRes", "DocumentRes"})
      for (pugi::xml_node n = common.first_child(); n; n = n.next_sibling())
        if (NameIs(n, kind))
          AddResourceFile(NormalizeLocation(Locate(package, folder_, ofdxml::Text(n)).view()));
    for (pugi::xml_node n = common.first_child(); n; n = n.next_sibling()) {
      if (!NameIs(n, "TemplatePage")) continue;
      OfdTemplateEntry t;
      t.id = AttrId(n, "ID");
      const char* base = Attr(n, "BaseLoc");
      t.location = Locate(package, folder_, base ? base : "");
      const char* z = Attr(n, "ZOrder");
      t.zOrder = z && std::string_view(z) == "Foreground" ? OfdZOrder::kForeground
                                                          : OfdZOrder::kBackground;
      if (t.id && !t.location.IsEmpty()) templates_.push_back(std::move(t));
    }
    FinishLoading();

    for (pugi::xml_node n = ofdxml::Child(root, "Pages").first_child(); n; n = n.next_sibling()) {
      if (!NameIs(n, "Page")) continue;
      OfdPageEntry page;
      page.id = AttrId(n, "ID");
      const char* base = Attr(n, "BaseLoc");
      page.location = Locate(package, folder_, base ? base : "");
      if (page.location.IsEmpty()) continue;
      pageIndexById_.emplace(page.id, static_cast<int>(pages_.size()));
      pages_.push_back(std::move(page));
    }
    const std::string_view annots = ofdxml::Text(ofdxml::Child(root, "Annotations"));
    if (!annots.empty()) {
      annotations_ = Locate(package, folder_, annots);
      LoadAnnotationList();
    }
  } catch (const std::bad_alloc&) {
    pages_.clear();
    pageIndexById_.clear();
    loadError_.description = "out of memory";
    return kOfdLoadNoMemory;
  }
  return kOfdLoadSuccess;
}

void OfdDocument::LoadAnnotationList() {
  std::string bytes;
  const std::string path = NormalizeLocation(annotations_.view());
  pugi::xml_document xml;
  if (!package_->ReadEntry(path, bytes) || !xml.load_buffer(bytes.data(), bytes.size())) return;
  const std::string folder = FolderOf(path);
  for (pugi::xml_node n = xml.document_element().first_child(); n; n = n.next_sibling()) {
    if (!NameIs(n, "Page")) continue;
    const uint32_t pageId = AttrId(n, "PageID");
    for (pugi::xml_node f = n.first_child(); f; f = f.next_sibling())
      if (NameIs(f, "FileLoc") && !ofdxml::Text(f).empty())
        annotationFiles_.emplace(pageId, Locate(package_, folder, ofdxml::Text(f)));
  }
}

std::vector<ByteString> OfdDocument::GetAnnotationFiles(uint32_t pageId) const {
  std::vector<ByteString> out;
  const auto [first, last] = annotationFiles_.equal_range(pageId);
  for (auto it = first; it != last; ++it) out.push_back(it->second);
  return out;
}

OfdPage* OfdDocument::LoadPage(int index, int /*flag*/) {
  if (!loaded_ || index < 0 || index >= CountPages()) return nullptr;
  try {
    std::unique_ptr<OfdPage> page(new OfdPage(this, index));
    return page->Load() ? page.release() : nullptr;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

int OfdDocument::FindPageIndexById(uint32_t id) const {
  const auto it = pageIndexById_.find(id);
  return it == pageIndexById_.end() ? -1 : it->second;
}

const OfdPageEntry* OfdDocument::GetPageEntry(int index) const {
  return index >= 0 && index < CountPages() ? &pages_[static_cast<size_t>(index)] : nullptr;
}

const OfdTemplateEntry* OfdDocument::FindTemplate(uint32_t id) const {
  for (const OfdTemplateEntry& t : templates_)
    if (t.id == id) return &t;
  return nullptr;
}

}  // namespace host
