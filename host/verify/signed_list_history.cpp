#include "host/verify/signed_list_history.h"

namespace host {
namespace {

struct Entry {
  size_t start = 0;  // the '<' of the element
  std::string id;
};

bool IsNameEnd(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>'; }

// Signature elements in order: "<Signature " or "<prefix:Signature ".
std::vector<Entry> FindEntries(std::string_view s) {
  std::vector<Entry> out;
  constexpr std::string_view kName = "Signature";
  for (size_t lt = s.find('<'); lt != std::string_view::npos && out.size() < 10000; lt = s.find('<', lt + 1)) {
    size_t name = lt + 1;
    const size_t colon = s.find_first_of(":> \t\r\n/", name);
    if (colon != std::string_view::npos && s[colon] == ':') name = colon + 1;
    if (s.compare(name, kName.size(), kName) != 0 || name + kName.size() >= s.size() ||
        !IsNameEnd(s[name + kName.size()])) {
      continue;
    }
    const size_t close = s.find('>', name);
    if (close == std::string_view::npos) break;
    const std::string_view tag = s.substr(lt, close - lt);
    Entry e;
    e.start = lt;
    for (size_t at = tag.find("ID"); at != std::string_view::npos; at = tag.find("ID", at + 2)) {
      // "ID" as a whole attribute name, not the end of "SignID" and the like.
      if (at == 0 || !IsNameEnd(tag[at - 1])) continue;
      size_t q = at + 2;
      while (q < tag.size() && (tag[q] == ' ' || tag[q] == '=')) ++q;
      if (q >= tag.size() || (tag[q] != '"' && tag[q] != '\'')) continue;
      const size_t endQuote = tag.find(tag[q], q + 1);
      if (endQuote == std::string_view::npos) break;
      e.id = std::string(tag.substr(q + 1, endQuote - q - 1));
      break;
    }
    out.push_back(std::move(e));
  }
  return out;
}

}  // namespace

bool FindEarlierSignatureList(std::string_view bytes, std::string_view id,
                              const std::function<bool(std::string_view)>& matches,
                              std::vector<std::string>& added) {
  added.clear();
  const std::vector<Entry> entries = FindEntries(bytes);
  size_t self = entries.size();
  for (size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].id == id) {
      self = i;
      break;
    }
  }
  if (self >= entries.size()) return false;
  const size_t closing = bytes.rfind("</");
  if (closing == std::string_view::npos) return false;
  for (size_t i = self + 1; i < entries.size(); ++i) added.push_back(entries[i].id);
  for (size_t k = self + 1; k < entries.size(); ++k) {
    std::string earlier(bytes.substr(0, entries[k].start));
    earlier.append(bytes.substr(closing));
    if (matches(earlier)) {
      added.erase(added.begin(), added.begin() + static_cast<std::ptrdiff_t>(k - self - 1));
      return true;
    }
  }
  return false;
}

}  // namespace host
