// DesktopNetworkMonitor: the network as NetworkManager tells it where it runs,
// else, and for everything that it does not say, as the kernel does.
//
// NetworkManager is asked from the first startNotifier() on, so that a program
// that only looks once does not pay for it. Nothing here waits for it: until it
// has answered, the kernel's word counts.

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/developer_log.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/linux/network/netlink_network_monitor.h"
#include "platform/network_monitor.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopNetworkMonitor : public NetworkMonitor {
 public:
  // The references outlive it.
  DesktopNetworkMonitor(const BusSettings& settings, TaskRunner& tasks, DeveloperLog& log)
      : tasks_(tasks), log_(log), kernel_(log), manager_("varnokMakeNetworkManager", settings) {}
  DesktopNetworkMonitor(const DesktopNetworkMonitor&) = delete;
  DesktopNetworkMonitor& operator=(const DesktopNetworkMonitor&) = delete;
  ~DesktopNetworkMonitor() override { stop(); }

  std::optional<ReachabilityFlags> reachabilityFlags() override;
  bool canConnect(const std::string& url, std::chrono::seconds timeLimit) override;
  std::vector<NetworkInterface> interfaces() override;
  NetworkStatus currentReachabilityStatus() override;
  void startNotifier(std::function<void()> changed) override;

  // The observer is not running and not called any more.
  void stop();

 private:
  void askManager();
  void told(const std::optional<NetworkManagerState>& state, const Status& status);
  void tell();
  std::optional<NetworkManagerState> known();

  TaskRunner& tasks_;
  DeveloperLog& log_;
  std::mutex mutex_;  // Of state_ and asked_.
  std::optional<NetworkManagerState> state_;
  bool asked_ = false;
  std::mutex telling_;  // Of changed_, and held while it runs.
  std::function<void()> changed_;
  NetlinkNetworkMonitor kernel_;
  LazyService<NetworkManagerClient> manager_;
};

// What NetworkManager's state means; nothing when it leaves that open, as of a
// network without a way to the internet, or of a tunnel.
std::optional<NetworkStatus> statusOf(const NetworkManagerState& state);

}  // namespace varnok
