// Character positions of OFD text codes: X, Y and the DeltaX/DeltaY lists.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/base/host_export.h"

namespace host {

/// Expands a DeltaX or DeltaY list: blank-separated numbers, where "g n v"
/// stands for n copies of v. At most `maxCount` values are produced (a longer
/// list is cut there, which is not an error). False for malformed text (a
/// "g" without a non-negative whole count and a value, or anything that is
/// not a number); `out` then keeps the values before the fault. Thread-safe.
HOST_API bool ParseDeltaList(std::string_view text, size_t maxCount, std::vector<float>& out);

/// Origins of `count` characters: the first at (x, y), each next one moved by
/// the previous character's DeltaX/DeltaY entry. A character past the end of
/// `deltaX` moves by `advance(i)` of the previous character i when `advance`
/// is given, else by 0; past the end of `deltaY` it moves by 0.
HOST_API void LayoutCharacters(float x, float y, const std::vector<float>& deltaX,
                               const std::vector<float>& deltaY, size_t count,
                               float (*advance)(size_t index, void* user), void* user,
                               std::vector<float>& xs, std::vector<float>& ys);

}  // namespace host
