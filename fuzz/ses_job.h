// The job the seal file fuzz target runs, shared with the corpus replay
// test: arbitrary bytes through the seal and signature parsers, the DER
// reader under them and the seal provider's picture lookup. They must refuse
// bad input without crashing, overreading, leaking or recursing without
// bound. Returns the number of parsers that accepted the bytes.
#pragma once

#include <cstdint>
#include <string>

#include "host/oes/der_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/oes/ses_seal.h"

namespace fuzzjob {

// Reads every value at every level, as a caller exploring unknown data would.
inline void WalkDer(host::DerReader r) {
  host::DerElement e;
  std::string text;
  int64_t n = 0;
  while (r.Next(e)) {
    host::DerReadString(e, text);
    host::DerReadInteger(e, n);
    host::DerReadObjectId(e, text);
    if (e.IsConstructed()) WalkDer(r.Enter(e));
  }
}

inline int ParseSes(std::string bytes) {
  if (bytes.size() > (1u << 20)) return 0;
  host::SesSeal seal;
  host::SesSignature signature;
  int accepted = static_cast<bool>(host::ParseSesSeal(bytes, seal));
  accepted += static_cast<bool>(host::ParseSesSignature(bytes, signature));
  WalkDer(host::DerReader(bytes));
  host::SesPlugin plugin;
  std::string picture, type;
  int width = 0, height = 0;
  plugin.GetCombinedSealImage(bytes, bytes, picture, type, width, height);
  return accepted;
}

}  // namespace fuzzjob
