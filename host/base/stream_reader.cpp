#include "host/base/stream_reader.h"

#include <cstdio>
#include <cstring>
#include <mutex>

#include "host/base/memory.h"

namespace host {

StreamReader::~StreamReader() = default;

bool StreamReader::SetPosition(uint64_t position) {
  if (position > GetSize()) return false;
  position_ = position;
  return true;
}

size_t StreamReader::Read(void* out, size_t size) {
  const size_t n = ReadBlock(out, position_, size);
  position_ += n;
  return n;
}

namespace {

class MemoryStreamReader final : public StreamReader {
 public:
  MemoryStreamReader(const uint8_t* data, uint64_t size, bool owns)
      : data_(data), size_(size), owns_(owns) {}
  explicit MemoryStreamReader(std::string bytes)
      : copy_(std::move(bytes)),
        data_(reinterpret_cast<const uint8_t*>(copy_.data())),
        size_(copy_.size()),
        owns_(false) {}
  ~MemoryStreamReader() override {
    if (owns_) FreeMemory(const_cast<uint8_t*>(data_));
  }
  uint64_t GetSize() const override { return size_; }
  size_t ReadBlock(void* out, uint64_t offset, size_t size) override {
    if (offset >= size_ || size == 0) return 0;
    const uint64_t n = std::min<uint64_t>(size, size_ - offset);
    std::memcpy(out, data_ + offset, static_cast<size_t>(n));
    return static_cast<size_t>(n);
  }
  const uint8_t* GetBuffer() const override { return data_; }

 private:
  std::string copy_;
  const uint8_t* data_;
  uint64_t size_;
  bool owns_;
};

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

class FileStreamReader final : public StreamReader {
 public:
  FileStreamReader(std::FILE* f, uint64_t size) : file_(f), size_(size) {}
  uint64_t GetSize() const override { return size_; }
  size_t ReadBlock(void* out, uint64_t offset, size_t size) override {
    if (offset >= size_ || size == 0) return 0;
    const uint64_t n = std::min<uint64_t>(size, size_ - offset);
    std::lock_guard<std::mutex> lock(mutex_);
    if (fseeko(file_.get(), static_cast<off_t>(offset), SEEK_SET) != 0) return 0;
    return std::fread(out, 1, static_cast<size_t>(n), file_.get());
  }
  const uint8_t* GetBuffer() const override { return nullptr; }

 private:
  std::unique_ptr<std::FILE, FileCloser> file_;
  uint64_t size_;
  std::mutex mutex_;
};

}  // namespace

StreamReader* StreamReader::CreateMemoryStreamReader(const uint8_t* data, uint64_t size,
                                                     int takeOver) {
  if (!data && size != 0) return nullptr;
  return new (std::nothrow) MemoryStreamReader(data, size, takeOver != 0);
}

StreamReader* StreamReader::CreateMemoryStreamReader(std::string bytes) {
  return new (std::nothrow) MemoryStreamReader(std::move(bytes));
}

StreamReader* StreamReader::CreateFileStreamReader(const char* path) {
  if (!path) return nullptr;
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return nullptr;
  if (fseeko(f, 0, SEEK_END) != 0) {
    std::fclose(f);
    return nullptr;
  }
  const off_t size = ftello(f);
  if (size < 0) {
    std::fclose(f);
    return nullptr;
  }
  auto* r = new (std::nothrow) FileStreamReader(f, static_cast<uint64_t>(size));
  if (!r) std::fclose(f);
  return r;
}

}  // namespace host
