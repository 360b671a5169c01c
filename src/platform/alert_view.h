#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace varnok {

// A question or a notice in front of a screen. A value; the presenter shows it.
struct AlertView {
  std::string title;
  std::optional<std::string> message;
  std::vector<std::string> buttons;  // By index; the first is the harmless one.
  int tag = 0;
  // Called on the main thread with the pressed button's index. Empty when
  // nobody waits for the answer.
  std::function<void(const AlertView&, int index)> delegate;
};

}  // namespace varnok
