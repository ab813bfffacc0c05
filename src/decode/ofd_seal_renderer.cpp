#include "decode/ofd_seal_renderer.h"

namespace tarvik {

// The OFD document and rendering libraries are not wired in yet: no OFD seal
// renders until they are.
host::OfdDocument* LoadSealDocument(host::StreamReader*, int) { return nullptr; }

host::Dib* RenderOfdSealImage(const unsigned char*, int, int, int, int) { return nullptr; }

}  // namespace tarvik
