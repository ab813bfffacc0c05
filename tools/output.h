// Output files of the tarvik program: formats, names, and writing with the
// system's reason on failure. "-" stands for standard output.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace tools {

enum class Format { kPng, kJpeg, kPdf, kSvg };

/// "png", "jpeg" (or "jpg"), "pdf", "svg"; false for anything else.
bool FormatFromName(const std::string& name, Format& out);
/// The format an output name's extension asks for; false when it has none
/// or one not listed above.
bool FormatFromPath(const std::string& path, Format& out);
/// ".png", ".jpg", ".pdf", ".svg".
const char* Extension(Format format);
/// "PNG", "JPEG", "PDF", "SVG".
const char* FormatName(Format format);
/// True when `path` has an extension after its last '/'.
bool HasExtension(const std::string& path);
/// OUT.png -> OUT-<n>.png; OUT -> OUT-<n><extension>.
std::string NumberedName(const std::string& path, int number, Format format);
/// The file name of `path` without directories and its last extension.
std::string Stem(const std::string& path);

/// A file being written (or standard output for "-"); failures keep the
/// first system reason. Closes on destruction.
class OutputFile {
 public:
  /// Opens `path` for writing; false with "PATH: cannot write (reason)" in `why`.
  bool Open(const std::string& path, std::string& why);
  /// Appends bytes; false once anything failed.
  bool Write(const void* data, size_t size);
  /// Flushes and closes; false with the reason when anything failed.
  bool Close(std::string& why);
  ~OutputFile();

 private:
  std::string path_;
  std::FILE* file_ = nullptr;
  bool isStdout_ = false;
  int error_ = 0;  // first errno seen
};

/// Writes `bytes` to `path` ("-": standard output); false with the reason.
bool WriteWholeFile(const std::string& path, const std::string& bytes, std::string& why);

/// Reads a whole file; false with "PATH: cannot read (reason)" or "PATH: is a
/// directory" in `why`.
bool ReadWholeFile(const std::string& path, std::string& out, std::string& why);

}  // namespace tools
