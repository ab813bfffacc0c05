#include "host/ofd/ofd_package.h"

#include <pugixml.hpp>

#include <new>

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_location.h"
#include "host/ofd/ofd_xml.h"
#include "host/ofd/zip_archive.h"

namespace host {

namespace {
// DocBody locations in OFD.xml are taken from the package root, with or
// without the leading '/'.
ByteString RootLocation(std::string_view location) {
  const std::string path = NormalizeLocation(location);
  return path.empty() ? ByteString() : ByteString("/" + path);
}
}  // namespace

OfdPackage::OfdPackage() = default;

OfdPackage::~OfdPackage() { ClosePackage(); }

int OfdPackage::CheckFileType(StreamReader* reader) {
  if (!reader) return 0;
  int result = 0;
  if (auto archive = ZipArchive::Open(reader)) {
    std::string xml;
    if (archive->ReadNamed("OFD.xml", xml, true)) {
      pugi::xml_document doc;
      if (doc.load_buffer(xml.data(), xml.size(), pugi::parse_default) &&
          ofdxml::NameIs(doc.document_element(), "OFD"))
        result = 1;
    }
  }
  reader->SetPosition(0);
  return result;
}

int OfdPackage::LoadFromStream(StreamReader* reader, int flag) {
  ClosePackage();
  loadError_ = OfdLoadError();
  const int code = Load(reader, flag);
  loadError_.code = code;
  return code;
}

int OfdPackage::Load(StreamReader* reader, int flag) {
  if (!reader) {
    loadError_.description = "no data";
    return kOfdLoadBadArgument;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  reader_ = reader;
  ownsReader_ = flag == 1;
  try {
    archive_ = ZipArchive::Open(reader, &loadError_.description);
    if (!archive_) return kOfdLoadNotZip;
    loadError_.entry = "OFD.xml";
    std::string xml;
    if (!archive_->ReadNamed("OFD.xml", xml, true)) {
      loadError_.description = "missing or unreadable";
      return kOfdLoadMissingFile;
    }
    pugi::xml_document doc;
    if (!ofdxml::LoadXml(doc, xml, loadError_)) return kOfdLoadBadXml;
    const pugi::xml_node root = doc.document_element();
    if (!ofdxml::NameIs(root, "OFD")) {
      loadError_.description = "the root element is not OFD";
      return kOfdLoadBadXml;
    }
    for (pugi::xml_node body = root.first_child(); body; body = body.next_sibling()) {
      if (!ofdxml::NameIs(body, "DocBody")) continue;
      OfdDocBody entry;
      entry.index = static_cast<int>(documents_.size());
      entry.docId = ByteString(ofdxml::Text(ofdxml::Child(ofdxml::Child(body, "DocInfo"), "DocID")));
      entry.docRoot = RootLocation(ofdxml::Text(ofdxml::Child(body, "DocRoot")));
      entry.signatures = RootLocation(ofdxml::Text(ofdxml::Child(body, "Signatures")));
      documents_.push_back(std::move(entry));
    }
  } catch (const std::bad_alloc&) {
    documents_.clear();
    loadError_.description = "out of memory";
    return kOfdLoadNoMemory;
  }
  loadError_ = OfdLoadError();
  return kOfdLoadSuccess;
}

int OfdPackage::CountDocuments() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(documents_.size());
}

const OfdDocBody* OfdPackage::GetDocument(int index) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (index < 0 || static_cast<size_t>(index) >= documents_.size()) return nullptr;
  return &documents_[static_cast<size_t>(index)];
}

std::string OfdPackage::FindEntry(std::string_view path) const {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!archive_ || path.empty()) return {};
  return archive_->EntryName(archive_->Find(std::string(path), true));
}

bool OfdPackage::ReadEntry(std::string_view path, std::string& out) {
  out.clear();
  std::lock_guard<std::mutex> lock(mutex_);
  if (!archive_ || path.empty()) return false;
  try {
    return archive_->ReadNamed(std::string(path), out, true);
  } catch (const std::bad_alloc&) {
    out.clear();
    return false;
  }
}

bool OfdPackage::LoadRawData(const OfdDocument* document, std::string_view location,
                             std::string& out) {
  out.clear();
  if (location.empty()) return false;
  const std::string base = document ? document->GetFolder() : std::string();
  return ReadEntry(ResolveLocation(base, location), out);
}

StreamReader* OfdPackage::LoadRawStream(const OfdDocument* document, const ByteString& location,
                                        int /*flag*/) {
  std::string bytes;
  if (!LoadRawData(document, location.view(), bytes)) return nullptr;
  try {
    return StreamReader::CreateMemoryStreamReader(std::move(bytes));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void OfdPackage::ClosePackage() {
  std::lock_guard<std::mutex> lock(mutex_);
  archive_.reset();
  documents_.clear();
  if (ownsReader_ && reader_) reader_->Release();
  reader_ = nullptr;
  ownsReader_ = false;
}

}  // namespace host
