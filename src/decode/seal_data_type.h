// Telling seal data kinds apart: a raster picture or an OFD package.
#pragma once

#include "host/base/byte_string.h"

namespace tarvik {

/// Sets `kind` to "image" for bytes a raster codec recognises, or to "ofd" for
/// an OFD package, and returns true. Otherwise prints
/// "Found unknown seal image type\n" on standard output and returns false
/// with `kind` unchanged.
bool DetectSealDataType(const unsigned char* data, unsigned int length, host::ByteString& kind);

/// 1 when the bytes decode as a raster picture, else 0. Has the form of the
/// seal provider's image check callback.
int CheckRasterImage(unsigned char* data, unsigned long length);

}  // namespace tarvik
