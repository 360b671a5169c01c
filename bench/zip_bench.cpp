// A zip backup of 10,000 cards beside one thread that only deflates them with
// zlib at its default level: wall time and CPU time, in turns, as ratios.
//
// Ours writes the archive to a file and flushes it; zlib's output goes nowhere.

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "backup/files/vnk_util.h"
#include "backup/files/zip_archive.h"
#include "bench/bench_support.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/thread_task_runner.h"

namespace {

constexpr int kCards = 10'000;
constexpr int kRounds = 5;
constexpr std::size_t kSmallest = 1000;  // Bytes, about.
constexpr std::size_t kLargest = 40'000;

// Every other card has a photo, whose bytes look like chance as a JPEG's do; the
// others are long notes.
std::string card(int number, std::mt19937& chance) {
  static constexpr const char* kWords[]{"prefers", "tea",    "after", "five", "ring",
                                        "twice",   "Straße", "北",    "key",  "of"};
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\nN;CHARSET=UTF-8:Lindqvist;Ada " + std::to_string(number) +
                     ";;;\r\nTEL;CHARSET=UTF-8;TYPE=CELL:+1 202 555 " + std::to_string(chance() % 10'000) + "\r\n";
  const std::size_t size = kSmallest + chance() % (kLargest - kSmallest);
  if (number % 2 == 0) {
    std::string photo(size * 3 / 4, '\0');
    std::generate(photo.begin(), photo.end(), [&] { return static_cast<char>(chance()); });
    text += "PHOTO;ENCODING=b;TYPE=JPEG:";
    varnok::VNKUtil::appendBASE64(text, photo);
  } else {
    text += "NOTE;CHARSET=UTF-8:";
    while (text.size() < size)
      text.append(kWords[chance() % std::size(kWords)]).append(" ");
  }
  return text + "\r\nEND:VCARD\r\n\n";
}

int archive(const std::vector<std::string>& cards, const std::string& path) {
  varnok::PosixFileSystem files;
  const varnok::PosixClock clock;
  varnok::ThreadTaskRunner tasks;
  varnok::ZipArchive zip(files, clock, tasks);
  bool made = zip.CreateZipFile2(path);
  for (std::size_t i = 0; i < cards.size() && made; ++i)
    made = zip.addData(cards[i], std::to_string(i).append(".vcf"));
  if (made && zip.CloseZipFile2()) return 0;
  std::fprintf(stderr, "%s\n", zip.status().message().c_str());
  return 1;
}

int deflateAll(const std::vector<std::string>& cards) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) return 1;
  std::vector<Bytef> room(deflateBound(&stream, 2 * kLargest));
  for (const std::string& text : cards) {
    std::string copy = text;  // As addData() takes one.
    crc32(0, reinterpret_cast<const Bytef*>(copy.data()), static_cast<uInt>(copy.size()));
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = room.data();
    stream.avail_out = static_cast<uInt>(room.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END || deflateReset(&stream) != Z_OK) return 1;
  }
  return deflateEnd(&stream);
}

}  // namespace

int main() {
  std::mt19937 chance(1);
  std::vector<std::string> cards;
  for (int i = 0; i < kCards; ++i)
    cards.push_back(card(i, chance));
  const varnok::BenchFolder folder;
  const varnok::CostPair costs = varnok::leastInTurns(
      kRounds, [&] { return archive(cards, folder.path("backup.zip")); }, [&] { return deflateAll(cards); });
  varnok::Bounds bounds;
  bounds.ratio("zip of 10,000 cards beside zlib, wall", costs.ours.wall, costs.theirs.wall, 0.6);
  bounds.ratio("zip of 10,000 cards beside zlib, CPU", costs.ours.cpu, costs.theirs.cpu, 1.15);
  return bounds.exitStatus();
}
