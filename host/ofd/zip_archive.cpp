#include "host/ofd/zip_archive.h"

#include <zip.h>

#include <algorithm>
#include <cctype>
#include <new>

namespace host {

void ZipArchive::ZipCloser::operator()(zip_t* z) const { zip_discard(z); }

ZipArchive::~ZipArchive() = default;

std::unique_ptr<ZipArchive> ZipArchive::Open(StreamReader* reader, std::string* why) {
  auto fail = [why](const char* reason) -> std::unique_ptr<ZipArchive> {
    if (why) *why = reason;
    return nullptr;
  };
  if (!reader) return fail("no data");
  std::unique_ptr<ZipArchive> archive(new (std::nothrow) ZipArchive());
  if (!archive) return fail("out of memory");
  const uint64_t size = reader->GetSize();
  const uint8_t* bytes = reader->GetBuffer();
  if (!bytes) {
    if (size > kMaxTotalBytes) return fail("larger than 512 MiB");
    try {
      archive->ownedBytes_.resize(static_cast<size_t>(size));
    } catch (const std::bad_alloc&) {
      return fail("out of memory");
    }
    if (reader->ReadBlock(archive->ownedBytes_.data(), 0, archive->ownedBytes_.size()) != size)
      return fail("cannot be read");
    bytes = reinterpret_cast<const uint8_t*>(archive->ownedBytes_.data());
  }
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(bytes, size, 0, &error);
  if (!source) {
    zip_error_fini(&error);
    return fail("out of memory");
  }
  zip_t* z = zip_open_from_source(source, ZIP_RDONLY, &error);
  if (!z) {
    if (why) {
      *why = zip_error_code_zip(&error) == ZIP_ER_NOZIP
                 ? std::string("not a zip archive")
                 : std::string("not a readable zip archive (") + zip_error_strerror(&error) + ")";
    }
    zip_error_fini(&error);
    zip_source_free(source);
    return nullptr;
  }
  zip_error_fini(&error);
  archive->zip_.reset(z);
  if (zip_get_num_entries(z, 0) > kMaxEntries) return fail("more than 100000 zip entries");
  return archive;
}

int64_t ZipArchive::EntryCount() const { return zip_get_num_entries(zip_.get(), 0); }

int64_t ZipArchive::Find(const std::string& name, bool ignoreCase) const {
  std::string key = name;
  while (!key.empty() && key.front() == '/') key.erase(key.begin());
  if (key.empty()) return -1;
  const zip_int64_t exact = zip_name_locate(zip_.get(), key.c_str(), 0);
  if (exact >= 0 || !ignoreCase) return exact;
  auto lower = [](std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  };
  if (!lowerIndexBuilt_) {
    const zip_int64_t n = zip_get_num_entries(zip_.get(), 0);
    for (zip_int64_t i = 0; i < n; ++i) {
      std::string e = EntryName(i);
      if (!e.empty()) lowerIndex_.emplace(lower(std::move(e)), i);  // the first one wins
    }
    lowerIndexBuilt_ = true;
  }
  const auto it = lowerIndex_.find(lower(key));
  return it == lowerIndex_.end() ? -1 : it->second;
}

std::string ZipArchive::EntryName(int64_t index) const {
  if (index < 0) return {};
  const char* entry = zip_get_name(zip_.get(), static_cast<zip_uint64_t>(index), 0);
  std::string e(entry ? entry : "");
  while (!e.empty() && e.front() == '/') e.erase(e.begin());
  return e;
}

bool ZipArchive::Read(int64_t index, std::string& out) {
  if (index < 0) return false;
  zip_stat_t st;
  zip_stat_init(&st);
  if (zip_stat_index(zip_.get(), static_cast<zip_uint64_t>(index), 0, &st) != 0) return false;
  const bool charged = charged_.count(index) != 0;
  if (!(st.valid & ZIP_STAT_SIZE) || st.size > kMaxEntryBytes ||
      (!charged && st.size > kMaxTotalBytes - std::min(bytesRead_, kMaxTotalBytes)))
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
  if (!charged) {
    bytesRead_ += st.size;
    charged_.insert(index);
  }
  return ok;
}

bool ZipArchive::ReadNamed(const std::string& name, std::string& out, bool ignoreCase) {
  return Read(Find(name, ignoreCase), out);
}

}  // namespace host
