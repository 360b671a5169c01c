// A backup of 100 people beside a program that does nothing but count them:
// what starting costs, from process to process.
//
//   startup_bench PATH_OF_VARNOKCTL

#include <cstdio>

#include "bench/bench_support.h"

namespace {

constexpr int kRounds = 40;
constexpr int kPeople = 100;

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: startup_bench PATH_OF_VARNOKCTL\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  const std::string home = folder.path("home");
  varnok::makeHome(home, kPeople);
  const varnok::CostPair costs =
      varnok::leastInTurns(kRounds, varnok::program(varnok::varnokctl(argv[1], home, {"backup", "--type", "vcf"})),
                           varnok::program({"sqlite3", home + "/contacts.db", "select count(*) from person"}));
  varnok::Bounds bounds;
  bounds.ratio("backup of 100 beside a count, wall", costs.ours.wall, costs.theirs.wall, 3);
  bounds.ratio("backup of 100 beside a count, CPU", costs.ours.cpu, costs.theirs.cpu, 3);
  return bounds.exitStatus();
}
