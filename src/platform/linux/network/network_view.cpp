#include "platform/linux/network/network_view.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace varnok {
namespace {

constexpr std::string_view kLocalNetwork = "en0";

// Hardware types, as the kernel numbers them.
constexpr int kEthernet = 1;
constexpr int kPointToPoint = 512;
constexpr int kRawIP = 519;

// Of a route: it is in use; it refuses what it matches.
constexpr unsigned kRouteUp = 0x1;
constexpr unsigned kRouteReject = 0x200;

bool exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(path, error);
}

int hardwareType(const std::string& directory) {
  int type = -1;
  std::ifstream(directory + "/type") >> type;
  return type;
}

std::string deviceType(const std::string& directory) {
  constexpr std::string_view kName = "DEVTYPE=";
  std::ifstream file(directory + "/uevent");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(kName)) return line.substr(kName.size());
  }
  return {};
}

std::string withoutAlias(const std::string& name) {
  return name.substr(0, name.find(':'));
}

// The smaller, the rather it is the way to the local network; nothing for what
// never is.
std::optional<int> rank(InterfaceKind kind, bool hasDefaultRoute) {
  const int withoutRoute = hasDefaultRoute ? 0 : 1;
  switch (kind) {
    case InterfaceKind::wireless: return withoutRoute;
    case InterfaceKind::wired: return 2 + withoutRoute;
    case InterfaceKind::virtualEthernet: return hasDefaultRoute ? std::optional(4) : std::nullopt;
    case InterfaceKind::mobile:
    case InterfaceKind::other: break;
  }
  return std::nullopt;
}

}  // namespace

InterfaceKind kindOfInterface(const std::string& sysfs, const std::string& name) {
  const std::string directory = sysfs + "/" + name;
  if (exists(directory + "/wireless") || exists(directory + "/phy80211")) return InterfaceKind::wireless;
  const int type = hardwareType(directory);
  if (deviceType(directory) == "wwan" || type == kPointToPoint || type == kRawIP) return InterfaceKind::mobile;
  if (type != kEthernet || exists(directory + "/tun_flags")) return InterfaceKind::other;
  return exists(directory + "/device") ? InterfaceKind::wired : InterfaceKind::virtualEthernet;
}

std::vector<std::string> defaultRouteInterfaces(std::string_view routes) {
  std::vector<std::string> interfaces;
  std::istringstream lines{std::string(routes)};
  std::string line;
  std::getline(lines, line);  // The columns' names.
  while (std::getline(lines, line)) {
    std::istringstream columns(line);
    std::string name;
    std::string destination;
    std::string gateway;
    std::string unused;
    std::string mask;
    unsigned flags = 0;
    columns >> name >> destination >> gateway >> std::hex >> flags >> unused >> unused >> unused >> mask;
    if (!columns || destination != "00000000" || mask != "00000000") continue;
    if ((flags & kRouteUp) != 0 && (flags & kRouteReject) == 0) interfaces.push_back(name);
  }
  return interfaces;
}

bool NetworkView::operator==(const NetworkView& other) const {
  return status == other.status && hasDefaultRoute == other.hasDefaultRoute &&
         std::ranges::equal(interfaces, other.interfaces, [](const NetworkInterface& a, const NetworkInterface& b) {
           return a.name == b.name && a.address == b.address;
         });
}

NetworkView networkView(std::vector<NetworkInterface> addresses, const std::vector<std::string>& defaultRoutes,
                        const std::function<InterfaceKind(const std::string& name)>& kindOf) {
  NetworkView view;
  view.hasDefaultRoute = !defaultRoutes.empty();
  std::string local;
  std::optional<int> best;
  bool mobile = false;
  for (const NetworkInterface& entry : addresses) {
    const std::string name = withoutAlias(entry.name);
    const bool hasRoute = std::ranges::find(defaultRoutes, name) != defaultRoutes.end();
    const InterfaceKind kind = kindOf(name);
    mobile = mobile || (kind == InterfaceKind::mobile && hasRoute);
    const auto candidate = rank(kind, hasRoute);
    if (!candidate || (best && *best <= *candidate)) continue;
    best = candidate;
    local = name;
  }
  if (best) {
    view.status = NetworkStatus::reachableViaWiFi;
  } else if (mobile) {
    view.status = NetworkStatus::reachableViaWWAN;
  }
  for (NetworkInterface& entry : addresses) {
    if (best && withoutAlias(entry.name) == local) {
      entry.name = kLocalNetwork;
    } else if (entry.name == kLocalNetwork) {
      continue;  // It has that name from the system, but is not what the name stands for.
    }
    view.interfaces.push_back(std::move(entry));
  }
  return view;
}

}  // namespace varnok
