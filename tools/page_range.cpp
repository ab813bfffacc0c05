#include "page_range.h"

#include <algorithm>

#include "options.h"

namespace tools {

namespace {

constexpr long kMaxPage = 1000000;

bool PageNumber(const std::string& text, long& out, std::string& why) {
  if (ParseInteger(text, 1, kMaxPage, out, why)) return true;
  if (text.find_first_not_of("0123456789") == std::string::npos && !text.empty()) {
    why = text == "0" || std::all_of(text.begin(), text.end(), [](char c) { return c == '0'; })
              ? "pages count from 1"
              : why;
  } else {
    why = "'" + text + "' is not a page number";
  }
  return false;
}

}  // namespace

bool PageRange::Parse(const std::string& text, std::string& why) {
  spans_.clear();
  size_t start = 0;
  while (true) {
    const size_t comma = text.find(',', start);
    const std::string item = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    Span span{0, 0};
    const size_t dash = item.find('-');
    if (item.empty()) {
      why = "'" + text + "' has an empty item; write pages as 1-3,5";
      return false;
    }
    if (dash == std::string::npos) {
      if (!PageNumber(item, span.first, why)) return false;
      span.last = span.first;
    } else {
      if (!PageNumber(item.substr(0, dash), span.first, why)) return false;
      const std::string last = item.substr(dash + 1);
      if (!last.empty()) {
        if (!PageNumber(last, span.last, why)) return false;
        if (span.last < span.first) {
          why = "'" + item + "' runs backwards";
          return false;
        }
      }
    }
    spans_.push_back(span);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return true;
}

bool PageRange::IsSinglePage() const {
  return spans_.size() == 1 && spans_[0].first == spans_[0].last;
}

bool PageRange::Resolve(int count, std::vector<int>& pages, std::string& why) const {
  pages.clear();
  std::vector<bool> taken(static_cast<size_t>(std::max(count, 0)), false);
  auto add = [&](long page) {
    if (!taken[static_cast<size_t>(page - 1)]) {
      taken[static_cast<size_t>(page - 1)] = true;
      pages.push_back(static_cast<int>(page - 1));
    }
  };
  if (spans_.empty()) {
    for (long p = 1; p <= count; ++p) add(p);
    return true;
  }
  for (const Span& span : spans_) {
    const long last = span.last == 0 ? count : span.last;
    if (span.first > count || last > count) {
      why = "there is no page " + std::to_string(std::max(span.first, last)) + " (the document has " +
            std::to_string(count) + " page" + (count == 1 ? "" : "s") + ")";
      return false;
    }
    for (long p = span.first; p <= last; ++p) add(p);
  }
  return true;
}

}  // namespace tools
