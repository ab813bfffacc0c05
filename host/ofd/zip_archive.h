// Read-only zip archives over libzip, with bounded entry sizes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/base/stream_reader.h"

typedef struct zip zip_t;

namespace host {

/// An open zip archive. Not thread-safe: one thread at a time.
class ZipArchive {
 public:
  /// Largest uncompressed entry read, and largest total per archive.
  static constexpr uint64_t kMaxEntryBytes = 64ull << 20;
  static constexpr uint64_t kMaxTotalBytes = 512ull << 20;
  static constexpr int64_t kMaxEntries = 100000;

  /// Opens the archive in `reader` (which must outlive the archive). Null when
  /// it is not a readable zip archive; then `why`, when given, receives the
  /// reason in words.
  static std::unique_ptr<ZipArchive> Open(StreamReader* reader, std::string* why = nullptr);
  ~ZipArchive();

  /// Index of the entry named `name` (a leading '/' is ignored); when
  /// `ignoreCase` the first case-insensitive match is taken. -1 when absent.
  int64_t Find(const std::string& name, bool ignoreCase = false) const;
  /// Reads an entry whole; false when absent, too large, corrupt, or when the
  /// archive's total read budget is spent. Each entry is charged to the budget
  /// once, so reading the same entry again (a page drawn twice) stays possible.
  bool Read(int64_t index, std::string& out);
  bool ReadNamed(const std::string& name, std::string& out, bool ignoreCase = false);
  int64_t EntryCount() const;
  /// Name of the entry at `index` without a leading '/'; "" when out of range.
  std::string EntryName(int64_t index) const;

 private:
  ZipArchive() = default;
  struct ZipCloser {
    void operator()(zip_t* z) const;
  };
  std::string ownedBytes_;  // copy of a stream that keeps no buffer
  std::unique_ptr<zip_t, ZipCloser> zip_;
  uint64_t bytesRead_ = 0;
  std::unordered_set<int64_t> charged_;  // entries already counted in bytesRead_
  // Lower-case name -> first entry with that name, built on the first
  // case-insensitive miss so that repeated look-ups stay cheap.
  mutable std::unordered_map<std::string, int64_t> lowerIndex_;
  mutable bool lowerIndexBuilt_ = false;
};

}  // namespace host
