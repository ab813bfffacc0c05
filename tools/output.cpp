#include "output.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace tools {

namespace {

std::string Lower(std::string s) {
  for (char& c : s) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return s;
}

size_t ExtensionAt(const std::string& path) {
  const size_t dot = path.rfind('.');
  const size_t slash = path.rfind('/');
  if (dot == std::string::npos || dot == 0 || (slash != std::string::npos && dot < slash + 2)) {
    return std::string::npos;
  }
  return dot;
}

std::string Reason(int code) { return std::strerror(code ? code : EIO); }

}  // namespace

bool FormatFromName(const std::string& name, Format& out) {
  const std::string n = Lower(name);
  if (n == "png") {
    out = Format::kPng;
  } else if (n == "jpeg" || n == "jpg") {
    out = Format::kJpeg;
  } else if (n == "pdf") {
    out = Format::kPdf;
  } else if (n == "svg") {
    out = Format::kSvg;
  } else {
    return false;
  }
  return true;
}

bool FormatFromPath(const std::string& path, Format& out) {
  const size_t dot = ExtensionAt(path);
  return dot != std::string::npos && FormatFromName(path.substr(dot + 1), out);
}

const char* Extension(Format format) {
  static const char* const kExtensions[] = {".png", ".jpg", ".pdf", ".svg"};
  return kExtensions[static_cast<int>(format)];
}

const char* FormatName(Format format) {
  static const char* const kNames[] = {"PNG", "JPEG", "PDF", "SVG"};
  return kNames[static_cast<int>(format)];
}

bool HasExtension(const std::string& path) { return ExtensionAt(path) != std::string::npos; }

std::string NumberedName(const std::string& path, int number, Format format) {
  const size_t dot = ExtensionAt(path);
  if (dot == std::string::npos) return path + "-" + std::to_string(number) + Extension(format);
  return path.substr(0, dot) + "-" + std::to_string(number) + path.substr(dot);
}

std::string Stem(const std::string& path) {
  std::string name = std::filesystem::path(path).filename().string();
  const size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.erase(dot);
  return name.empty() ? "out" : name;
}

bool OutputFile::Open(const std::string& path, std::string& why) {
  path_ = path;
  if (path == "-") {
    file_ = stdout;
    isStdout_ = true;
    return true;
  }
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    why = path + ": cannot write: it is a directory";
    return false;
  }
  file_ = std::fopen(path.c_str(), "wb");
  if (!file_) {
    why = path + ": cannot write (" + Reason(errno) + ")";
    return false;
  }
  return true;
}

bool OutputFile::Write(const void* data, size_t size) {
  if (!file_ || error_) return false;
  if (size && std::fwrite(data, 1, size, file_) != size) error_ = errno ? errno : EIO;
  return error_ == 0;
}

bool OutputFile::Close(std::string& why) {
  if (file_) {
    if (std::fflush(file_) != 0 && !error_) error_ = errno ? errno : EIO;
    if (!isStdout_ && std::fclose(file_) != 0 && !error_) error_ = errno ? errno : EIO;
    file_ = nullptr;
  }
  if (error_) {
    why = (isStdout_ ? std::string("standard output") : path_) + ": cannot write (" + Reason(error_) + ")";
    return false;
  }
  return true;
}

OutputFile::~OutputFile() {
  if (file_ && !isStdout_) std::fclose(file_);
}

bool WriteWholeFile(const std::string& path, const std::string& bytes, std::string& why) {
  OutputFile file;
  if (!file.Open(path, why)) return false;
  file.Write(bytes.data(), bytes.size());
  return file.Close(why);
}

bool ReadWholeFile(const std::string& path, std::string& out, std::string& why) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) {
    why = path + ": cannot read: it is a directory";
    return false;
  }
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) {
    why = path + ": cannot read (" + Reason(errno) + ")";
    return false;
  }
  out.clear();
  char buffer[65536];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) out.append(buffer, n);
  const bool failed = std::ferror(f) != 0;
  const int code = errno;
  std::fclose(f);
  if (failed) {
    why = path + ": cannot read (" + Reason(code) + ")";
    return false;
  }
  return true;
}

}  // namespace tools
