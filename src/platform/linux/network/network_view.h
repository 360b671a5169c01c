// What an application sees of the network, worked out from what the system says
// of its interfaces.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/network_monitor.h"

namespace varnok {

enum class InterfaceKind {
  wireless,
  wired,            // Ethernet hardware.
  virtualEthernet,  // Bridge, bond, VLAN, a container's end of a pair.
  mobile,           // A modem.
  other,            // Loopback, tunnels.
};

// `sysfs` is the directory of the interfaces, "/sys/class/net".
InterfaceKind kindOfInterface(const std::string& sysfs, const std::string& name);

// The interfaces that a default route of IPv4 leads through. `routes` is the
// text of "/proc/net/route".
std::vector<std::string> defaultRouteInterfaces(std::string_view routes);

struct NetworkView {
  std::vector<NetworkInterface> interfaces;
  NetworkStatus status = NetworkStatus::notReachable;
  bool hasDefaultRoute = false;

  bool operator==(const NetworkView& other) const;
};

// `addresses` are those of the interfaces that are up and have a carrier, in
// the system's order and under the system's names, of which an alias such as
// "eth0:1" is one.
//
// "en0" is the way to the local network: a wireless interface, else a wired
// one, else a virtual one that a default route leads through, which those that
// only connect programs on this machine never have. Of several the one with a
// default route is taken, then the first. With it the status is
// reachableViaWiFi; with a modem alone, and a default route through it,
// reachableViaWWAN.
NetworkView networkView(std::vector<NetworkInterface> addresses, const std::vector<std::string>& defaultRoutes,
                        const std::function<InterfaceKind(const std::string& name)>& kindOf);

}  // namespace varnok
