#include "platform/linux/dbus/desktop_module.h"

namespace varnok {

void* desktopModuleFunction(const char* /*name*/) {
  return nullptr;
}

}  // namespace varnok
