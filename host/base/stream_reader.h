// Random-access byte sources.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/base/host_export.h"

namespace host {

/// A readable stream of bytes with a current position. A reader is used by one
/// thread at a time. Destroy with Release() (or delete).
class HOST_API StreamReader {
 public:
  virtual ~StreamReader();
  /// Total size in bytes.
  virtual uint64_t GetSize() const = 0;
  /// Reads up to `size` bytes at `offset` into `out`; returns the count read
  /// (0 past the end or on error). Does not move the position.
  virtual size_t ReadBlock(void* out, uint64_t offset, size_t size) = 0;
  /// Pointer to all of the stream's bytes, or null when it keeps no buffer.
  virtual const uint8_t* GetBuffer() const = 0;

  uint64_t GetPosition() const { return position_; }
  /// Moves the position; false (unchanged) past the end.
  bool SetPosition(uint64_t position);
  /// Reads at the position and advances it.
  size_t Read(void* out, size_t size);
  /// Destroys the reader.
  void Release() { delete this; }

  /// A reader over `size` bytes at `data`. With `takeOver` non-zero the reader
  /// owns the bytes and frees them with FreeMemory; otherwise they are read in
  /// place and must outlive the reader. Null for a null pointer with a
  /// non-zero size.
  static StreamReader* CreateMemoryStreamReader(const uint8_t* data, uint64_t size, int takeOver);
  /// A reader that owns a copy of `bytes`.
  static StreamReader* CreateMemoryStreamReader(std::string bytes);
  /// A reader over a file; null when it cannot be opened. The file's bytes are
  /// read on demand.
  static StreamReader* CreateFileStreamReader(const char* path);

 private:
  uint64_t position_ = 0;
};

/// Owns a StreamReader and releases it.
struct StreamReaderDeleter {
  void operator()(StreamReader* r) const { if (r) r->Release(); }
};
using StreamReaderPtr = std::unique_ptr<StreamReader, StreamReaderDeleter>;

}  // namespace host
