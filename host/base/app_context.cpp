#include "host/base/app_context.h"

namespace host {

AppContext* AppContext::Get() {
  // One of the two process-wide mutable objects; C++ makes it thread-safely on first use.
  static AppContext context;
  return context.fontMgr_.Ready() ? &context : nullptr;
}

}  // namespace host
