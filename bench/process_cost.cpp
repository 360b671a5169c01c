#include "bench/process_cost.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace varnok {

ProcessCost costOf(const std::function<int()>& work) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "a measured piece of work failed\n");
    std::exit(1);
  }
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), static_cast<double>(usage.ru_maxrss) * 1024};
}

ProcessCost median(std::vector<ProcessCost> costs) {
  const auto middle = [&](double ProcessCost::*field) {
    std::ranges::sort(costs, {}, field);
    return costs[costs.size() / 2].*field;
  };
  return {middle(&ProcessCost::wall), middle(&ProcessCost::cpu), middle(&ProcessCost::peak)};
}

}  // namespace varnok
