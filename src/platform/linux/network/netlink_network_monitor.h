// NetlinkNetworkMonitor: the network as the kernel tells it, for systems without
// a network service to ask.
//
// Threads. Changes are watched on a thread of its own, which is also the one
// that calls the observer; it ends before the destructor returns.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/developer_log.h"
#include "platform/linux/network/network_view.h"
#include "platform/network_monitor.h"

namespace varnok {

class NetlinkNetworkMonitor : public NetworkMonitor {
 public:
  // Where the kernel says what it knows.
  struct Settings {
    std::string sysfs = "/sys/class/net";
    std::string routes = "/proc/net/route";
  };

  explicit NetlinkNetworkMonitor(DeveloperLog& log) : NetlinkNetworkMonitor(log, Settings()) {}
  NetlinkNetworkMonitor(DeveloperLog& log, Settings settings) : log_(log), settings_(std::move(settings)) {}

  std::optional<ReachabilityFlags> reachabilityFlags() override;
  bool canConnect(const std::string& url, std::chrono::seconds timeLimit) override;
  std::vector<NetworkInterface> interfaces() override;
  NetworkStatus currentReachabilityStatus() override;
  // Where the kernel refuses to tell changes, that goes to the log and none come.
  void startNotifier(std::function<void()> changed) override;

 private:
  // Nothing when the interfaces cannot be listed.
  std::optional<NetworkView> look() const;
  // Calls `changed` each time the network differs from what was `known`.
  void watch(const std::stop_token& stop, int netlink, std::optional<NetworkView> known,
             const std::function<void()>& changed) const;

  DeveloperLog& log_;
  const Settings settings_;
  std::jthread watcher_;  // Last: ends before what it uses.
};

}  // namespace varnok
