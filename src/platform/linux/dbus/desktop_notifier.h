// What the desktop shows its user for a moment and keeps until it is seen.
//
// Threads. Calls block as they say. One notifier belongs to one thread.

#pragma once

#include <chrono>
#include <string>

#include "platform/status.h"

namespace varnok {

struct DesktopNotification {
  std::string summary;
  std::string body;    // Plain text.
  std::string action;  // The button's text. Empty: none, and nobody waits for an answer.
  std::string sound;   // Of the sound theme, such as "message-new-instant"; empty: none.
};

struct NotificationAnswer {
  enum class Kind {
    opened,     // By the button or by the notification itself.
    dismissed,  // Or gone by itself.
    lost,       // The service went away and its notifications with it.
    none,       // Within the time.
  };
  Kind kind = Kind::none;
  std::string activationToken;  // Lets an application come to the front; often empty.
};

class DesktopNotifier {
 public:
  virtual ~DesktopNotifier() = default;

  // Ok when the service has taken it. A service that is not there, as at the
  // beginning of a session, is waited for as long as `patience`; beyond that it
  // takes the time limit of two calls.
  virtual Status show(const DesktopNotification& notification, std::chrono::milliseconds patience) = 0;

  // For what show() has shown.
  virtual NotificationAnswer waitForAnswer(std::chrono::milliseconds limit) = 0;
};

}  // namespace varnok
