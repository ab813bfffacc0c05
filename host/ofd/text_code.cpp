#include "host/ofd/text_code.h"

#include <algorithm>
#include <cmath>

#include "host/ofd/ofd_xml.h"

namespace host {

bool ParseDeltaList(std::string_view text, size_t maxCount, std::vector<float>& out) {
  out.clear();
  std::string_view s = text;
  for (;;) {
    ofdxml::SkipSeparators(s);
    if (s.empty() || out.size() >= maxCount) return true;
    if (s.front() == 'g' || s.front() == 'G') {
      s.remove_prefix(1);
      float count = 0, value = 0;
      if (!ofdxml::ScanNumber(s, count) || !ofdxml::ScanNumber(s, value)) return false;
      if (count < 0 || count != std::floor(count)) return false;
      const double room = static_cast<double>(maxCount - out.size());
      const size_t n = static_cast<size_t>(std::min<double>(count, room));
      out.insert(out.end(), n, value);
      continue;
    }
    float value = 0;
    if (!ofdxml::ScanNumber(s, value)) return false;
    out.push_back(value);
  }
}

void LayoutCharacters(float x, float y, const std::vector<float>& deltaX,
                      const std::vector<float>& deltaY, size_t count,
                      float (*advance)(size_t index, void* user), void* user,
                      std::vector<float>& xs, std::vector<float>& ys) {
  xs.assign(count, 0);
  ys.assign(count, 0);
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) {
      const size_t p = i - 1;
      x += p < deltaX.size() ? deltaX[p] : (advance ? advance(p, user) : 0.0f);
      y += p < deltaY.size() ? deltaY[p] : 0.0f;
    }
    xs[i] = x;
    ys[i] = y;
  }
}

}  // namespace host
