#include "host/oes/oes_plugin.h"

namespace host {

OESPlugin::~OESPlugin() = default;

}  // namespace host
