#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace varnok {

// A choice among actions. A value; the presenter shows it.
struct ActionSheet {
  std::string title;
  std::vector<std::string> buttons;  // By index, the cancel button included.
  int cancelButtonIndex = 0;
  std::optional<int> destructiveButtonIndex;
  int tag = 0;
  // Called on the main thread with the pressed button's index.
  std::function<void(const ActionSheet&, int index)> delegate;
};

}  // namespace varnok
