// What keeps the session from becoming idle. Worker threads.

#pragma once

#include <functional>
#include <memory>

#include "platform/status.h"

namespace varnok {

// Its end lets the session become idle again, and so does the program's, in
// whatever way it comes.
class Inhibition {
 public:
  virtual ~Inhibition() = default;
};

class IdleInhibitor {
 public:
  enum class Way { portal, screenSaver, logind };

  virtual ~IdleInhibitor() = default;

  // Blocks until the service has agreed, for the time limit at most. Null with
  // a Status when it did not. `lost` comes on the buses' thread when the service
  // went away, and with it the inhibition.
  virtual std::unique_ptr<Inhibition> inhibit(Way way, std::function<void()> lost, Status& status) = 0;

  // Ends the call under way; those that follow fail at once. Any thread.
  virtual void cancel() = 0;
};

}  // namespace varnok
