// A client of the server under test: one connection on loopback. Every wait ends
// after a while, so that a server that hangs fails the test.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace varnok {

class HTTPTestClient {
 public:
  explicit HTTPTestClient(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    isConnected_ = ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  HTTPTestClient(HTTPTestClient&& other) noexcept
      : socket_(std::exchange(other.socket_, -1)), isConnected_(other.isConnected_) {}
  HTTPTestClient& operator=(HTTPTestClient&&) = delete;
  ~HTTPTestClient() {
    if (socket_ >= 0) ::close(socket_);
  }

  bool isConnected() const { return isConnected_; }

  // False when the server has closed.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  void finish() { ::shutdown(socket_, SHUT_WR); }

  // What has come when `text` has.
  std::string receiveUntil(std::string_view text) {
    std::string received;
    while (received.find(text) == std::string::npos) {
      if (!receiveSome(received)) return received + "<closed>";
    }
    return received;
  }

  // Until the server closes.
  std::string receiveAll() {
    std::string received;
    while (receiveSome(received)) {
    }
    return received;
  }

  // Something has come, or the server has closed.
  bool hasInput() const {
    pollfd event{socket_, POLLIN, 0};
    return ::poll(&event, 1, /*timeout=*/0) == 1;
  }

  // Waits for the server to close. False when it does not, or sends something first.
  bool isClosed() {
    std::string received;
    return !receiveSome(received) && received.empty();
  }

 private:
  static constexpr int kLongest = 15'000;  // Milliseconds.

  bool receiveSome(std::string& received) {
    pollfd event{socket_, POLLIN, 0};
    if (::poll(&event, 1, kLongest) != 1) {
      received += "<timeout>";
      return false;
    }
    char bytes[16 * 1024];
    const ssize_t size = ::recv(socket_, bytes, sizeof bytes, 0);
    if (size > 0) received.append(bytes, static_cast<std::size_t>(size));
    return size > 0;
  }

  int socket_;
  bool isConnected_ = false;
};

}  // namespace varnok
