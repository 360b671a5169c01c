#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace varnok {

// What the system says of the way to the internet.
struct ReachabilityFlags {
  bool reachable = false;
  bool connectionRequired = false;
  bool transientConnection = false;
};

// Any thread.
class NetworkMonitor {
 public:
  virtual ~NetworkMonitor() = default;

  // Nothing when the system does not say.
  virtual std::optional<ReachabilityFlags> reachabilityFlags() = 0;

  // Whether a request to `url` can be made, past every cache. Blocks.
  virtual bool canConnect(const std::string& url, std::chrono::seconds timeLimit) = 0;
};

// For a program that has no view of the network.
class NoNetworkMonitor : public NetworkMonitor {
 public:
  std::optional<ReachabilityFlags> reachabilityFlags() override { return std::nullopt; }
  bool canConnect(const std::string& /*url*/, std::chrono::seconds /*timeLimit*/) override { return false; }
};

}  // namespace varnok
