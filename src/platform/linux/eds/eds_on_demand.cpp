#include <dlfcn.h>

#include "platform/linux/eds/eds_contact_store.h"
#include "platform/linux/eds/eds_module.h"
#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

struct Module {
  decltype(&varnokOpenEdsBook) open = nullptr;
  decltype(&varnokListEdsBooks) list = nullptr;
};

Module loadModule() {
  void* module = openModule("varnok-eds");
  if (module == nullptr) return {};
  return {reinterpret_cast<decltype(&varnokOpenEdsBook)>(dlsym(module, "varnokOpenEdsBook")),
          reinterpret_cast<decltype(&varnokListEdsBooks)>(dlsym(module, "varnokListEdsBooks"))};
}

// Null with a Status when it cannot be loaded or would find no service.
const Module* module(Status& status) {
  static const Module loaded = loadModule();
  status = {};
  if (loaded.open == nullptr || loaded.list == nullptr) {
    status = {Status::Code::unavailable,
              "the desktop's address book cannot be used: the module varnok-eds, which belongs to this program, is "
              "missing or lacks libebook"};
    return nullptr;
  }
  if (!hasSessionBus()) {
    status = {Status::Code::unavailable,
              "the desktop's address book cannot be reached: there is no session bus (DBUS_SESSION_BUS_ADDRESS)"};
    return nullptr;
  }
  return &loaded;
}

}  // namespace

std::unique_ptr<EdsBook> openEdsBook(const std::string& uid, Status& status) {
  const Module* loaded = module(status);
  return std::unique_ptr<EdsBook>(loaded == nullptr ? nullptr : loaded->open(uid.c_str(), &status));
}

std::vector<EdsSource> edsSources(Status& status) {
  std::vector<EdsSource> sources;
  if (const Module* loaded = module(status)) loaded->list(&sources, &status);
  return sources;
}

}  // namespace varnok
