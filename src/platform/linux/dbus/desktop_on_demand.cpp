#include <dlfcn.h>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/posix/optional_module.h"

namespace varnok {

void* desktopModuleFunction(const char* name) {
  static void* const module = openModule("varnok-desktop");
  return module == nullptr ? nullptr : dlsym(module, name);
}

}  // namespace varnok
