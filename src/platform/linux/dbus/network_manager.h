// What NetworkManager says of the network.

#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/status.h"

namespace varnok {

// As NetworkManager words it.
struct NetworkManagerState {
  unsigned state = 0;         // 20 and below: disconnected or off; 50: connected locally; 70: to the internet.
  unsigned connectivity = 0;  // 0 not known, 1 none, 2 behind a portal, 3 limited, 4 full.
  std::string primaryType;    // "802-11-wireless"; empty: no connection has the default route.

  bool operator==(const NetworkManagerState&) const = default;
};

class NetworkManagerClient {
 public:
  // Nothing: it does not run, or has not answered in time. The Status says why.
  using Told = std::function<void(const std::optional<NetworkManagerState>& state, const Status& status)>;

  virtual ~NetworkManagerClient() = default;  // Then `told` is not running and not called again.

  // Connects, which takes the time limit at most, and from then on tells how it
  // is: first at once, then after every change. `told` comes on the buses'
  // thread. Once; a worker thread. A Status that is not ok: nothing will be told.
  virtual Status start(Told told) = 0;

  // Ends start() under way. Any thread.
  virtual void cancel() = 0;
};

}  // namespace varnok
