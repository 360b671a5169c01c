// `varnokctl --store eds backup` beside a program that takes the same contacts
// from libebook, from process to process; both ask the same running service.
//
//   tests/support/with_private_bus.sh eds_bench PATH_OF_VARNOKCTL PATH_OF_LIBEBOOK_PEER

#include <cstdio>

#include "bench/bench_support.h"

namespace {

constexpr int kRounds = 15;
constexpr int kPeople = 10'000;

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: eds_bench PATH_OF_VARNOKCTL PATH_OF_LIBEBOOK_PEER\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  const std::string home = folder.path("home");
  const std::string other = folder.path("other");
  const auto command = [&](const std::string& where, const std::vector<std::string>& words) {
    return varnok::program(varnok::varnokctl(argv[1], where, words));
  };
  varnok::makeHome(other, kPeople);
  varnok::costOf(command(other, {"backup", "--type", "vcf"}));
  varnok::costOf(command(home, {"--store", "eds", "import", varnok::backupIn(other, "vcf")}));
  const varnok::CostPair costs = varnok::leastInTurns(
      kRounds, command(home, {"--store", "eds", "backup", "--type", "vcf"}), varnok::program({argv[2]}));
  std::printf("backup of 10,000 from the desktop's address book: %.4f s beside %.4f s\n", costs.ours.wall,
              costs.theirs.wall);
  varnok::Bounds bounds;
  bounds.ratio("backup of 10,000 beside libebook, wall", costs.ours.wall, costs.theirs.wall, 3);
  return bounds.exitStatus();
}
