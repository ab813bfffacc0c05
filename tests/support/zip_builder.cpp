#include "support/zip_builder.h"

#include <zip.h>

namespace testing_support {

std::string BuildZip(const std::vector<std::pair<std::string, std::string>>& entries) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
  if (!buffer) return {};
  zip_source_keep(buffer);
  zip_t* z = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
  if (!z) {
    zip_source_free(buffer);
    zip_error_fini(&error);
    return {};
  }
  for (const auto& [name, content] : entries) {
    // libzip copies nothing: the source must outlive zip_close, which it does here.
    zip_source_t* src = zip_source_buffer(z, content.data(), content.size(), 0);
    if (!src || zip_file_add(z, name.c_str(), src, ZIP_FL_ENC_UTF_8) < 0) {
      zip_source_free(src);
      zip_discard(z);
      zip_source_free(buffer);
      return {};
    }
  }
  std::string out;
  if (zip_close(z) == 0 && zip_source_open(buffer) == 0) {
    char chunk[4096];
    zip_int64_t n;
    while ((n = zip_source_read(buffer, chunk, sizeof chunk)) > 0) out.append(chunk, static_cast<size_t>(n));
    zip_source_close(buffer);
  }
  zip_source_free(buffer);
  zip_error_fini(&error);
  return out;
}

std::string MinimalOfdPackage() {
  return BuildZip({{"OFD.xml",
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
                    "<ofd:OFD xmlns:ofd=\"http://www.ofdspec.org/2016\" Version=\"1.0\" DocType=\"OFD\">"
                    "<ofd:DocBody><ofd:DocInfo><ofd:DocID>0</ofd:DocID></ofd:DocInfo>"
                    "<ofd:DocRoot>Doc_0/Document.xml</ofd:DocRoot></ofd:DocBody></ofd:OFD>"}});
}

}  // namespace testing_support
