#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string_view>

#include "platform/linux/tokens/keyring_module.h"

namespace varnok {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// Asking for a bus where there is none would start one.
bool hasSessionBus() {
  if (!environment("DBUS_SESSION_BUS_ADDRESS").empty()) return true;
  const std::string socket = environment("XDG_RUNTIME_DIR") + "/bus";
  struct stat information {};
  return socket.starts_with('/') && ::stat(socket.c_str(), &information) == 0 && S_ISSOCK(information.st_mode);
}

// From where the program was installed to, else from where it was built. Null
// when neither can be loaded.
decltype(&varnokMakeKeyring) makerOfModule() {
  for (const char* path : {VARNOK_INSTALLED_MODULES "/varnok-keyring.so", VARNOK_BUILD_MODULES "/varnok-keyring.so"}) {
    if (void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
      return reinterpret_cast<decltype(&varnokMakeKeyring)>(dlsym(module, "varnokMakeKeyring"));
    }
  }
  return nullptr;
}

class KeyringOnDemand : public Keyring {
 public:
  explicit KeyringOnDemand(std::string name) : name_(std::move(name)) {}

  Status store(const std::string& label, const std::string& secret) override {
    const auto keyring = loaded();
    return keyring == nullptr ? missing() : keyring->store(label, secret);
  }
  std::optional<std::string> load(Status& status) override {
    const auto keyring = loaded();
    if (keyring != nullptr) return keyring->load(status);
    status = missing();
    return std::nullopt;
  }
  Status clear() override {
    const auto keyring = loaded();
    return keyring == nullptr ? missing() : keyring->clear();
  }

 private:
  std::unique_ptr<Keyring> loaded() const {
    static const auto maker = makerOfModule();
    return std::unique_ptr<Keyring>(maker == nullptr ? nullptr : maker(name_.c_str()));
  }
  static Status missing() { return {Status::Code::unavailable, "the module varnok-keyring cannot be loaded"}; }

  const std::string name_;
};

}  // namespace

std::unique_ptr<Keyring> openKeyring(const std::string& name) {
  // The service's own store in a file is for tests and for sandboxes.
  if (environment("SECRET_BACKEND") != "file" && !hasSessionBus()) return nullptr;
  return std::make_unique<KeyringOnDemand>(name);
}

}  // namespace varnok
