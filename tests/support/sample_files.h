// The sample files under testdata/, read whole, and entries of sample packages.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

#include "support/zip_builder.h"

namespace testing_support {

/// testdata/`name` in the source tree.
inline std::string SamplePath(const std::string& name) {
  return std::string(TARVIK_SOURCE_DIR) + "/testdata/" + name;
}

/// The bytes of the file at `path`; empty when it cannot be read.
inline std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// The content of the entry `name` in `entries`; empty when absent.
inline std::string EntryOf(const ZipEntries& entries, const std::string& name) {
  for (const auto& [entry, content] : entries)
    if (entry == name) return content;
  return {};
}

}  // namespace testing_support
