// Feeds arbitrary bytes to the seal and signature parsers and the DER reader
// under them: they must refuse bad input without crashing, overreading,
// leaking or recursing without bound.
#include <cstdint>
#include <string>
#include <string_view>

#include "host/oes/der_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/oes/ses_seal.h"

namespace {

// Reads every value at every level, as a caller exploring unknown data would.
void Walk(host::DerReader r) {
  host::DerElement e;
  std::string text;
  int64_t n = 0;
  while (r.Next(e)) {
    host::DerReadString(e, text);
    host::DerReadInteger(e, n);
    host::DerReadObjectId(e, text);
    if (e.IsConstructed()) Walk(r.Enter(e));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  host::SesSeal seal;
  host::SesSignature signature;
  host::ParseSesSeal(bytes, seal);
  host::ParseSesSignature(bytes, signature);
  Walk(host::DerReader(bytes));

  host::SesPlugin plugin;
  std::string picture, type;
  int width = 0, height = 0;
  plugin.GetCombinedSealImage(bytes, bytes, picture, type, width, height);
  return 0;
}
