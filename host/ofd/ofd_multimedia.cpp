#include "host/ofd/ofd_multimedia.h"

#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_resource.h"

namespace host {

namespace {
bool LoadLocation(const OfdResourceContainer* container, const ByteString& location,
                  std::string& out) {
  out.clear();
  OfdDocument* doc = container ? container->GetDocument() : nullptr;
  OfdPackage* package = doc ? doc->GetPackage() : nullptr;
  return package && !location.IsEmpty() && package->LoadRawData(doc, location.view(), out);
}
}  // namespace

bool OfdMultiMedia::LoadData(std::string& out) const {
  return LoadLocation(ResourceContainer, PrimaryLoc, out);
}

bool OfdMultiMedia::LoadSecondaryData(std::string& out) const {
  return LoadLocation(ResourceContainer, SecondaryLoc, out);
}

}  // namespace host
