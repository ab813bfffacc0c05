// OFD packages: zip archives whose OFD.xml lists the documents.
#pragma once

#include "host/base/host_export.h"
#include "host/base/stream_reader.h"

namespace host {

class HOST_API OfdPackage {
 public:
  /// 1 when the stream holds a zip archive whose OFD.xml has the root element
  /// `OFD` (with or without the `ofd:` prefix), else 0. Reads from offset 0
  /// and leaves the position at 0. Thread-safe; never prints.
  static int CheckFileType(StreamReader* reader);
};

}  // namespace host
