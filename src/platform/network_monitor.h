#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

// What the system says of the way to the internet.
struct ReachabilityFlags {
  bool reachable = false;
  bool connectionRequired = false;
  bool transientConnection = false;
};

// How the internet can be reached now.
enum class NetworkStatus : int { notReachable = 0, reachableViaWiFi = 1, reachableViaWWAN = 2 };

// Posted on the main thread after every change of the network.
inline constexpr std::string_view kNetworkReachabilityChangedNotification = "kNetworkReachabilityChangedNotification";

// An IPv4 address of the device.
struct NetworkInterface {
  std::string name;     // "en0" is the one to the local network.
  std::string address;  // Dotted decimal.
};

// Any thread.
class NetworkMonitor {
 public:
  virtual ~NetworkMonitor() = default;

  // Nothing when the system does not say.
  virtual std::optional<ReachabilityFlags> reachabilityFlags() = 0;

  // Whether a request to `url` can be made, past every cache. Blocks.
  virtual bool canConnect(const std::string& url, std::chrono::seconds timeLimit) = 0;

  // One entry for each address, in the system's order; empty also when they
  // cannot be listed.
  virtual std::vector<NetworkInterface> interfaces() = 0;

  virtual NetworkStatus currentReachabilityStatus() = 0;

  // From now on calls `changed` after every change of the interfaces or of the
  // status, on any thread, until the monitor is destroyed or given another one.
  virtual void startNotifier(std::function<void()> changed) = 0;
};

// For a program that has no view of the network.
class NoNetworkMonitor : public NetworkMonitor {
 public:
  std::optional<ReachabilityFlags> reachabilityFlags() override { return std::nullopt; }
  bool canConnect(const std::string& /*url*/, std::chrono::seconds /*timeLimit*/) override { return false; }
  std::vector<NetworkInterface> interfaces() override { return {}; }
  NetworkStatus currentReachabilityStatus() override { return NetworkStatus::notReachable; }
  void startNotifier(std::function<void()> /*changed*/) override {}
};

}  // namespace varnok
