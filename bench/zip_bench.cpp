// A zip backup of 10,000 cards beside one thread that only deflates them with
// zlib at its default level: wall time and CPU time, in turns, as ratios.
//
// Ours writes the archive to a file and flushes it; zlib's output goes nowhere.

#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "backup/files/vnk_util.h"
#include "backup/files/zip_archive.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/thread_task_runner.h"

namespace {

constexpr int kCards = 10'000;
constexpr int kRounds = 5;
constexpr std::size_t kSmallest = 1000;  // Bytes, about.
constexpr std::size_t kLargest = 40'000;

struct Time {
  double wall = 0;  // Seconds.
  double cpu = 0;   // Of all threads.
};

template <typename Work>
Time timeOf(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  const std::clock_t cpu = std::clock();
  work();
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  return {wall.count(), static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC};
}

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

void archive(const std::vector<std::string>& cards, const std::string& path) {
  varnok::PosixFileSystem files;
  const varnok::PosixClock clock;
  varnok::ThreadTaskRunner tasks;
  varnok::ZipArchive zip(files, clock, tasks);
  bool made = zip.CreateZipFile2(path);
  for (std::size_t i = 0; i < cards.size() && made; ++i)
    made = zip.addData(cards[i], std::to_string(i).append(".vcf"));
  if (made && zip.CloseZipFile2()) return;
  std::fprintf(stderr, "%s\n", zip.status().message().c_str());
  std::exit(1);
}

void deflateAll(const std::vector<std::string>& cards) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::exit(1);
  std::vector<Bytef> room(deflateBound(&stream, 2 * kLargest));
  for (const std::string& text : cards) {
    std::string copy = text;  // As addData() takes one.
    crc32(0, reinterpret_cast<const Bytef*>(copy.data()), static_cast<uInt>(copy.size()));
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = room.data();
    stream.avail_out = static_cast<uInt>(room.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END || deflateReset(&stream) != Z_OK) std::exit(1);
  }
  deflateEnd(&stream);
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  std::string directory = argc > 1 ? argv[1] : std::filesystem::temp_directory_path().string();
  directory += "/varnok-bench-XXXXXX";
  if (::mkdtemp(directory.data()) == nullptr) return 1;
  std::mt19937 chance(1);
  std::vector<std::string> cards;
  for (int i = 0; i < kCards; ++i)
    cards.push_back(card(i, chance));
  std::vector<double> wall;
  std::vector<double> cpu;
  for (int round = 0; round < kRounds; ++round) {
    const Time ours = timeOf([&] { archive(cards, directory + "/backup.zip"); });
    const Time zlib = timeOf([&] { deflateAll(cards); });
    std::printf("zip archive %.2f s, CPU %.2f s; zlib %.2f s, CPU %.2f s\n", ours.wall, ours.cpu, zlib.wall, zlib.cpu);
    wall.push_back(ours.wall / zlib.wall);
    cpu.push_back(ours.cpu / zlib.cpu);
  }
  std::filesystem::remove_all(directory);
  std::printf("medians of the ratios: wall %.2f, CPU %.2f\n", median(wall), median(cpu));
  return 0;
}
