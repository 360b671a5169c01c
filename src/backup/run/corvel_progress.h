#pragma once

#include <string>

namespace varnok {

// The progress bar of the main screen. A value.
struct CorvelProgress {
  int minValue = 0;
  int maxValue = 0;
  int currentValue = 0;
  std::string label;

  void progressStart() { currentValue = minValue; }
  void progress() { currentValue = currentValue < maxValue ? currentValue + 1 : maxValue; }

  bool isAtAnEnd() const { return currentValue == minValue || currentValue == maxValue; }
};

}  // namespace varnok
