#include "support/opened_document.h"

#include "support/sample_files.h"

namespace testing_support {

Opened Open(host::StreamReader* reader) {
  Opened o;
  o.loadResult = o.package->LoadFromStream(reader, 1);
  if (o.loadResult != 0 || o.package->CountDocuments() < 1) return o;
  o.doc = std::make_unique<host::OfdDocument>();
  o.loadResult = o.doc->LoadDocument(o.package.get(), o.package->GetDocument(0), -1);
  if (o.loadResult != 0) o.doc.reset();
  return o;
}

Opened Open(std::string bytes) {
  return Open(host::StreamReader::CreateMemoryStreamReader(std::move(bytes)));
}

Opened OpenFile(const std::filesystem::path& path) {
  return Open(ReadFileBytes(path));
}

std::unique_ptr<host::OfdPage> ParsedPage(host::OfdDocument& doc, int index) {
  std::unique_ptr<host::OfdPage> page(doc.LoadPage(index, 1));
  if (page && !page->ParseContents()) page.reset();
  return page;
}

}  // namespace testing_support
