// The web server beside nginx and lighttpd with one process each, and beside a
// bare epoll loop that sends the same bytes from memory. All run at once and are
// asked in turn, so that they share the machine's good and bad moments.
//
//   web_bench [ROUNDS [FOLDER]]

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/web_bench_load.h"
#include "bench/web_bench_servers.h"

namespace {

using namespace varnok::bench;
using std::chrono::milliseconds;

constexpr std::size_t kLargeSize = 256 << 20;  // Bytes.
constexpr std::size_t kStalled = 64;           // Downloads at once.
constexpr milliseconds kSlice{400};

using Servers = std::vector<std::unique_ptr<Server>>;

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

// `measure` answers a rate, or less than 0 when the server failed.
bool compare(const std::string& title, const char* unit, const Servers& servers, int rounds,
             const std::function<double(const Server&)>& measure) {
  std::vector<std::vector<double>> rates(servers.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < servers.size(); ++i) {
      const double rate = measure(*servers[i]);
      if (rate < 0) return false;
      rates[i].push_back(rate);
    }
  }
  std::printf("%s\n", title.c_str());
  const double ours = median(rates[0]);
  for (std::size_t i = 0; i < servers.size(); ++i) {
    const double rate = median(rates[i]);
    std::printf("  %-10s %9.0f %-11s  ours/this %.2f\n", servers[i]->name.c_str(), rate, unit, ours / rate);
  }
  return true;
}

bool compareSmallPages(const Servers& servers, std::size_t connections, int rounds) {
  const std::string title = "page of 4 KiB, keep-alive, " + std::to_string(connections) + " connections";
  return compare(title, "requests/s", servers, rounds, [&](const Server& server) {
    const LoadResult result = loadOf(server.port, "/page.html", connections, kSlice);
    if (result.errors == 0) return result.requestsPerSecond;
    std::fprintf(stderr, "%s: %zu connections failed\n", server.name.c_str(), result.errors);
    return -1.0;
  });
}

bool compareDownloads(const Servers& servers, int rounds) {
  return compare("download of 256 MiB", "MB/s", servers, rounds, [&](const Server& server) {
    const DownloadResult result = downloadOf(server.port, "/large.bin");
    if (result.bytes == kLargeSize) return result.megabytesPerSecond;
    std::fprintf(stderr, "%s: a download broke off\n", server.name.c_str());
    return -1.0;
  });
}

void printMemory(const Server& server) {
  const long before = server.memory();
  const StalledDownloads downloads(server.port, "/large.bin", kStalled);
  std::this_thread::sleep_for(milliseconds(200));
  const double each = static_cast<double>(server.memory() - before) / static_cast<double>(kStalled);
  std::printf("memory for each of %zu downloads under way: %.1f KiB\n", kStalled, each);
}

// Readable for servers that give up their rights.
std::string makeFolder(std::string parent) {
  parent += "/varnok-bench-XXXXXX";
  if (::mkdtemp(parent.data()) == nullptr) std::exit(1);
  std::filesystem::create_directory(parent + "/root");
  ::chmod(parent.c_str(), 0755);
  std::ofstream(parent + "/root/page.html") << std::string(kPageSize, 'x');
  std::ofstream large(parent + "/root/large.bin");
  const std::string block(1 << 20, 'y');
  for (std::size_t i = 0; i < kLargeSize / block.size(); ++i)
    large << block;
  return parent;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 7;
  if (rounds < 1) return 2;
  const std::string folder = makeFolder(argc > 2 ? argv[2] : std::filesystem::temp_directory_path().string());
  bool fine = false;
  {
    Servers servers = startServers(folder);
    std::this_thread::sleep_for(milliseconds(3000));  // A page that has just been written is not kept in memory.
    fine = compareSmallPages(servers, 16, rounds) && compareSmallPages(servers, 128, rounds);
    std::erase_if(servers, [](const auto& server) { return server->name == kBareServer; });
    fine = fine && compareDownloads(servers, rounds);
    printMemory(*servers.front());
  }
  std::filesystem::remove_all(folder);
  return fine ? 0 : 1;
}
