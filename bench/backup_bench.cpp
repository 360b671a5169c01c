// Measures `varnokctl backup` beside the bare work: a child process that steps
// two ordered SQLite cursors over the same rows, reads every column as text and
// writes the same bytes. Both are whole processes and alternate in one run;
// medians are compared.
//
//   backup_bench PATH_OF_VARNOKCTL [PEOPLE...]

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "bench/address_book_generator.h"
#include "contacts/address_book.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"

namespace {

using varnok::Status;

constexpr int kRounds = 7;

struct Cost {
  double wall = 0;  // Seconds.
  double cpu = 0;   // Seconds of all threads.
  double peak = 0;  // MiB.
};

// What a child that runs `work` costs. It must succeed.
Cost costOf(const std::function<int()>& work) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "a measured program failed\n");
    std::exit(1);
  }
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime), static_cast<double>(usage.ru_maxrss) / 1024};
}

Cost median(std::vector<Cost> costs) {
  const auto middle = [&](double Cost::*field) {
    std::ranges::sort(costs, {}, field);
    return costs[costs.size() / 2].*field;
  };
  return {middle(&Cost::wall), middle(&Cost::cpu), middle(&Cost::peak)};
}

void makeBook(const std::string& home, int people) {
  std::filesystem::create_directories(home + "/Documents");
  varnok::SQLiteContactStoreProvider provider(home + "/contacts.db");
  Status status;
  const auto store = provider.open(status);
  varnok::AddressBookGenerator generator;
  for (int i = 0; status.ok() && i < people; ++i)
    status = store->addRecord(generator.person(static_cast<std::uint32_t>(i)));
  if (status.ok()) status = store->save();
  if (!status.ok()) {
    std::fprintf(stderr, "%s\n", status.message().c_str());
    std::exit(1);
  }
}

int runBackup(const std::string& program, const std::string& home, const std::string& type) {
  const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(null, STDOUT_FILENO);
  execl(program.c_str(), program.c_str(), "--home", home.c_str(), "--quiet", "backup", "--type", type.c_str(), nullptr);
  return 127;
}

std::string newestBackup(const std::string& home, const std::string& type) {
  std::string newest;
  for (const auto& entry : std::filesystem::directory_iterator(home + "/Documents")) {
    if (entry.path().extension() == "." + type) newest = std::max(newest, entry.path().string());
  }
  return newest;
}

// Reads every column of the row as text; the sum keeps the compiler honest.
std::size_t readRow(sqlite3_stmt* row) {
  std::size_t bytes = 0;
  const int columns = sqlite3_column_count(row);
  for (int i = 0; i < columns; ++i) {
    const unsigned char* text = sqlite3_column_text(row, i);
    if (text != nullptr) bytes += static_cast<std::size_t>(sqlite3_column_bytes(row, i)) + text[0];
  }
  return bytes;
}

int bareWork(const std::string& home, const std::string& result) {
  sqlite3* database = nullptr;
  sqlite3_open_v2((home + "/contacts.db").c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* persons = nullptr;
  sqlite3_stmt* entries = nullptr;
  sqlite3_prepare_v2(database, "SELECT * FROM person ORDER BY id", -1, &persons, nullptr);
  sqlite3_prepare_v2(database, "SELECT * FROM entry ORDER BY person, property, position", -1, &entries, nullptr);
  std::size_t bytes = 0;
  bool more = sqlite3_step(entries) == SQLITE_ROW;
  while (sqlite3_step(persons) == SQLITE_ROW) {
    bytes += readRow(persons);
    const sqlite3_int64 id = sqlite3_column_int64(persons, 0);
    for (; more && sqlite3_column_int64(entries, 0) == id; more = sqlite3_step(entries) == SQLITE_ROW)
      bytes += readRow(entries);
  }
  sqlite3_finalize(persons);
  sqlite3_finalize(entries);
  sqlite3_close(database);

  // The bytes come from the finished backup, through one buffer.
  const std::string path = home + "/Documents/.bare";
  const int in = open(result.c_str(), O_RDONLY | O_CLOEXEC);
  const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  static char buffer[256 * 1024];
  for (ssize_t count = read(in, buffer, sizeof buffer); count > 0; count = read(in, buffer, sizeof buffer)) {
    if (write(out, buffer, static_cast<std::size_t>(count)) != count) return 1;
  }
  fsync(out);
  close(out);
  close(in);
  rename(path.c_str(), (home + "/Documents/bare.bin").c_str());
  return bytes > 0 ? 0 : 1;
}

struct Measured {
  Cost ours;
  Cost bare;
};

Measured measure(const std::string& program, const std::string& home, int people, const std::string& type) {
  std::vector<Cost> ours;
  std::vector<Cost> bare;
  costOf([&] { return runBackup(program, home, type); });
  for (int round = 0; round < kRounds; ++round) {
    ours.push_back(costOf([&] { return runBackup(program, home, type); }));
    bare.push_back(costOf([&] { return bareWork(home, newestBackup(home, type)); }));
  }
  const Measured result{median(ours), median(bare)};
  std::printf("%7d people %s: ours %.3f s wall %.3f s CPU %.1f MiB | bare %.3f s %.3f s | ratio wall %.2f CPU %.2f\n",
              people, type.c_str(), result.ours.wall, result.ours.cpu, result.ours.peak, result.bare.wall,
              result.bare.cpu, result.ours.wall / result.bare.wall, result.ours.cpu / result.bare.cpu);
  std::fflush(stdout);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: backup_bench PATH_OF_VARNOKCTL [PEOPLE...]\n");
    return 2;
  }
  std::vector<int> sizes{10000, 100000};
  if (argc > 2) sizes.clear();
  for (int i = 2; i < argc; ++i)
    sizes.push_back(std::atoi(argv[i]));
  const auto root = std::filesystem::temp_directory_path() / ("varnok-bench-" + std::to_string(getpid()));
  for (const std::string type : {"vcf", "csv"}) {
    std::vector<Measured> results;
    for (const int people : sizes) {
      const std::string home = (root / std::to_string(people)).string();
      if (!std::filesystem::exists(home)) makeBook(home, people);
      results.push_back(measure(argv[1], home, people, type));
    }
    if (results.size() < 2) continue;
    const Measured& small = results.front();
    const Measured& large = results.back();
    std::printf("%s from %d to %d people: CPU grows %.1f times, memory by %.1f bytes a person\n", type.c_str(),
                sizes.front(), sizes.back(), large.ours.cpu / small.ours.cpu,
                (large.ours.peak - small.ours.peak) * 1048576 / (sizes.back() - sizes.front()));
  }
  std::filesystem::remove_all(root);
  return 0;
}
