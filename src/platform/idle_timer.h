#pragma once

namespace varnok {

// Keeps the device from going to sleep. The last call wins: it is a switch, not
// a counter. Main thread.
class IdleTimer {
 public:
  virtual ~IdleTimer() = default;
  virtual void setIdleTimerDisabled(bool disabled) = 0;
};

}  // namespace varnok
