// The user's service manager, which starts programs at their times.
//
// Threads. Calls block for the time limit at most, and are made on worker
// threads.

#pragma once

#include <string>

#include "platform/status.h"

namespace varnok {

class UnitManager {
 public:
  virtual ~UnitManager() = default;

  // Has the timer of the file `timer` run, now and after every log-in, with the
  // files as they are now. Both are whole paths. unavailable when the user has
  // no such manager or it does not answer; then it may have done a part.
  virtual Status enable(const std::string& service, const std::string& timer) = 0;

  // Stops the timer and has neither start again; by their names. Then their files
  // may go.
  virtual Status disable(const std::string& service, const std::string& timer) = 0;

  // After that: the manager hears that the files have gone. What the timer has
  // started ends, last of all, since it may be the program that calls this.
  virtual Status forget(const std::string& service) = 0;
};

}  // namespace varnok
