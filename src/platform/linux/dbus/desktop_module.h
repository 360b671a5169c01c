// What the module varnok-desktop exports. GLib comes with the module, and only
// when one of the desktop's services is first used.
//
// A new service: its interface in a header without GLib, its maker here, and its
// source in the module's list.

#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/dbus/application_bus.h"
#include "platform/linux/dbus/desktop_notifier.h"
#include "platform/linux/dbus/desktop_portal.h"
#include "platform/linux/dbus/idle_inhibitor.h"
#include "platform/linux/dbus/network_manager.h"
#include "platform/linux/dbus/unit_manager.h"

namespace varnok {

struct BusSettings {
  // For each call. The user's time is not counted.
  std::chrono::milliseconds callLimit{3000};
};

// The function `name` of the module. Null when the module cannot be loaded, and
// in a program built without it. Loading takes milliseconds: worker threads.
void* desktopModuleFunction(const char* name);

// What the maker `name`, one of those below, makes. Null as above.
template <class Service>
std::unique_ptr<Service> makeDesktopService(const char* name, const BusSettings& settings) {
  const auto make = reinterpret_cast<Service* (*)(const BusSettings&)>(desktopModuleFunction(name));
  return std::unique_ptr<Service>(make == nullptr ? nullptr : make(settings));
}

}  // namespace varnok

// The caller owns what they give.
extern "C" {
varnok::DesktopPortal* varnokMakePortal(const varnok::BusSettings& settings);
varnok::IdleInhibitor* varnokMakeIdleInhibitor(const varnok::BusSettings& settings);
varnok::NetworkManagerClient* varnokMakeNetworkManager(const varnok::BusSettings& settings);
varnok::ApplicationBus* varnokMakeApplicationBus(const varnok::BusSettings& settings);
varnok::DesktopNotifier* varnokMakeDesktopNotifier(const varnok::BusSettings& settings);
varnok::UnitManager* varnokMakeUnitManager(const varnok::BusSettings& settings);
}
