#include "host/ofd/ofd_package.h"

#include <pugixml.hpp>

#include <cstring>

#include "host/ofd/zip_archive.h"

namespace host {

namespace {
// The root names OFD.xml may carry: with the usual prefix or none.
bool IsOfdRoot(const char* name) {
  const char* colon = std::strchr(name, ':');
  return std::strcmp(colon ? colon + 1 : name, "OFD") == 0;
}
}  // namespace

int OfdPackage::CheckFileType(StreamReader* reader) {
  if (!reader) return 0;
  int result = 0;
  if (auto archive = ZipArchive::Open(reader)) {
    std::string xml;
    if (archive->ReadNamed("OFD.xml", xml, true)) {
      pugi::xml_document doc;
      if (doc.load_buffer(xml.data(), xml.size(), pugi::parse_default) &&
          IsOfdRoot(doc.document_element().name()))
        result = 1;
    }
  }
  reader->SetPosition(0);
  return result;
}

}  // namespace host
