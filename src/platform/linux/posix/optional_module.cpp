#include "platform/linux/posix/optional_module.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>

namespace varnok {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool isSocket(const std::string& path) {
  struct stat information {};
  return path.starts_with('/') && ::stat(path.c_str(), &information) == 0 && S_ISSOCK(information.st_mode);
}

}  // namespace

void* openModule(const std::string& name) {
  for (const char* directory : {VARNOK_INSTALLED_MODULES, VARNOK_BUILD_MODULES}) {
    const std::string path = std::string(directory) + "/" + name + ".so";
    if (void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
  }
  return nullptr;
}

bool hasSessionBus() {
  return !environment("DBUS_SESSION_BUS_ADDRESS").empty() || isSocket(environment("XDG_RUNTIME_DIR") + "/bus");
}

bool hasSystemBus() {
  return !environment("DBUS_SYSTEM_BUS_ADDRESS").empty() || isSocket("/run/dbus/system_bus_socket") ||
         isSocket("/var/run/dbus/system_bus_socket");
}

}  // namespace varnok
