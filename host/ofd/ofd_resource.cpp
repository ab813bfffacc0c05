#include "host/ofd/ofd_resource.h"

#include <pugixml.hpp>

#include <set>

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_xml.h"
#include "host/ofd/page_object_parser.h"

namespace host {

using ofdxml::Attr;
using ofdxml::AttrBool;
using ofdxml::AttrFloat;
using ofdxml::AttrId;
using ofdxml::NameIs;

struct OfdResourceContainer::Pending {
  struct File {
    std::unique_ptr<pugi::xml_document> xml;
    std::string fileFolder;  // folder of the Res file
    std::string baseFolder;  // its BaseLoc, resolved
  };
  std::vector<File> files;
  std::map<const OfdCompositeUnit*, pugi::xml_node> unitContent;
  std::set<const OfdCompositeUnit*> building;
  ofdparse::Budget budget;
};

bool OfdFont::LoadFontFile(std::string& out) const {
  out.clear();
  OfdDocument* doc = container ? container->GetDocument() : nullptr;
  OfdPackage* package = doc ? doc->GetPackage() : nullptr;
  return package && !fontFile.IsEmpty() && package->LoadRawData(doc, fontFile.view(), out);
}

OfdCompositeUnit::OfdCompositeUnit() = default;
OfdCompositeUnit::~OfdCompositeUnit() = default;

OfdResourceContainer::OfdResourceContainer(OfdDocument* document,
                                           const OfdResourceContainer* parent)
    : document_(document), parent_(parent) {}

OfdResourceContainer::~OfdResourceContainer() = default;

namespace {
template <typename T>
const T* FindIn(const std::map<uint32_t, std::unique_ptr<T>>& map, uint32_t id) {
  const auto it = map.find(id);
  return it == map.end() ? nullptr : it->second.get();
}
}  // namespace

const OfdFont* OfdResourceContainer::FindFont(uint32_t id) const {
  for (const OfdResourceContainer* c = this; c && id; c = c->parent_)
    if (const OfdFont* r = FindIn(c->fonts_, id)) return r;
  return nullptr;
}

const OfdColorSpace* OfdResourceContainer::FindColorSpace(uint32_t id) const {
  for (const OfdResourceContainer* c = this; c && id; c = c->parent_)
    if (const OfdColorSpace* r = FindIn(c->colorSpaces_, id)) return r;
  return nullptr;
}

const OfdDrawParam* OfdResourceContainer::FindDrawParam(uint32_t id) const {
  for (const OfdResourceContainer* c = this; c && id; c = c->parent_)
    if (const OfdDrawParam* r = FindIn(c->drawParams_, id)) return r;
  return nullptr;
}

const OfdMultiMedia* OfdResourceContainer::FindMultiMedia(uint32_t id) const {
  for (const OfdResourceContainer* c = this; c && id; c = c->parent_)
    if (const OfdMultiMedia* r = FindIn(c->multiMedias_, id)) return r;
  return nullptr;
}

const OfdCompositeUnit* OfdResourceContainer::FindCompositeUnit(uint32_t id) const {
  for (const OfdResourceContainer* c = this; c && id; c = c->parent_) {
    const auto it = c->units_.find(id);
    if (it == c->units_.end()) continue;
    OfdCompositeUnit* unit = it->second.get();
    if (c->pending_) {
      if (c->pending_->building.count(unit)) return nullptr;
      if (c->pending_->unitContent.count(unit)) c->BuildUnitContent(unit);
    }
    return unit;
  }
  return nullptr;
}

size_t OfdResourceContainer::CountOwnResources() const {
  return fonts_.size() + colorSpaces_.size() + drawParams_.size() + multiMedias_.size() +
         units_.size();
}

bool OfdResourceContainer::AddResourceFile(const std::string& path) {
  OfdPackage* package = document_ ? document_->GetPackage() : nullptr;
  std::string bytes;
  if (!package || !package->ReadEntry(path, bytes)) return false;
  auto xml = std::make_unique<pugi::xml_document>();
  if (!xml->load_buffer(bytes.data(), bytes.size(),
                        pugi::parse_default | pugi::parse_ws_pcdata_single))
    return false;
  const pugi::xml_node root = xml->document_element();
  if (!NameIs(root, "Res")) return false;
  if (!pending_) pending_ = std::make_unique<Pending>();
  Pending::File file;
  file.fileFolder = FolderOf(NormalizeLocation(path));
  const char* baseLoc = Attr(root, "BaseLoc");
  file.baseFolder = baseLoc ? ResolveLocation(file.fileFolder, baseLoc) : file.fileFolder;
  file.xml = std::move(xml);
  pending_->files.push_back(std::move(file));
  return true;
}

namespace {

// Where a file named in a Res file lives: under the Res file's BaseLoc, else
// (for files that ignore it, as some producers write them) beside the Res
// file, in the document's folder or at the root. An absolute location with a
// leading '/'; the first candidate when none exists.
ByteString LocateResourceFile(const OfdDocument* doc, const std::string& baseFolder,
                              const std::string& fileFolder, std::string_view name) {
  if (name.empty()) return ByteString();
  const std::string first = ResolveLocation(baseFolder, name);
  OfdPackage* package = doc ? doc->GetPackage() : nullptr;
  if (package) {
    const std::string candidates[] = {first, ResolveLocation(fileFolder, name),
                                      ResolveLocation(doc->GetFolder(), name),
                                      ResolveLocation("", name)};
    for (const std::string& c : candidates) {
      std::string real = package->FindEntry(c);
      if (!real.empty()) return ByteString("/" + real);
    }
  }
  return ByteString("/" + first);
}

OfdColorSpace ParseColorSpace(const pugi::xml_node& node) {
  OfdColorSpace cs;
  cs.id = AttrId(node, "ID");
  const std::string_view type = Attr(node, "Type") ? Attr(node, "Type") : "RGB";
  cs.kind = type == "GRAY" || type == "Gray" ? OfdColorSpace::Kind::kGray
            : type == "CMYK"                 ? OfdColorSpace::Kind::kCMYK
                                             : OfdColorSpace::Kind::kRGB;
  const float bits = AttrFloat(node, "BitsPerComponent", 8);
  cs.bitsPerComponent = bits == 1 || bits == 2 || bits == 4 || bits == 16 ? static_cast<int>(bits) : 8;
  const pugi::xml_node palette = ofdxml::Child(node, "Palette");
  for (pugi::xml_node cv = palette.first_child(); cv && cs.palette.size() < 65536; cv = cv.next_sibling()) {
    if (!NameIs(cv, "CV")) continue;
    std::vector<float> values;
    ofdxml::ParseNumbers(ofdxml::Text(cv), values, 4);
    cs.palette.push_back(std::move(values));
  }
  return cs;
}

}  // namespace

void OfdResourceContainer::FinishLoading() {
  if (!pending_) return;
  Pending& p = *pending_;
  ofdparse::Context ctx;
  ctx.resources = this;
  ctx.budget = &p.budget;
  // Simple resources first, so that draw parameters and units can use them.
  for (const Pending::File& file : p.files) {
    const pugi::xml_node root = file.xml->document_element();
    for (pugi::xml_node group = root.first_child(); group; group = group.next_sibling()) {
      for (pugi::xml_node n = group.first_child(); n; n = n.next_sibling()) {
        const uint32_t id = AttrId(n, "ID");
        if (!id) continue;
        if (NameIs(group, "Fonts") && NameIs(n, "Font") && !fonts_.count(id)) {
          auto font = std::make_unique<OfdFont>();
          font->id = id;
          if (const char* v = Attr(n, "FontName")) font->fontName = v;
          if (const char* v = Attr(n, "FamilyName")) font->familyName = v;
          if (const char* v = Attr(n, "Charset")) font->charset = v;
          if (const char* v = Attr(n, "CharSet")) font->charset = v;
          font->bold = AttrBool(n, "Bold", false);
          font->italic = AttrBool(n, "Italic", false);
          font->serif = AttrBool(n, "Serif", false);
          font->fixedWidth = AttrBool(n, "FixedWidth", false);
          font->fontFile = LocateResourceFile(document_, file.baseFolder, file.fileFolder,
                                              ofdxml::Text(ofdxml::Child(n, "FontFile")));
          font->container = this;
          fonts_.emplace(id, std::move(font));
        } else if (NameIs(group, "ColorSpaces") && NameIs(n, "ColorSpace") && !colorSpaces_.count(id)) {
          colorSpaces_.emplace(id, std::make_unique<OfdColorSpace>(ParseColorSpace(n)));
        } else if (NameIs(group, "MultiMedias") && NameIs(n, "MultiMedia") && !multiMedias_.count(id)) {
          auto media = std::make_unique<OfdMultiMedia>();
          media->id = id;
          if (const char* v = Attr(n, "Type")) media->type = v;
          if (const char* v = Attr(n, "Format")) media->format = v;
          media->PrimaryLoc = LocateResourceFile(document_, file.baseFolder, file.fileFolder,
                                                 ofdxml::Text(ofdxml::Child(n, "MediaFile")));
          media->ResourceContainer = this;
          multiMedias_.emplace(id, std::move(media));
        } else if (NameIs(group, "CompositeGraphicUnits") && NameIs(n, "CompositeGraphicUnit") &&
                   !units_.count(id)) {
          auto unit = std::make_unique<OfdCompositeUnit>();
          unit->id = id;
          unit->width = AttrFloat(n, "Width", 0);
          unit->height = AttrFloat(n, "Height", 0);
          unit->content = std::make_unique<OfdPageBlock>();
          unit->container = this;
          p.unitContent.emplace(unit.get(), ofdxml::Child(n, "Content"));
          units_.emplace(id, std::move(unit));
        }
      }
    }
  }
  for (const Pending::File& file : p.files) {
    const pugi::xml_node params = ofdxml::Child(file.xml->document_element(), "DrawParams");
    for (pugi::xml_node n = params.first_child(); n; n = n.next_sibling()) {
      const uint32_t id = AttrId(n, "ID");
      if (NameIs(n, "DrawParam") && id && !drawParams_.count(id))
        drawParams_.emplace(id, std::make_unique<OfdDrawParam>(ofdparse::ParseDrawParam(n, ctx)));
    }
  }
  // Units in ID order; a unit met inside another's content is built first.
  for (auto& [id, unit] : units_)
    if (p.unitContent.count(unit.get())) BuildUnitContent(unit.get());
  pending_.reset();
}

void OfdResourceContainer::BuildUnitContent(OfdCompositeUnit* unit) const {
  Pending& p = *pending_;
  const auto it = p.unitContent.find(unit);
  if (it == p.unitContent.end()) return;
  const pugi::xml_node content = it->second;
  p.unitContent.erase(it);
  // Nesting of units counts towards the depth cap like nested blocks do.
  if (p.building.size() >= static_cast<size_t>(ofdparse::kMaxDepth)) return;
  p.building.insert(unit);
  ofdparse::Context ctx;
  ctx.resources = this;
  ctx.budget = &p.budget;
  ctx.depth = static_cast<int>(p.building.size());
  ofdparse::ParseBlockContent(content, *unit->content, ofdparse::GraphicState(), ctx);
  p.building.erase(unit);
}

}  // namespace host
