#pragma once

#include <functional>
#include <thread>

namespace varnok {

// Calls `onInterrupt` on a thread of its own for every SIGINT or SIGTERM, until
// destroyed. Must be made before other threads are, which inherit the mask.
class InterruptWatch {
 public:
  explicit InterruptWatch(std::function<void()> onInterrupt);
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();

 private:
  std::thread thread_;
};

}  // namespace varnok
