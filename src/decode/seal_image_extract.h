// Seal pictures through an OES seal-provider plug-in.
#pragma once

#include "host/base/binary_buf.h"
#include "host/base/byte_string.h"
#include "host/base/stream_reader.h"
#include "host/oes/oes_plugin.h"

namespace tarvik {

/// Asks the plug-in for the seal picture of the two seal files, trying the
/// primary request, then the secondary, then the combined one; the three
/// share their output variables. On success appends the picture bytes to
/// `picture`, sets `type`, and returns true; otherwise leaves both alone and
/// returns false. Either stream may be null; with both null the plug-in is
/// not asked. Installs CheckRasterImage as the plug-in's image check.
bool ExtractSealImageData(host::StreamReader* primary, host::StreamReader* secondary,
                          int renderMode, host::OESPlugin* plugin, void* userData,
                          host::BinaryBuf& picture, host::ByteString& type, int* width,
                          int* height);

}  // namespace tarvik
