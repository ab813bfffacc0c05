// Internal to the host platform and its tests: making one allocation through
// the memory functions fail, so that tests can walk the failure paths.
#pragma once

#include <cstdint>

#include "host/base/host_export.h"

namespace host {

/// Arms the hook: the n-th allocation from now through AllocMemory or
/// ReallocMemory (and so Plex blocks, Dib pixels and the device's picture
/// copies) fails, that one only; n <= 0 disarms. Returns how many
/// allocations the previous arming still had to go (0 when it fired or none
/// was armed): arming with a large n and disarming after some work counts
/// the allocations the work made. Process-wide and atomic; allocations on
/// other threads count too. Unarmed, an allocation costs one relaxed load.
HOST_API int64_t FailNthAllocation(int64_t n);

}  // namespace host
