// The process-wide context of the host platform.
#pragma once

#include "host/base/font_mgr.h"
#include "host/base/host_export.h"

namespace host {

/// Holds the process-wide services. Made on first use; lives until exit.
class HOST_API AppContext {
 public:
  /// The context; never null once the process could make it (null only when
  /// FreeType cannot be initialised). Thread-safe.
  static AppContext* Get();
  FontMgr* GetFontMgr() { return &fontMgr_; }

 private:
  AppContext() = default;
  FontMgr fontMgr_;  // first member: the font manager
};

}  // namespace host
