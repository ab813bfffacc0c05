#include "host/ofd/ofd_signature.h"

#include <pugixml.hpp>

#include <cmath>
#include <set>
#include <string_view>
#include <utility>

#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_multimedia.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_xml.h"

namespace host {
namespace {

using ofdxml::Attr;
using ofdxml::Child;
using ofdxml::NameIs;
using ofdxml::Text;

std::string AttrText(const pugi::xml_node& node, std::string_view name) {
  const char* v = Attr(node, name);
  return v ? v : "";
}

// Resolves `location` against `folder` into a package path, refusing what
// lies outside the package: URLs, drive letters, and ".." steps that climb
// above the root (which NormalizeLocation would silently clamp).
bool ResolveInside(std::string_view folder, std::string_view location, std::string& out) {
  while (!location.empty() && (location.front() == ' ' || location.front() == '\t')) {
    location.remove_prefix(1);
  }
  if (location.empty() || location.find(':') != std::string_view::npos) return false;
  const bool fromRoot = location.front() == '/' || location.front() == '\\';
  std::string joined = fromRoot ? std::string(location) : std::string(folder) + '/' + std::string(location);
  int depth = 0;
  size_t start = 0;
  for (size_t i = 0; i <= joined.size(); ++i) {
    if (i < joined.size() && joined[i] != '/' && joined[i] != '\\') continue;
    const std::string_view step(joined.data() + start, i - start);
    if (step == "..") {
      if (--depth < 0) return false;
    } else if (!step.empty() && step != ".") {
      ++depth;
    }
    start = i + 1;
  }
  out = NormalizeLocation(joined);
  return !out.empty();
}

// Base64 with optional padding and blanks; "" for anything else.
std::string DecodeBase64(std::string_view s) {
  std::string out;
  uint32_t bits = 0;
  int count = 0;
  bool padded = false;
  for (char c : s) {
    int v;
    if (c >= 'A' && c <= 'Z') {
      v = c - 'A';
    } else if (c >= 'a' && c <= 'z') {
      v = c - 'a' + 26;
    } else if (c >= '0' && c <= '9') {
      v = c - '0' + 52;
    } else if (c == '+') {
      v = 62;
    } else if (c == '/') {
      v = 63;
    } else if (c == '=') {
      padded = true;
      continue;
    } else if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      continue;
    } else {
      return {};
    }
    if (padded) return {};
    bits = (bits << 6) | static_cast<uint32_t>(v);
    if (++count == 4) {
      out += static_cast<char>(bits >> 16);
      out += static_cast<char>(bits >> 8);
      out += static_cast<char>(bits);
      bits = 0;
      count = 0;
    }
  }
  if (count == 1) return {};
  if (count == 2) out += static_cast<char>(bits >> 4);
  if (count == 3) {
    out += static_cast<char>(bits >> 10);
    out += static_cast<char>(bits >> 2);
  }
  return out;
}

// "x y w h" with finite values; the size must be positive when `positive`,
// else not negative.
bool ParseArea(const char* text, bool positive, GRect& out) {
  GRect r;
  if (!text || !ofdxml::ParseBox(text, r)) return false;
  const float w = r.Width(), h = r.Height();
  if (!std::isfinite(w) || !std::isfinite(h)) return false;
  if (positive ? (w <= 0 || h <= 0) : (w < 0 || h < 0)) return false;
  out = r;
  return true;
}

// A numeric annotation ID from "12" or "s002": the trailing digits, else 0.
uint32_t NumericId(std::string_view id) {
  size_t start = id.size();
  while (start > 0 && id[start - 1] >= '0' && id[start - 1] <= '9') --start;
  uint32_t value = 0;
  if (start < id.size() && ofdxml::ParseId(id.substr(start), value)) return value;
  return 0;
}

class SignatureReader {
 public:
  SignatureReader(const OfdDocument& doc, std::string signaturesPath)
      : doc_(doc), package_(*doc.GetPackage()), signaturesPath_(std::move(signaturesPath)) {}

  // Reads one Signature.xml; on failure `why` says what is wrong.
  bool Read(const std::string& path, OfdSignatureInfo& info, std::string& why) {
    std::string bytes;
    pugi::xml_document xml;
    if (!package_.ReadEntry(path, bytes)) {
      why = path + " is missing or unreadable";
      return false;
    }
    if (const pugi::xml_parse_result r = xml.load_buffer(bytes.data(), bytes.size()); !r) {
      why = path + ": malformed XML (" + r.description() + ") at offset " + std::to_string(r.offset);
      return false;
    }
    const pugi::xml_node root = xml.document_element();
    if (!NameIs(root, "Signature")) {
      why = path + ": the root element is not Signature";
      return false;
    }
    path_ = path;
    folder_ = FolderOf(path);
    info.location = "/" + path;

    const pugi::xml_node signedInfo = Child(root, "SignedInfo");
    ReadProvider(Child(signedInfo, "Provider"), info);
    info.signatureMethod = Text(Child(signedInfo, "SignatureMethod"));
    info.signatureDateTime = Text(Child(signedInfo, "SignatureDateTime"));
    const pugi::xml_node refs = Child(signedInfo, "References");
    info.checkMethod = AttrText(refs, "CheckMethod");
    for (pugi::xml_node n = refs.first_child(); n; n = n.next_sibling()) {
      if (info.references.size() >= OfdSignatures::kMaxReferences) break;
      if (!NameIs(n, "Reference")) continue;
      info.references.push_back({AttrText(n, "FileRef"), DecodeBase64(Text(Child(n, "CheckValue")))});
    }
    for (pugi::xml_node n = signedInfo.first_child(); n; n = n.next_sibling()) {
      if (info.stampAnnots.size() >= OfdSignatures::kMaxStampAnnots) break;
      if (!NameIs(n, "StampAnnot")) continue;
      OfdStampAnnotInfo annot;
      const char* problem = ReadStampAnnot(n, annot);
      if (!problem) {
        info.stampAnnots.push_back(annot);
      } else if (info.skippedStampAnnots.size() < OfdSignatures::kMaxStampAnnots) {
        info.skippedStampAnnots.push_back("StampAnnot " + std::string(AttrText(n, "ID")) + ": " + problem);
      }
    }
    info.sealLocation = FileLocation(Text(Child(Child(signedInfo, "Seal"), "BaseLoc")));
    info.signedValueLocation = FileLocation(Text(Child(root, "SignedValue")));
    if (info.sealLocation.IsEmpty() && info.signedValueLocation.IsEmpty()) {
      why = path + " names neither a seal file nor a signed value that the package holds";
      return false;
    }
    return true;
  }

 private:
  // Provider fields are attributes in most files, child elements in some.
  static void ReadProvider(const pugi::xml_node& p, OfdSignatureInfo& info) {
    struct Field {
      const char* name;
      std::string* out;
    } fields[] = {{"ProviderName", &info.providerName},
                  {"Version", &info.providerVersion},
                  {"Company", &info.providerCompany}};
    for (const Field& f : fields) {
      const char* v = Attr(p, f.name);
      *f.out = v ? std::string(v) : std::string(Text(Child(p, f.name)));
    }
  }

  // Null when the StampAnnot is usable, else what is wrong with it.
  const char* ReadStampAnnot(const pugi::xml_node& n, OfdStampAnnotInfo& annot) const {
    const char* pageRef = Attr(n, "PageRef");
    if (!pageRef || !ofdxml::ParseId(pageRef, annot.pageId)) return "missing or malformed PageRef";
    if (!ParseArea(Attr(n, "Boundary"), true, annot.boundary)) return "missing or malformed Boundary";
    const char* clip = Attr(n, "Clip");
    if (clip && !ParseArea(clip, false, annot.clip)) return "malformed Clip";
    annot.id = AttrText(n, "ID");
    annot.pageIndex = doc_.FindPageIndexById(annot.pageId);
    return nullptr;
  }

  // An absolute location of a file of the package that is neither this
  // Signature.xml nor Signatures.xml; "" otherwise.
  ByteString FileLocation(std::string_view location) const {
    std::string path;
    if (!ResolveInside(folder_, location, path) || path == path_ || path == signaturesPath_ ||
        package_.FindEntry(path).empty()) {
      return {};
    }
    return ByteString("/" + path);
  }

  const OfdDocument& doc_;
  OfdPackage& package_;
  std::string signaturesPath_;
  std::string path_;
  std::string folder_;
};

}  // namespace

std::unique_ptr<OfdSignatures> OfdSignatures::Load(const OfdDocument* document) {
  if (!document || !document->GetPackage() || document->GetSignaturesLocation().IsEmpty()) {
    return nullptr;
  }
  OfdPackage& package = *document->GetPackage();
  const std::string listPath = NormalizeLocation(document->GetSignaturesLocation().view());
  std::string bytes;
  pugi::xml_document xml;
  if (listPath.empty() || !package.ReadEntry(listPath, bytes) ||
      !xml.load_buffer(bytes.data(), bytes.size())) {
    return nullptr;
  }
  const pugi::xml_node root = xml.document_element();
  if (!NameIs(root, "Signatures")) return nullptr;

  auto result = std::make_unique<OfdSignatures>();
  SignatureReader reader(*document, listPath);
  const std::string folder = FolderOf(listPath);
  std::set<std::string> seen;
  size_t listed = 0;
  for (pugi::xml_node n = root.first_child(); n && listed < kMaxSignatures; n = n.next_sibling()) {
    if (!NameIs(n, "Signature")) continue;
    ++listed;
    std::string path;
    OfdSkippedSignature skipped{AttrText(n, "ID"), AttrText(n, "BaseLoc"), {}};
    if (!ResolveInside(folder, skipped.location, path) || path == listPath) {
      skipped.reason = "BaseLoc \"" + skipped.location + "\" names no signature file of the package";
      result->skipped_.push_back(std::move(skipped));
      continue;
    }
    if (!seen.insert(path).second) {
      skipped.reason = path + " is listed more than once";
      result->skipped_.push_back(std::move(skipped));
      continue;
    }
    OfdSignatureInfo info;
    info.id = skipped.id;
    info.type = AttrText(n, "Type");
    if (info.type.empty()) info.type = "Seal";
    if (reader.Read(path, info, skipped.reason)) {
      result->signatures_.push_back(std::move(info));
    } else {
      result->skipped_.push_back(std::move(skipped));
    }
  }
  return result;
}

int OfdSignatures::AttachSealAnnotations(OfdPage* page) const {
  if (!page) return 0;
  OfdDocument* doc = page->GetDocument();
  int added = 0;
  for (const OfdSignatureInfo& sig : signatures_) {
    for (const OfdStampAnnotInfo& annot : sig.stampAnnots) {
      if (annot.pageId != page->GetPageId()) continue;
      auto seal = std::make_unique<OfdAnnotationSeal>();
      seal->id = NumericId(annot.id);
      seal->pageIndex = page->GetPageIndex();
      seal->Boundary = annot.boundary;
      seal->Clip = annot.clip;
      auto media = std::make_unique<OfdMultiMedia>();
      media->id = seal->id;
      media->type = "Seal";
      media->PrimaryLoc = sig.sealLocation;
      media->SecondaryLoc = sig.signedValueLocation;
      media->ResourceContainer = doc;
      seal->BindSealImage(std::move(media));
      page->AddSealAnnotation(std::move(seal));
      ++added;
    }
  }
  return added;
}

int AttachSignatureSeals(OfdPage* page) {
  if (!page) return 0;
  const std::unique_ptr<OfdSignatures> signatures = OfdSignatures::Load(page->GetDocument());
  return signatures ? signatures->AttachSealAnnotations(page) : 0;
}

}  // namespace host
