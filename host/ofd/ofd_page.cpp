#include "host/ofd/ofd_page.h"

#include <pugixml.hpp>

#include <algorithm>
#include <new>

#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_xml.h"
#include "host/ofd/page_object_parser.h"
#include "host/ofd/template_cache.h"

namespace host {

using ofdxml::Attr;
using ofdxml::AttrBool;
using ofdxml::AttrId;
using ofdxml::NameIs;

namespace {

constexpr unsigned kXmlOptions = pugi::parse_default | pugi::parse_ws_pcdata_single;

bool LoadXml(OfdPackage* package, const ByteString& location, pugi::xml_document& xml,
             const char* rootName) {
  std::string bytes;
  return package && package->ReadEntry(NormalizeLocation(location.view()), bytes) &&
         xml.load_buffer(bytes.data(), bytes.size(), kXmlOptions) &&
         NameIs(xml.document_element(), rootName);
}

// Adds the PageRes files a page or template file names to `container`.
void LoadPageResources(const pugi::xml_node& root, const std::string& folder, OfdPackage* package,
                       OfdResourceContainer& container) {
  for (pugi::xml_node n = root.first_child(); n; n = n.next_sibling()) {
    if (!NameIs(n, "PageRes") || ofdxml::Text(n).empty()) continue;
    const std::string first = ResolveLocation(folder, ofdxml::Text(n));
    std::string real = package->FindEntry(first);
    if (real.empty()) real = package->FindEntry(ResolveLocation("", ofdxml::Text(n)));
    container.AddResourceFile(real.empty() ? first : real);
  }
  container.FinishLoading();
}

// The templates a template file names, in order.
std::vector<OfdParsedTemplate::Named> NamedTemplates(const pugi::xml_node& root) {
  std::vector<OfdParsedTemplate::Named> named;
  for (pugi::xml_node n = root.first_child(); n; n = n.next_sibling()) {
    if (!NameIs(n, "Template")) continue;
    OfdParsedTemplate::Named t;
    t.id = AttrId(n, "TemplateID");
    if (const char* z = Attr(n, "ZOrder")) t.hasZOrder = true, t.zOrder = z;
    named.push_back(std::move(t));
  }
  return named;
}

bool SameBudget(const ofdparse::Budget& a, const ofdparse::Budget& b) {
  return a.objects == b.objects && a.segments == b.segments && a.characters == b.characters;
}

// Parses the resources and content of the template file whose root is `root`,
// taking from `budget`. The objects belong to no page: pages share them.
std::shared_ptr<const OfdParsedTemplate> ParseTemplate(OfdDocument* document,
                                                       const OfdTemplateEntry& entry,
                                                       const pugi::xml_node& root,
                                                       ofdparse::Budget& budget) {
  auto parsed = std::make_shared<OfdParsedTemplate>();
  parsed->named = NamedTemplates(root);
  auto resources = std::make_shared<OfdResourceContainer>(document, document);
  LoadPageResources(root, FolderOf(NormalizeLocation(entry.location.view())), document->GetPackage(),
                    *resources);
  auto content = std::make_shared<OfdPageBlock>();
  parsed->budget = budget;
  ofdparse::Context ctx;
  ctx.resources = resources.get();
  ctx.budget = &budget;
  ofdparse::ParseContent(ofdxml::Child(root, "Content"), *content, ctx);
  parsed->cost = {parsed->budget.objects - budget.objects, parsed->budget.segments - budget.segments,
                  parsed->budget.characters - budget.characters};
  parsed->resources = std::move(resources);
  parsed->content = std::move(content);
  return parsed;
}

}  // namespace

struct OfdPage::Impl {
  pugi::xml_document xml;
  std::string folder;  // folder of the page's file
};

OfdPageTemplate::OfdPageTemplate() = default;
OfdPageTemplate::~OfdPageTemplate() = default;
OfdPageTemplate::OfdPageTemplate(OfdPageTemplate&&) noexcept = default;
OfdPageTemplate& OfdPageTemplate::operator=(OfdPageTemplate&&) noexcept = default;

OfdPage::OfdPage(OfdDocument* document, int index) : document_(document), index_(index) {}

OfdPage::~OfdPage() = default;

bool OfdPage::Load() {
  const OfdPageEntry* entry = document_->GetPageEntry(index_);
  if (!entry) return false;
  id_ = entry->id;
  impl_ = std::make_unique<Impl>();
  if (!LoadXml(document_->GetPackage(), entry->location, impl_->xml, "Page")) return false;
  impl_->folder = FolderOf(NormalizeLocation(entry->location.view()));
  area_ = document_->GetPageArea();
  GRect own;
  const pugi::xml_node area = ofdxml::Child(impl_->xml.document_element(), "Area");
  if (ofdxml::ParseBox(ofdxml::Text(ofdxml::Child(area, "PhysicalBox")), own) && own.Width() > 0 &&
      own.Height() > 0)
    area_ = own;
  return true;
}

int OfdPage::ParseContents() {
  if (parsed_) return 1;
  if (!impl_) return 0;
  try {
    OfdPackage* package = document_->GetPackage();
    if (!package) return 0;
    const pugi::xml_node root = impl_->xml.document_element();
    ofdparse::Budget budget;
    resources_ = std::make_unique<OfdResourceContainer>(document_, document_);
    LoadPageResources(root, impl_->folder, package, *resources_);
    for (pugi::xml_node n = root.first_child(); n; n = n.next_sibling()) {
      if (!NameIs(n, "Template")) continue;
      std::vector<uint32_t> chain;
      LoadTemplate(AttrId(n, "TemplateID"), Attr(n, "ZOrder"), chain, budget);
    }
    content_ = std::make_unique<OfdPageBlock>();
    content_->SetPage(this);
    ofdparse::Context ctx;
    ctx.resources = resources_.get();
    ctx.page = this;
    ctx.budget = &budget;
    ofdparse::ParseContent(ofdxml::Child(root, "Content"), *content_, ctx);
    LoadAnnotations(budget);
  } catch (const std::bad_alloc&) {
    templates_.clear();
    annotations_.clear();
    content_.reset();
    return 0;
  }
  impl_.reset();  // the XML is no longer needed
  parsed_ = true;
  return 1;
}

void OfdPage::LoadTemplate(uint32_t id, const char* zOrder, std::vector<uint32_t>& chain,
                           ofdparse::Budget& budget) {
  const OfdTemplateEntry* entry = document_->FindTemplate(id);
  if (!entry || static_cast<int>(chain.size()) >= kMaxTemplateDepth ||
      std::find(chain.begin(), chain.end(), id) != chain.end())
    return;
  // Each template is loaded once per page: a template named again (directly
  // or through other templates) is already drawn, and loading it again would
  // let a few templates naming each other many times multiply without end.
  for (const OfdPageTemplate& loaded : templates_)
    if (loaded.templateId == id) return;
  // Parsed once per document: the tree a page gets depends only on the file
  // and on the budget left when its content is parsed, which is the same on
  // every page that draws the same templates first.
  OfdTemplateCache& cache = document_->GetTemplateCache();
  std::shared_ptr<const OfdParsedTemplate> parsed = cache.Find(id);
  pugi::xml_document xml;
  if (!parsed && !LoadXml(document_->GetPackage(), entry->location, xml, "Page")) return;
  const std::vector<OfdParsedTemplate::Named> named =
      parsed ? parsed->named : NamedTemplates(xml.document_element());
  chain.push_back(id);
  // Templates a template names go beneath it.
  for (const OfdParsedTemplate::Named& n : named)
    LoadTemplate(n.id, n.hasZOrder ? n.zOrder.c_str() : nullptr, chain, budget);
  chain.pop_back();

  if (parsed && SameBudget(parsed->budget, budget)) {
    budget.objects -= parsed->cost.objects;
    budget.segments -= parsed->cost.segments;
    budget.characters -= parsed->cost.characters;
  } else {
    if (parsed && !LoadXml(document_->GetPackage(), entry->location, xml, "Page")) return;
    parsed = ParseTemplate(document_, *entry, xml.document_element(), budget);
    cache.Store(id, parsed);
  }
  OfdPageTemplate t;
  t.templateId = id;
  t.zOrder = entry->zOrder;
  if (zOrder) t.zOrder = std::string_view(zOrder) == "Foreground" ? OfdZOrder::kForeground
                                                                  : OfdZOrder::kBackground;
  t.resources = parsed->resources;
  t.content = parsed->content;
  templates_.push_back(std::move(t));
}

void OfdPage::LoadAnnotations(ofdparse::Budget& budget) {
  for (const ByteString& file : document_->GetAnnotationFiles(id_)) {
    pugi::xml_document xml;
    if (!LoadXml(document_->GetPackage(), file, xml, "PageAnnot")) continue;
    for (pugi::xml_node n = xml.document_element().first_child(); n && budget.objects > 0;
         n = n.next_sibling()) {
      if (!NameIs(n, "Annot")) continue;
      --budget.objects;
      auto annot = std::make_unique<OfdAnnotation>();
      annot->id = AttrId(n, "ID");
      if (const char* v = Attr(n, "Type")) annot->type = v;
      if (const char* v = Attr(n, "Subtype")) annot->subtype = v;
      annot->visible = AttrBool(n, "Visible", true);
      annot->print = AttrBool(n, "Print", true);
      annot->noZoom = AttrBool(n, "NoZoom", false);
      annot->noRotate = AttrBool(n, "NoRotate", false);
      annot->readOnly = AttrBool(n, "ReadOnly", true);
      const pugi::xml_node appearance = ofdxml::Child(n, "Appearance");
      if (appearance) {
        if (const char* b = Attr(appearance, "Boundary")) ofdxml::ParseBox(b, annot->boundary);
        annot->appearance = std::make_unique<OfdPageBlock>();
        annot->appearance->SetPage(this);
        ofdparse::Context ctx;
        ctx.resources = resources_.get();
        ctx.page = this;
        ctx.budget = &budget;
        ctx.depth = 1;
        ofdparse::ParseBlockContent(appearance, *annot->appearance, ofdparse::GraphicState(), ctx);
      }
      annotations_.push_back(std::move(annot));
    }
  }
}

Matrix OfdPage::GetDisplayMatrix(int x, int y, int width, int height, int rotate) const {
  const float pw = area_.Width(), ph = area_.Height();
  if (!(pw > 0) || !(ph > 0)) return Matrix();
  if (rotate == 90 || rotate == 180 || rotate == 270) rotate /= 90;
  rotate = ((rotate % 4) + 4) % 4;
  const float w = static_cast<float>(width), h = static_cast<float>(height);
  if (rotate == 0) {
    const float a = w / pw, d = h / ph;
    return Matrix(a, 0, 0, d, static_cast<float>(x) - area_.left * a,
                  static_cast<float>(y) - area_.top * d);
  }
  // Page -> unit square, a quarter turn (or two, or three) about its centre,
  // then unit square -> device rectangle.
  static const Matrix kTurns[4] = {Matrix(), Matrix(0, 1, -1, 0, 1, 0), Matrix(-1, 0, 0, -1, 1, 1),
                                   Matrix(0, -1, 1, 0, 0, 1)};
  const Matrix toUnit(1 / pw, 0, 0, 1 / ph, -area_.left / pw, -area_.top / ph);
  const Matrix toDevice(w, 0, 0, h, static_cast<float>(x), static_cast<float>(y));
  return toUnit.Then(kTurns[rotate]).Then(toDevice);
}

size_t OfdPage::CountObjects() const {
  size_t n = content_ ? content_->CountObjects() : 0;
  for (const OfdPageTemplate& t : templates_)
    if (t.content) n += t.content->CountObjects();
  for (const auto& a : annotations_)
    if (a->appearance) n += a->appearance->CountObjects();
  return n;
}

std::vector<OfdAnnotationSeal*> OfdPage::GetSealAnnotations() const {
  std::vector<OfdAnnotationSeal*> out;
  for (const auto& s : seals_) out.push_back(s.get());
  return out;
}

OfdAnnotationSeal* OfdPage::GetSealAnnotation(int index) const {
  return index >= 0 && index < CountSealAnnotations() ? seals_[static_cast<size_t>(index)].get()
                                                      : nullptr;
}

void OfdPage::AddSealAnnotation(std::unique_ptr<OfdAnnotationSeal> seal) {
  if (seal) seals_.push_back(std::move(seal));
}

}  // namespace host
