// Storing an upload, its closing boundary cut off and the file made durable,
// beside copying a file of that size, which is then made durable too.

#include <cstdio>
#include <fstream>
#include <random>

#include "bench/bench_support.h"
#include "platform/linux/posix/posix_file_system.h"
#include "web/access/upload.h"

namespace {

constexpr std::size_t kSize = 100'000'000;
constexpr std::size_t kPiece = 65536;  // As the server reads from a socket.
constexpr int kRounds = 10;
constexpr const char* kBoundary = "------boundary7MA4YWxkTrZu0gW";

// The file and then its boundary, in pieces, as a connection stores them.
int store(const std::string& content, const std::string& path, bool durable) {
  varnok::PosixFileSystem files;
  varnok::Status status;
  const auto file = files.createAtomic(path, status);
  if (file == nullptr) return 1;
  varnok::FileEndFinder end(kBoundary);
  const auto add = [&](std::string_view piece) {
    end.add(piece);
    return file->append(piece).ok();
  };
  for (std::size_t at = 0; at < content.size(); at += kPiece) {
    if (!add(std::string_view(content).substr(at, kPiece))) return 1;
  }
  if (!add(std::string("\r\n") + kBoundary + "--\r\n")) return 1;
  if (end.size() != content.size() || !file->truncate(end.size()).ok()) return 1;
  if (durable) return file->commit().ok() ? 0 : 1;
  return file->publish(status) == nullptr ? 1 : 0;
}

}  // namespace

int main() {
  const varnok::BenchFolder folder;
  std::string content(kSize, '\0');
  std::mt19937 chance(1);
  for (char& c : content)
    c = static_cast<char>(chance());
  const std::string source = folder.path("source");
  std::ofstream(source, std::ios::binary) << content;
  const std::string copy = folder.path("copy");
  const std::string stored = folder.path("stored");
  const auto without = varnok::leastInTurns(
      kRounds, [&] { return store(content, stored, /*durable=*/false); }, varnok::program({"cp", source, copy}));
  const auto durable = varnok::leastInTurns(
      kRounds, [&] { return store(content, stored, /*durable=*/true); },
      varnok::program({"dd", "if=" + source, "of=" + copy, "bs=256k", "conv=fsync", "status=none"}));
  varnok::Bounds bounds;
  bounds.ratio("100 MB stored and cut beside cp, wall", without.ours.wall, without.theirs.wall, 2);
  bounds.ratio("the same made durable beside dd conv=fsync, wall", durable.ours.wall, durable.theirs.wall, 2);
  return bounds.exitStatus();
}
