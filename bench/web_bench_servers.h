// The servers of the web benchmark, each a child process on loopback that ends
// with this one.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace varnok::bench {

constexpr std::size_t kPageSize = 4 * 1024;  // Bytes.
constexpr const char* kBareServer = "bare loop";

class Server {
 public:
  // `run` serves on the port it is given and does not return. Answers when the
  // port does; ends the program when it never does.
  Server(std::string serverName, const std::function<void(std::uint16_t port)>& run);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  ~Server();

  // KiB that the process has allocated and touched.
  long memory() const;

  const std::string name;
  const std::uint16_t port;

 private:
  const pid_t process_;
};

// Ours first, then a bare epoll loop that answers everything with kPageSize bytes
// from memory, then nginx and lighttpd with one process each, if installed. They
// serve `folder`/root and keep their own files in `folder`.
std::vector<std::unique_ptr<Server>> startServers(const std::string& folder);

}  // namespace varnok::bench
