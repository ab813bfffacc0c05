#include "support/zip_builder.h"

#include <zip.h>

namespace testing_support {

ZipEntries ReadZip(const std::string& archive) {
  ZipEntries entries;
  zip_source_t* src = zip_source_buffer_create(archive.data(), archive.size(), 0, nullptr);
  zip_t* z = src ? zip_open_from_source(src, ZIP_RDONLY, nullptr) : nullptr;
  if (!z) {
    zip_source_free(src);
    return entries;
  }
  for (zip_uint64_t i = 0; i < static_cast<zip_uint64_t>(zip_get_num_entries(z, 0)); ++i) {
    zip_stat_t st;
    zip_file_t* f = zip_stat_index(z, i, 0, &st) == 0 ? zip_fopen_index(z, i, 0) : nullptr;
    if (!f) continue;
    std::string content(static_cast<size_t>(st.size), '\0');
    if (zip_fread(f, content.data(), st.size) == static_cast<zip_int64_t>(st.size))
      entries.emplace_back(st.name, std::move(content));
    zip_fclose(f);
  }
  zip_discard(z);
  return entries;
}

ZipEntries WithEntry(ZipEntries entries, const std::string& name, const char* content) {
  for (auto it = entries.begin(); it != entries.end(); ++it) {
    if (it->first != name) continue;
    if (content) it->second = content;
    else entries.erase(it);
    return entries;
  }
  if (content) entries.emplace_back(name, content);
  return entries;
}

std::string BuildZip(const std::vector<std::pair<std::string, std::string>>& entries) {
  zip_source_t* buffer = zip_source_buffer_create(nullptr, 0, 0, nullptr);
  if (!buffer) return {};
  zip_source_keep(buffer);
  zip_t* z = zip_open_from_source(buffer, ZIP_TRUNCATE, nullptr);
  if (!z) {
    zip_source_free(buffer);
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
  return out;
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

std::string MinimalOfdPackage() { return BuildOfdPackage({}); }

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
