// What a piece of work costs as a process of its own.

#pragma once

#include <functional>
#include <vector>

namespace varnok {

struct ProcessCost {
  double wall = 0;  // Seconds.
  double cpu = 0;   // Seconds of all threads.
  double peak = 0;  // Bytes of memory.
};

// Runs `work` in a child, which must succeed: 0 is success. Ends the program
// when it does not.
ProcessCost costOf(const std::function<int()>& work);

ProcessCost median(std::vector<ProcessCost> costs);

}  // namespace varnok
