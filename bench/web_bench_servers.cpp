#include "bench/web_bench_servers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <utility>

#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "web/http/http_server.h"

namespace varnok::bench {
namespace {

constexpr const char* kNginx = "/usr/sbin/nginx";
constexpr const char* kLighttpd = "/usr/sbin/lighttpd";

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int newSocket() {
  return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

// A free port, let go of again for a program that wants to be told one.
std::uint16_t freePort() {
  const int fd = newSocket();
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(fd, any, size) != 0 || ::getsockname(fd, any, &size) != 0) std::exit(1);
  ::close(fd);
  return ntohs(address.sin_port);
}

bool answers(std::uint16_t port) {
  const sockaddr_in address = loopback(port);
  for (int i = 0; i < 100; ++i) {
    const int fd = newSocket();
    const bool connected = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(fd);
    if (connected) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
  }
  return false;
}

void serveOurs(const std::string& root, std::uint16_t port) {
  ThreadTaskRunner tasks;
  const PosixClock clock;
  HTTPServer server(tasks, clock);
  server.setDocumentRoot(root);
  server.setPort(port);
  if (const Status status = server.start(); !status.ok()) {
    std::fprintf(stderr, "%s\n", status.message().c_str());
    ::_exit(1);
  }
  tasks.run();
}

// One thread, level triggered, one answer for one read: the least that a server
// can do.
// What a server does at least: one thread, one answer from memory for one read.
class BareServer {
 public:
  explicit BareServer(std::uint16_t port) : listener_(newSocket()), epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
    answer_ = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(kPageSize) + "\r\n\r\n";
    answer_.append(kPageSize, 'x');
    const sockaddr_in address = loopback(port);
    const int on = 1;
    ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) ::_exit(1);
    ::listen(listener_, 512);
    watch(listener_);
  }

  [[noreturn]] void run() {
    std::array<epoll_event, 256> events{};
    for (;;) {
      const int count = ::epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), -1);
      for (int i = 0; i < count; ++i) {
        const int fd = events[static_cast<std::size_t>(i)].data.fd;
        fd == listener_ ? accept() : answer(fd);
      }
    }
  }

 private:
  void watch(int fd) {
    epoll_event event{EPOLLIN, {.fd = fd}};
    ::epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event);
  }

  void accept() {
    const int on = 1;
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    watch(fd);
  }

  void answer(int fd) {
    if (::recv(fd, buffer_.data(), buffer_.size(), 0) > 0 &&
        ::send(fd, answer_.data(), answer_.size(), MSG_NOSIGNAL) > 0) {
      return;
    }
    ::close(fd);
  }

  const int listener_;
  const int epoll_;
  std::string answer_;
  std::array<char, 4096> buffer_{};
};

void write(const std::string& path, const std::string& text) {
  std::ofstream(path) << text;
}

void runNginx(const std::string& folder, std::uint16_t port) {
  const std::string config = folder + "/nginx.conf";
  write(config, "worker_processes 1;\ndaemon off;\nuser root;\npid " + folder + "/nginx.pid;\nerror_log " + folder +
                    "/nginx.log;\nevents { worker_connections 1024; }\nhttp {\n  access_log off;\n  sendfile on;\n"
                    "  tcp_nopush on;\n  keepalive_requests 1000000000;\n  client_body_temp_path " +
                    folder + "/nginx-body;\n  proxy_temp_path " + folder + "/nginx-proxy;\n  fastcgi_temp_path " +
                    folder + "/nginx-fastcgi;\n  uwsgi_temp_path " + folder + "/nginx-uwsgi;\n  scgi_temp_path " +
                    folder + "/nginx-scgi;\n  server {\n    listen 127.0.0.1:" + std::to_string(port) + ";\n    root " +
                    folder + "/root;\n  }\n}\n");
  ::execl(kNginx, "nginx", "-c", config.c_str(), "-p", folder.c_str(), "-e", (folder + "/nginx.log").c_str(), nullptr);
}

void runLighttpd(const std::string& folder, std::uint16_t port) {
  const std::string config = folder + "/lighttpd.conf";
  write(config, "server.document-root = \"" + folder +
                    "/root\"\nserver.bind = \"127.0.0.1\"\nserver.port = " + std::to_string(port) +
                    "\nserver.max-keep-alive-requests = 65535\nserver.max-connections = 1024\n"
                    "mimetype.assign = ( \".html\" => \"text/html\" )\n");
  ::execl(kLighttpd, "lighttpd", "-D", "-f", config.c_str(), nullptr);
}

}  // namespace

Server::Server(std::string serverName, const std::function<void(std::uint16_t)>& run)
    : name(std::move(serverName)), port(freePort()), process_(::fork()) {
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    run(port);
    ::_exit(1);
  }
  if (answers(port)) return;
  std::fprintf(stderr, "%s does not answer\n", name.c_str());
  std::exit(1);
}

Server::~Server() {
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

long Server::memory() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("RssAnon:")) return std::strtol(line.c_str() + 8, nullptr, 10);
  }
  return 0;
}

std::vector<std::unique_ptr<Server>> startServers(const std::string& folder) {
  std::vector<std::unique_ptr<Server>> servers;
  const auto start = [&](const char* name, const std::function<void(std::uint16_t)>& run) {
    servers.push_back(std::make_unique<Server>(name, run));
  };
  start("varnok", [&](std::uint16_t port) { serveOurs(folder + "/root", port); });
  start(kBareServer, [](std::uint16_t port) { BareServer(port).run(); });
  if (::access(kNginx, X_OK) == 0) start("nginx", [&](std::uint16_t port) { runNginx(folder, port); });
  if (::access(kLighttpd, X_OK) == 0) start("lighttpd", [&](std::uint16_t port) { runLighttpd(folder, port); });
  return servers;
}

}  // namespace varnok::bench
