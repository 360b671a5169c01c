// Keyring: one secret text of this application in the desktop's Secret Service.
//
// Threads. Any but the main one: calls wait for the service, and for the user
// where the keyring has to be unlocked.

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/status.h"

namespace varnok {

class Keyring {
 public:
  virtual ~Keyring() = default;

  // unavailable when no service answers within three seconds, or the user
  // leaves the keyring locked.
  virtual Status store(const std::string& label, const std::string& secret) = 0;

  // Nothing with an ok Status when none is stored.
  virtual std::optional<std::string> load(Status& status) = 0;

  virtual Status clear() = 0;
};

// The keyring entry called `name`. Null in a program built without the Secret
// Service, and in a session without a bus.
std::unique_ptr<Keyring> openKeyring(const std::string& name);

}  // namespace varnok
