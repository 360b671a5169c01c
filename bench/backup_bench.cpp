// `varnokctl backup` beside the bare work: a child process that steps two ordered
// SQLite cursors over the same rows, reads every column as text and writes the
// same bytes.
//
//   backup_bench PATH_OF_VARNOKCTL

#include <cstdio>
#include <string>

#include "bench/bare_book.h"
#include "bench/bench_support.h"

namespace {

using varnok::Bounds;
using varnok::CostPair;

constexpr int kRounds = 9;
constexpr int kFew = 10'000;
constexpr int kMany = 100'000;
constexpr double kMebibyte = 1048576;

struct Format {
  const char* type;
  double bound;  // Of wall and CPU time beside the bare work.
};
constexpr Format kFormats[]{{"vcf", 1.5}, {"csv", 1.3}};

CostPair measure(const std::string& varnokctl, const std::string& home, const std::string& type) {
  const auto ours = varnok::program(varnok::varnokctl(varnokctl, home, {"backup", "--type", type}));
  varnok::costOf(ours);
  return varnok::leastInTurns(kRounds, ours, [&] { return varnok::bareBackup(home, varnok::backupIn(home, type)); });
}

void compare(const Format& format, const CostPair& few, const CostPair& many, Bounds& bounds) {
  const std::string name = std::string(format.type) + " backup of 100,000";
  std::printf("%s backup of 10,000: wall %.4f s beside %.4f s, CPU %.4f s beside %.4f s\n", format.type, few.ours.wall,
              few.theirs.wall, few.ours.cpu, few.theirs.cpu);
  bounds.ratio(name + ", wall", many.ours.wall, many.theirs.wall, format.bound);
  bounds.ratio(name + ", CPU", many.ours.cpu, many.theirs.cpu, format.bound);
  bounds.ratio(name + " beside 10,000, CPU", many.ours.cpu, few.ours.cpu, 11);
  bounds.atMost(name + ", memory", many.ours.peak / kMebibyte, 32, "MiB");
  bounds.atMost(name + ", growth", (many.ours.peak - few.ours.peak) / (kMany - kFew), 64, "bytes a person");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: backup_bench PATH_OF_VARNOKCTL\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  varnok::makeHome(folder.path("few"), kFew);
  varnok::makeHome(folder.path("many"), kMany);
  Bounds bounds;
  for (const Format& format : kFormats) {
    const CostPair few = measure(argv[1], folder.path("few"), format.type);
    compare(format, few, measure(argv[1], folder.path("many"), format.type), bounds);
  }
  return bounds.exitStatus();
}
