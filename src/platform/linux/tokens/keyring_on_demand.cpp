#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

#include "platform/linux/posix/optional_module.h"
#include "platform/linux/tokens/keyring_module.h"

namespace varnok {
namespace {

// Null when the module cannot be loaded.
decltype(&varnokMakeKeyring) makerOfModule() {
  void* module = openModule("varnok-keyring");
  if (module == nullptr) return nullptr;
  return reinterpret_cast<decltype(&varnokMakeKeyring)>(dlsym(module, "varnokMakeKeyring"));
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
  const char* backend = std::getenv("SECRET_BACKEND");
  if ((backend == nullptr || std::string_view(backend) != "file") && !hasSessionBus()) return nullptr;
  return std::make_unique<KeyringOnDemand>(name);
}

}  // namespace varnok
