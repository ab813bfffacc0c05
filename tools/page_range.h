// Page selections such as "1-3,5" or "4-", counted from 1.
#pragma once

#include <string>
#include <vector>

namespace tools {

class PageRange {
 public:
  /// Parses a comma-separated list of N, N-M and N- items. False with the
  /// reason for anything else, page 0, or a span that runs backwards.
  bool Parse(const std::string& text, std::string& why);
  /// True when the selection names exactly one page ("5").
  bool IsSinglePage() const;
  /// The selected pages of a document of `count` pages as indexes from 0, in
  /// the order given without repeats. False with the reason when a page
  /// beyond `count` is asked for.
  bool Resolve(int count, std::vector<int>& pages, std::string& why) const;
  bool empty() const { return spans_.empty(); }

 private:
  struct Span {
    long first;
    long last;  // 0: to the end
  };
  std::vector<Span> spans_;
};

}  // namespace tools
