// Dates as seal and signature files write them, read into seconds since
// 1970-01-01 UTC: GeneralizedTime with or without 'Z' and fractions,
// UTCTime, and the "YYYY-MM-DD hh:mm:ss" text of SignatureDateTime.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/base/host_export.h"

namespace host {

/// Seconds since the epoch (UTC); false when `text` is none of the forms
/// above or a field is out of range. Times without a zone are taken as UTC.
HOST_API bool ParseAsn1Time(std::string_view text, int64_t& out);

/// "2025-01-01 12:00:00 UTC".
HOST_API std::string FormatUtcTime(int64_t seconds);

}  // namespace host
