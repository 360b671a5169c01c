#pragma once

#include <chrono>
#include <string>

namespace varnok {

// A bar on stderr. Draws nothing unless stderr is a terminal, and at most
// twenty times a second. Removes itself.
class ProgressBar {
 public:
  explicit ProgressBar(bool quiet);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar();

  // `fraction` from 0 to 1.
  void show(double fraction, const std::string& label);

 private:
  bool visible_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace varnok
