// A load generator for the web benchmarks: one thread, loopback only, bounded in
// connections and time.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace varnok::bench {

struct LoadResult {
  double requestsPerSecond = 0;
  std::size_t errors = 0;  // Connections that broke, and answers other than 200.
};

// Asks for `path` over `connections` connections, each of which asks again when
// it has been answered.
LoadResult loadOf(std::uint16_t port, const std::string& path, std::size_t connections, std::chrono::milliseconds time);

struct DownloadResult {
  double megabytesPerSecond = 0;  // 10^6 bytes.
  std::uint64_t bytes = 0;        // Of the body.
};

DownloadResult downloadOf(std::uint16_t port, const std::string& path);

// Connections that have asked for a large file and read none of it.
class StalledDownloads {
 public:
  StalledDownloads(std::uint16_t port, const std::string& path, std::size_t count);
  StalledDownloads(const StalledDownloads&) = delete;
  StalledDownloads& operator=(const StalledDownloads&) = delete;
  ~StalledDownloads();

 private:
  std::vector<int> sockets_;
};

}  // namespace varnok::bench
