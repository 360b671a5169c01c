#include "platform/linux/dbus/desktop_network_monitor.h"

#include <utility>

#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

// NetworkManager's numbers.
constexpr unsigned kConnectedLocally = 50;
constexpr unsigned kBehindPortal = 2;

std::string described(const NetworkManagerState& state) {
  return "state " + std::to_string(state.state) + ", connectivity " + std::to_string(state.connectivity) + ", " +
         (state.primaryType.empty() ? "no primary connection" : state.primaryType);
}

}  // namespace

std::optional<NetworkStatus> statusOf(const NetworkManagerState& state) {
  if (state.state < kConnectedLocally) return NetworkStatus::notReachable;
  const std::string& type = state.primaryType;
  if (type == "802-11-wireless" || type == "802-3-ethernet") return NetworkStatus::reachableViaWiFi;
  if (type == "gsm" || type == "cdma" || type == "bluetooth") return NetworkStatus::reachableViaWWAN;
  return std::nullopt;
}

std::optional<NetworkManagerState> DesktopNetworkMonitor::known() {
  const std::lock_guard lock(mutex_);
  return state_;
}

std::optional<ReachabilityFlags> DesktopNetworkMonitor::reachabilityFlags() {
  const auto state = known();
  if (!state) return kernel_.reachabilityFlags();
  return ReachabilityFlags{.reachable = !state->primaryType.empty(),
                           .connectionRequired = state->connectivity == kBehindPortal};
}

bool DesktopNetworkMonitor::canConnect(const std::string& url, std::chrono::seconds timeLimit) {
  return kernel_.canConnect(url, timeLimit);
}

std::vector<NetworkInterface> DesktopNetworkMonitor::interfaces() {
  return kernel_.interfaces();
}

NetworkStatus DesktopNetworkMonitor::currentReachabilityStatus() {
  const auto state = known();
  const auto status = state ? statusOf(*state) : std::nullopt;
  return status ? *status : kernel_.currentReachabilityStatus();
}

void DesktopNetworkMonitor::startNotifier(std::function<void()> changed) {
  {
    const std::lock_guard lock(telling_);
    changed_ = std::move(changed);
  }
  kernel_.startNotifier([this] { tell(); });
  const std::lock_guard lock(mutex_);
  if (asked_ || !hasSystemBus()) return;
  asked_ = true;
  tasks_.globalQueue([this] { askManager(); });
}

void DesktopNetworkMonitor::askManager() {
  const auto manager = manager_.get();
  if (manager == nullptr) return;
  const Status status = manager->start([this](const auto& state, const Status& why) { told(state, why); });
  if (!status.ok()) log_.write("The network is watched without NetworkManager: " + status.message());
}

void DesktopNetworkMonitor::told(const std::optional<NetworkManagerState>& state, const Status& status) {
  {
    const std::lock_guard lock(mutex_);
    if (state && state == state_) return;
    if (!state) log_.write("The network is watched without NetworkManager: " + status.message());
    if (state) log_.write("NetworkManager: " + described(*state));
    if (!state && !state_) return;
    state_ = state;
  }
  tell();
}

void DesktopNetworkMonitor::tell() {
  const std::lock_guard lock(telling_);
  if (changed_) changed_();
}

void DesktopNetworkMonitor::stop() {
  {
    const std::lock_guard lock(telling_);
    changed_ = nullptr;
  }
  manager_.stop();
}

}  // namespace varnok
