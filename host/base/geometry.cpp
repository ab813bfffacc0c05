#include "host/base/geometry.h"

#include <utility>

namespace host {

void GRect::Normalize() {
  if (left > right) std::swap(left, right);
  if (top > bottom) std::swap(top, bottom);
}

}  // namespace host
