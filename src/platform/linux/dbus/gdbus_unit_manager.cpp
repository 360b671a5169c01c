#include "platform/linux/dbus/unit_manager.h"

#include <initializer_list>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/gdbus.h"

namespace varnok {
namespace {

GVariant* textsOf(std::initializer_list<std::string> texts) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
  for (const std::string& text : texts)
    g_variant_builder_add(&builder, "s", text.c_str());
  return g_variant_builder_end(&builder);
}

std::string nameIn(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

class SystemdUnitManager : public UnitManager {
 public:
  explicit SystemdUnitManager(const BusSettings& settings) : settings_(settings) {}

  // The manager reads the files before it starts the timer: an enabled unit is
  // not a loaded one.
  Status enable(const std::string& service, const std::string& timer) override {
    if (Status status = call("EnableUnitFiles", g_variant_new("(@asbb)", textsOf({service, timer}), FALSE, TRUE));
        !status.ok()) {
      return status;
    }
    if (Status status = reload(); !status.ok()) return status;
    return call("RestartUnit", g_variant_new("(ss)", nameIn(timer).c_str(), "replace"));
  }

  Status disable(const std::string& service, const std::string& timer) override {
    if (Status status = stop(timer); !status.ok()) return status;
    return call("DisableUnitFiles", g_variant_new("(@asb)", textsOf({service, timer}), FALSE));
  }

  Status forget(const std::string& service) override {
    if (Status status = reload(); !status.ok()) return status;
    return stop(service);
  }

 private:
  Status reload() { return call("Reload", nullptr); }

  // A unit that the manager has not loaded cannot be stopped, and need not.
  Status stop(const std::string& unit) {
    Status status = call("StopUnit", g_variant_new("(ss)", unit.c_str(), "replace"));
    return lastError_ == "org.freedesktop.systemd1.NoSuchUnit" ? Status() : status;
  }

  // Takes over a floating reference.
  Status call(const char* method, GVariant* arguments) {
    const Variant kept(arguments);
    Status status;
    if (bus_ == nullptr) bus_ = Bus::connect(Bus::Kind::session, settings_.callLimit, nullptr, status);
    if (bus_ == nullptr) return status;
    BusCall call{"org.freedesktop.systemd1", "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", method};
    call.arguments = kept.get();
    call.limit = settings_.callLimit;
    call.flags = G_DBUS_CALL_FLAGS_NO_AUTO_START;
    BusAnswer answer = bus_->call(call);
    lastError_ = answer.error;
    return std::move(answer.status);
  }

  const BusSettings settings_;
  std::shared_ptr<Bus> bus_;
  std::string lastError_;  // Of the latest call, its D-Bus name.
};

}  // namespace
}  // namespace varnok

varnok::UnitManager* varnokMakeUnitManager(const varnok::BusSettings& settings) {
  return new varnok::SystemdUnitManager(settings);
}
