#include "host/ofd/zip_archive.h"

#include <zip.h>

#include <algorithm>
#include <cctype>
#include <new>

namespace host {

void ZipArchive::ZipCloser::operator()(zip_t* z) const { zip_discard(z); }

ZipArchive::~ZipArchive() = default;

std::unique_ptr<ZipArchive> ZipArchive::Open(StreamReader* reader) {
  if (!reader) return nullptr;
  std::unique_ptr<ZipArchive> archive(new (std::nothrow) ZipArchive());
  if (!archive) return nullptr;
  const uint64_t size = reader->GetSize();
  const uint8_t* bytes = reader->GetBuffer();
  if (!bytes) {
    if (size > kMaxTotalBytes) return nullptr;
    try {
      archive->ownedBytes_.resize(static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    if (reader->ReadBlock(archive->ownedBytes_.data(), 0, archive->ownedBytes_.size()) != size)
      return nullptr;
    bytes = reinterpret_cast<const uint8_t*>(archive->ownedBytes_.data());
  }
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(bytes, size, 0, &error);
  if (!source) {
    zip_error_fini(&error);
    return nullptr;
  }
  zip_t* z = zip_open_from_source(source, ZIP_RDONLY, &error);
  zip_error_fini(&error);
  if (!z) {
    zip_source_free(source);
    return nullptr;
  }
  archive->zip_.reset(z);
  if (zip_get_num_entries(z, 0) > kMaxEntries) return nullptr;
  return archive;
}

int64_t ZipArchive::EntryCount() const { return zip_get_num_entries(zip_.get(), 0); }

int64_t ZipArchive::Find(const std::string& name, bool ignoreCase) const {
  std::string key = name;
  while (!key.empty() && key.front() == '/') key.erase(key.begin());
  if (key.empty()) return -1;
  const zip_int64_t exact = zip_name_locate(zip_.get(), key.c_str(), 0);
  if (exact >= 0 || !ignoreCase) return exact;
  const zip_int64_t n = zip_get_num_entries(zip_.get(), 0);
  auto lower = [](unsigned char c) { return static_cast<char>(std::tolower(c)); };
  std::string want(key.size(), '\0');
  std::transform(key.begin(), key.end(), want.begin(), lower);
  for (zip_int64_t i = 0; i < n; ++i) {
    const char* entry = zip_get_name(zip_.get(), static_cast<zip_uint64_t>(i), 0);
    if (!entry) continue;
    std::string e(entry);
    while (!e.empty() && e.front() == '/') e.erase(e.begin());
    if (e.size() != want.size()) continue;
    std::transform(e.begin(), e.end(), e.begin(), lower);
    if (e == want) return i;
  }
  return -1;
}

bool ZipArchive::Read(int64_t index, std::string& out) {
  if (index < 0) return false;
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat_index(zip_.get(), static_cast<zip_uint64_t>(index), 0, &st) != 0) return false;
  if (!(st.valid & ZIP_STAT_SIZE) || st.size > kMaxEntryBytes ||
      st.size > kMaxTotalBytes - std::min(bytesRead_, kMaxTotalBytes))
    return false;
  zip_file_t* file = zip_fopen_index(zip_.get(), static_cast<zip_uint64_t>(index), 0);
  if (!file) return false;
  bool ok = true;
  try {
    out.assign(static_cast<size_t>(st.size), '\0');
  } catch (const std::bad_alloc&) {
    ok = false;
  }
  // The declared size bounds the read: a lying header cannot make us inflate more.
  zip_int64_t got = ok ? zip_fread(file, out.data(), st.size) : -1;
  zip_fclose(file);
  if (got < 0 || static_cast<zip_uint64_t>(got) != st.size) {
    out.clear();
    return false;
  }
  bytesRead_ += st.size;
  return ok;
}

bool ZipArchive::ReadNamed(const std::string& name, std::string& out, bool ignoreCase) {
  return Read(Find(name, ignoreCase), out);
}

}  // namespace host
