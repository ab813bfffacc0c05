// Opening an OFD package and its first document in tests.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"

namespace testing_support {

/// A package and its first document, destroyed document first. `doc` is null
/// when either failed; `loadResult` is the failing (or last) loader's result.
struct Opened {
  std::unique_ptr<host::OfdPackage> package = std::make_unique<host::OfdPackage>();
  std::unique_ptr<host::OfdDocument> doc;
  int loadResult = -1;
};

/// Opens from a reader, which the package takes over.
Opened Open(host::StreamReader* reader);
Opened Open(std::string bytes);
Opened OpenFile(const std::filesystem::path& path);

/// Page `index` loaded and parsed, or null.
std::unique_ptr<host::OfdPage> ParsedPage(host::OfdDocument& doc, int index);

}  // namespace testing_support
