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

namespace {
const char kXmlHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
const char kNs[] = " xmlns:ofd=\"http://www.ofdspec.org/2016\"";
}  // namespace

std::string BuildOfdPackage(const ZipEntries& files, const std::string& docRoot,
                            const std::string& signatures) {
  std::string ofd = std::string(kXmlHead) + "<ofd:OFD" + kNs + " Version=\"1.1\" DocType=\"OFD\">" +
                    "<ofd:DocBody><ofd:DocInfo><ofd:DocID>test</ofd:DocID></ofd:DocInfo>" +
                    "<ofd:DocRoot>" + docRoot + "</ofd:DocRoot>";
  if (!signatures.empty()) ofd += "<ofd:Signatures>" + signatures + "</ofd:Signatures>";
  ofd += "</ofd:DocBody></ofd:OFD>";
  ZipEntries all{{"OFD.xml", ofd}};
  all.insert(all.end(), files.begin(), files.end());
  return BuildZip(all);
}

std::string OfdDocumentXml(const std::vector<std::pair<int, std::string>>& pages,
                           const std::string& commonData, const std::string& extra) {
  std::string xml = std::string(kXmlHead) + "<ofd:Document" + kNs + "><ofd:CommonData>";
  if (commonData.find("PageArea") == std::string::npos)
    xml += "<ofd:PageArea><ofd:PhysicalBox>0 0 210 297</ofd:PhysicalBox></ofd:PageArea>";
  xml += commonData + "</ofd:CommonData><ofd:Pages>";
  for (const auto& [id, loc] : pages)
    xml += "<ofd:Page ID=\"" + std::to_string(id) + "\" BaseLoc=\"" + loc + "\"/>";
  return xml + "</ofd:Pages>" + extra + "</ofd:Document>";
}

std::string OfdPageXml(const std::string& body, const std::string& head) {
  return std::string(kXmlHead) + "<ofd:Page" + kNs + ">" + head +
         "<ofd:Content><ofd:Layer ID=\"100\">" + body + "</ofd:Layer></ofd:Content></ofd:Page>";
}

std::string OfdResXml(const std::string& inner, const std::string& baseLoc) {
  std::string xml = std::string(kXmlHead) + "<ofd:Res" + kNs;
  if (!baseLoc.empty()) xml += " BaseLoc=\"" + baseLoc + "\"";
  return xml + ">" + inner + "</ofd:Res>";
}

}  // namespace testing_support
