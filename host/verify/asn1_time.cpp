#include "host/verify/asn1_time.h"

#include <cstdio>

namespace host {
namespace {

// Days from 1970-01-01 to the given civil date (proleptic Gregorian).
int64_t DaysFromCivil(int64_t y, int64_t m, int64_t d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

// Reads `n` digits at `pos`, skipping one separator from `seps` first.
bool Digits(std::string_view s, size_t& pos, int n, const char* seps, int& out) {
  if (pos < s.size() && seps) {
    for (const char* p = seps; *p; ++p) {
      if (s[pos] == *p) {
        ++pos;
        break;
      }
    }
  }
  if (pos + static_cast<size_t>(n) > s.size()) return false;
  out = 0;
  for (int i = 0; i < n; ++i) {
    const char c = s[pos++];
    if (c < '0' || c > '9') return false;
    out = out * 10 + (c - '0');
  }
  return true;
}

}  // namespace

bool ParseAsn1Time(std::string_view s, int64_t& out) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.remove_suffix(1);
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  size_t digits = 0;
  while (digits < s.size() && s[digits] >= '0' && s[digits] <= '9') ++digits;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  size_t pos = 0;
  if (digits == 10 || digits == 12) {  // UTCTime: YYMMDDhhmm[ss]
    int yy = 0;
    if (!Digits(s, pos, 2, nullptr, yy)) return false;
    year = yy < 50 ? 2000 + yy : 1900 + yy;
  } else if (!Digits(s, pos, 4, nullptr, year)) {
    return false;
  }
  const bool dashed = pos < s.size() && s[pos] == '-';
  if (!Digits(s, pos, 2, dashed ? "-" : nullptr, month) || !Digits(s, pos, 2, dashed ? "-" : nullptr, day) ||
      !Digits(s, pos, 2, dashed ? " T" : nullptr, hour) || !Digits(s, pos, 2, dashed ? ":" : nullptr, minute)) {
    return false;
  }
  if (pos < s.size() && (s[pos] == ':' || (s[pos] >= '0' && s[pos] <= '9'))) {
    if (!Digits(s, pos, 2, ":", second)) return false;
  }
  if (pos < s.size() && (s[pos] == '.' || s[pos] == ',')) {  // fractions are dropped
    ++pos;
    while (pos < s.size() && s[pos] >= '0' && s[pos] <= '9') ++pos;
  }
  int offset = 0;
  if (pos < s.size() && (s[pos] == '+' || s[pos] == '-')) {
    const int sign = s[pos++] == '-' ? -1 : 1;
    int oh = 0, om = 0;
    if (!Digits(s, pos, 2, nullptr, oh) || !Digits(s, pos, 2, ":", om) || oh > 14 || om > 59) return false;
    offset = sign * (oh * 3600 + om * 60);
  } else if (pos < s.size() && s[pos] == 'Z') {
    ++pos;
  }
  if (pos != s.size() || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 ||
      second > 60) {
    return false;
  }
  out = DaysFromCivil(year, month, day) * 86400 + hour * 3600 + minute * 60 + second - offset;
  return true;
}

std::string FormatUtcTime(int64_t t) {
  int64_t days = t >= 0 ? t / 86400 : (t - 86399) / 86400;
  const int64_t rem = t - days * 86400;
  // Civil date from days (inverse of DaysFromCivil).
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t doe = days - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int64_t d = doy - (153 * mp + 2) / 5 + 1;
  const int64_t m = mp < 10 ? mp + 3 : mp - 9;
  const int64_t y = yoe + era * 400 + (m <= 2);
  char buf[160];
  std::snprintf(buf, sizeof buf, "%04lld-%02lld-%02lld %02lld:%02lld:%02lld UTC", static_cast<long long>(y),
                static_cast<long long>(m), static_cast<long long>(d), static_cast<long long>(rem / 3600),
                static_cast<long long>(rem / 60 % 60), static_cast<long long>(rem % 60));
  return buf;
}

}  // namespace host
