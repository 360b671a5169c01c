#pragma once

#include <string_view>

namespace varnok {

// One line for developers, never for users. Any thread.
class DeveloperLog {
 public:
  virtual ~DeveloperLog() = default;
  virtual void write(std::string_view line) = 0;
};

}  // namespace varnok
