#pragma once

namespace varnok {

// Records how the program ended when it did not end well.
class CrashReporter {
 public:
  virtual ~CrashReporter() = default;
  virtual void start() = 0;
};

}  // namespace varnok
