#include "bench/web_bench_load.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace varnok::bench {
namespace {

using std::chrono::steady_clock;

int connectTo(std::uint16_t port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (fd < 0 || ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    std::perror("connect");
    std::exit(1);
  }
  const int on = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return fd;
}

std::string requestFor(const std::string& path) {
  return "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nUser-Agent: bench\r\nAccept: */*\r\n\r\n";
}

// The size of the answer that begins with `bytes`, head included; 0 when its
// head is not whole. -1 for an answer other than 200 with a length.
std::int64_t answerSize(std::string_view bytes) {
  const std::size_t end = bytes.find("\r\n\r\n");
  if (end == std::string_view::npos) return 0;
  constexpr std::string_view kLength = "\r\nContent-Length: ";
  const std::size_t at = bytes.find(kLength);
  if (!bytes.starts_with("HTTP/1.1 200") || at > end) return -1;
  std::int64_t length = 0;
  std::from_chars(bytes.data() + at + kLength.size(), bytes.data() + end, length);
  return static_cast<std::int64_t>(end) + 4 + length;
}

struct Client {
  int fd;
  std::int64_t wanted = 0;  // Of the answer under way; 0 before its head.
  std::int64_t received = 0;
};

class Load {
 public:
  Load(std::uint16_t port, const std::string& path, std::size_t connections)
      : request_(requestFor(path)), epoll_(::epoll_create1(EPOLL_CLOEXEC)), events_(connections) {
    for (std::size_t i = 0; i < connections; ++i)
      clients_.push_back(std::make_unique<Client>(Client{connectTo(port)}));
    for (const auto& client : clients_) {
      epoll_event event{EPOLLIN, {.ptr = client.get()}};
      ::epoll_ctl(epoll_, EPOLL_CTL_ADD, client->fd, &event);
      ask(*client);
    }
  }
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;
  ~Load() {
    for (const auto& client : clients_)
      ::close(client->fd);
    ::close(epoll_);
  }

  LoadResult run(std::chrono::milliseconds time) {
    const auto begin = steady_clock::now();
    while (steady_clock::now() < begin + time && errors_ < clients_.size()) {
      const int count = ::epoll_wait(epoll_, events_.data(), static_cast<int>(events_.size()), 100);
      for (int i = 0; i < count; ++i)
        read(*static_cast<Client*>(events_[static_cast<std::size_t>(i)].data.ptr));
    }
    const std::chrono::duration<double> taken = steady_clock::now() - begin;
    return {static_cast<double>(answers_) / taken.count(), errors_};
  }

 private:
  void ask(Client& client) {
    client.wanted = 0;
    client.received = 0;
    if (::send(client.fd, request_.data(), request_.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(request_.size()))
      fail(client);
  }

  void fail(Client& client) {
    ++errors_;
    ::epoll_ctl(epoll_, EPOLL_CTL_DEL, client.fd, nullptr);
  }

  void read(Client& client) {
    const ssize_t size = ::recv(client.fd, buffer_.data(), buffer_.size(), 0);
    if (size <= 0) return fail(client);
    // All servers send their head in one piece.
    if (client.wanted == 0) client.wanted = answerSize({buffer_.data(), static_cast<std::size_t>(size)});
    client.received += size;
    if (client.wanted <= 0 || client.received > client.wanted) return fail(client);
    if (client.received < client.wanted) return;
    ++answers_;
    ask(client);
  }

  const std::string request_;
  const int epoll_;
  std::vector<epoll_event> events_;
  std::vector<std::unique_ptr<Client>> clients_;
  std::array<char, 65'536> buffer_{};
  std::size_t answers_ = 0;
  std::size_t errors_ = 0;
};

}  // namespace

LoadResult loadOf(std::uint16_t port, const std::string& path, std::size_t connections,
                  std::chrono::milliseconds time) {
  return Load(port, path, connections).run(time);
}

DownloadResult downloadOf(std::uint16_t port, const std::string& path) {
  const int fd = connectTo(port);
  const std::string request = requestFor(path);
  const auto begin = steady_clock::now();
  ::send(fd, request.data(), request.size(), MSG_NOSIGNAL);
  std::vector<char> buffer(262'144);
  std::int64_t wanted = 0;
  std::int64_t received = 0;
  std::int64_t head = 0;
  do {
    const ssize_t size = ::recv(fd, buffer.data(), buffer.size(), 0);
    if (size <= 0) break;
    if (wanted == 0) {
      const std::string_view bytes(buffer.data(), static_cast<std::size_t>(size));
      wanted = answerSize(bytes);
      head = static_cast<std::int64_t>(bytes.find("\r\n\r\n")) + 4;
    }
    received += size;
  } while (received < wanted);
  const std::chrono::duration<double> taken = steady_clock::now() - begin;
  ::close(fd);
  const auto bytes = static_cast<std::uint64_t>(received - head);
  return {static_cast<double>(bytes) / 1e6 / taken.count(), bytes};
}

StalledDownloads::StalledDownloads(std::uint16_t port, const std::string& path, std::size_t count) {
  const std::string request = requestFor(path);
  char first = 0;
  for (std::size_t i = 0; i < count; ++i) {
    sockets_.push_back(connectTo(port));
    ::send(sockets_.back(), request.data(), request.size(), MSG_NOSIGNAL);
    ::recv(sockets_.back(), &first, 1, 0);
  }
}

StalledDownloads::~StalledDownloads() {
  for (const int fd : sockets_)
    ::close(fd);
}

}  // namespace varnok::bench
