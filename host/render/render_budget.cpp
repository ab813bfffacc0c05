#include "host/render/render_budget.h"

namespace host {

const char* RenderStopText(RenderStop stop) {
  switch (stop) {
    case RenderStop::kObjects: return "too many objects";
    case RenderStop::kSegments: return "too many path segments";
    case RenderStop::kScanRows: return "paths too complex";
    case RenderStop::kMemory: return "too much memory";
    default: return "";
  }
}

}  // namespace host
