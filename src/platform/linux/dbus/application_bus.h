// The application on the session's bus, as org.freedesktop.Application has it:
// the one instance, and what others ask of it. Front ends use SingleInstance.
//
// Threads. Calls block for the time limit of each of their calls at most.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/status.h"

namespace varnok {

// The name on the bus, and of the desktop file.
constexpr const char* kApplicationID = "io.varnok.Varnok";

// The action of a reminder that its user opened.
constexpr const char* kReminderAction = "reminder";

struct ApplicationRequest {
  enum class Kind {
    activate,  // Come to the front.
    open,      // `uris`, and come to the front.
    action,    // The one named `action`, and come to the front.
  };
  Kind kind = Kind::activate;
  std::vector<std::string> uris;
  std::string action;
  std::string activationToken;  // By which the desktop lets a window come to the front; often empty.

  bool operator==(const ApplicationRequest&) const = default;
};

class ApplicationBus {
 public:
  virtual ~ApplicationBus() = default;

  // Makes this program the one instance, until this ends. busy when another is
  // it. `received` comes on the buses' thread, never after the end of this;
  // `lost` there when the bus went away.
  virtual Status own(std::function<void(ApplicationRequest)> received, std::function<void()> lost) = 0;

  // To the one instance. With `start` the bus starts one where none runs.
  // notFound when none runs and none can be started; unavailable when it did not
  // answer, then one that starts may still get the request.
  virtual Status send(const ApplicationRequest& request, bool start) = 0;
};

}  // namespace varnok
