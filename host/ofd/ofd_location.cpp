#include "host/ofd/ofd_location.h"

#include <vector>

namespace host {

std::string NormalizeLocation(std::string_view location) {
  std::vector<std::string_view> steps;
  std::string unified(location);
  for (char& c : unified)
    if (c == '\\') c = '/';
  std::string_view rest(unified);
  while (!rest.empty()) {
    const size_t slash = rest.find('/');
    const std::string_view step = rest.substr(0, slash);
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
    if (step.empty() || step == ".") continue;
    if (step == "..") {
      if (!steps.empty()) steps.pop_back();
      continue;
    }
    steps.push_back(step);
  }
  std::string out;
  for (const auto& step : steps) {
    if (!out.empty()) out += '/';
    out.append(step);
  }
  return out;
}

std::string ResolveLocation(std::string_view baseFolder, std::string_view location) {
  if (!location.empty() && (location.front() == '/' || location.front() == '\\'))
    return NormalizeLocation(location);
  std::string joined(baseFolder);
  joined += '/';
  joined.append(location);
  return NormalizeLocation(joined);
}

std::string FolderOf(std::string_view path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string_view::npos ? std::string() : std::string(path.substr(0, slash + 1));
}

}  // namespace host
