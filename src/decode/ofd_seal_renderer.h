// Rendering seal pictures that are small OFD packages.
#pragma once

#include "host/base/dib.h"
#include "host/base/stream_reader.h"

namespace host {
class OfdDocument;
}

namespace tarvik {

/// Loads the first document of the package in `reader` (which the package
/// takes over with `flag` 1). Null when the reader is null, the package does
/// not load, lists no document, or its first document does not load or has
/// no page. May throw std::bad_alloc.
host::OfdDocument* LoadSealDocument(host::StreamReader* reader, int flag);

/// Renders page 0 of the OFD package in `data` into a new bitmap from the
/// installed device creator: at `resolution` dpi when above 0, else at
/// `width` x `height` pixels. Null on any failure.
host::Dib* RenderOfdSealImage(const unsigned char* data, int length, int width, int height,
                              int resolution);

}  // namespace tarvik
