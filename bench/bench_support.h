// What the benchmarks share: a folder, books, other programs, and the line that
// says whether a bound holds.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/process_cost.h"

namespace varnok {

// A folder for temporary files, gone with the object.
class BenchFolder {
 public:
  BenchFolder();
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;
  ~BenchFolder();

  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
};

// Work that runs another program without its output. For costOf().
std::function<int()> program(std::vector<std::string> arguments);

// `varnokctl` on the home `home`.
std::vector<std::string> varnokctl(const std::string& path, const std::string& home,
                                   const std::vector<std::string>& command);

// Fills a new home with `people` of the generator. Done by another process, whose
// memory does not count as that of later ones. `pictures`, where there are any,
// are given out in turn.
void makeHome(const std::string& home, int people, const std::vector<std::string>& pictures = {});

// The one file with that extension among the backups of a home; empty when there
// is none.
std::string backupIn(const std::string& home, std::string_view type);

struct CostPair {
  ProcessCost ours;
  ProcessCost theirs;
};

// Both in turns, so that a busy machine is busy for both; the least of each
// figure counts.
CostPair leastInTurns(int rounds, const std::function<int()>& ours, const std::function<int()>& theirs);

// Prints one line a bound and remembers whether all held.
class Bounds {
 public:
  // Ours beside theirs, in seconds.
  void ratio(const std::string& name, double ours, double theirs, double bound);
  // How many times faster ours is; `bound` is the least.
  void timesFaster(const std::string& name, double ours, double theirs, double bound);
  void atMost(const std::string& name, double value, double bound, const char* unit);

  // For main().
  int exitStatus() const { return missed_ ? 1 : 0; }

 private:
  void verdict(bool held);

  bool missed_ = false;
};

}  // namespace varnok
