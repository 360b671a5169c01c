#include "web/http/http_listener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace varnok {
namespace {

constexpr int kBacklog = 512;

// Either family's address, as the system's calls want it.
union SocketAddress {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
  sockaddr_storage storage;
};

socklen_t sizeOf(const SocketAddress& address) {
  return address.any.sa_family == AF_INET6 ? sizeof address.v6 : sizeof address.v4;
}

// False when `text` is no address. Empty: every interface.
bool parseAddress(const std::string& text, std::uint16_t port, SocketAddress& address) {
  address = {};
  if (::inet_pton(AF_INET, text.c_str(), &address.v4.sin_addr) == 1) {
    address.v4.sin_family = AF_INET;
    address.v4.sin_port = htons(port);
    return true;
  }
  address.v6.sin6_family = AF_INET6;
  address.v6.sin6_port = htons(port);
  return text.empty() || ::inet_pton(AF_INET6, text.c_str(), &address.v6.sin6_addr) == 1;
}

// The errno of a failure, 0 when `listener` is filled.
int tryToListen(SocketAddress address, bool bothFamilies, HTTPListener& listener) {
  const int family = address.any.sa_family;
  const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor < 0) return errno;
  const int on = 1;
  const int onlyV6 = bothFamilies ? 0 : 1;
  socklen_t size = sizeOf(address);
  if (::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
      (family == AF_INET6 && ::setsockopt(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, &onlyV6, sizeof onlyV6) != 0) ||
      ::bind(descriptor, &address.any, size) != 0 || ::listen(descriptor, kBacklog) != 0 ||
      ::getsockname(descriptor, &address.any, &size) != 0) {
    const int error = errno;
    ::close(descriptor);
    return error;
  }
  const bool isIPv6 = family == AF_INET6;
  listener = {descriptor, isIPv6, ntohs(isIPv6 ? address.v6.sin6_port : address.v4.sin_port)};
  return 0;
}

Status statusOf(int error, std::uint16_t port) {
  if (error == 0) return {};
  const auto code = error == EADDRINUSE ? Status::Code::busy
                    : error == EACCES   ? Status::Code::accessDenied
                                        : Status::Code::unavailable;
  return {code, "Cannot listen on port " + std::to_string(port) + ": " + std::strerror(error)};
}

std::string textOf(const SocketAddress& address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (address.any.sa_family != AF_INET6) {
    ::inet_ntop(AF_INET, &address.v4.sin_addr, text.data(), text.size());
  } else if (IN6_IS_ADDR_V4MAPPED(&address.v6.sin6_addr)) {
    ::inet_ntop(AF_INET, address.v6.sin6_addr.s6_addr + 12, text.data(), text.size());
  } else {
    ::inet_ntop(AF_INET6, &address.v6.sin6_addr, text.data(), text.size());
  }
  return text.data();
}

}  // namespace

Status listenForConnections(const std::string& address, std::uint16_t port, HTTPListener& listener) {
  SocketAddress parsed;
  if (!parseAddress(address, port, parsed)) {
    return {Status::Code::invalidArgument, "Cannot listen on " + address + ": not an address"};
  }
  int error = tryToListen(parsed, /*bothFamilies=*/address.empty(), listener);
  // A system may be without IPv6.
  if (address.empty() && (error == EAFNOSUPPORT || error == EADDRNOTAVAIL)) {
    parseAddress("0.0.0.0", port, parsed);
    error = tryToListen(parsed, /*bothFamilies=*/false, listener);
  }
  return statusOf(error, port);
}

int acceptConnection(int listener, std::string& peerAddress) {
  SocketAddress address{};
  socklen_t size = sizeof address;
  const int descriptor = ::accept4(listener, &address.any, &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (descriptor < 0) return -1;
  // Replies are gathered already; waiting for more to fill a packet would only delay them.
  const int on = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  peerAddress = textOf(address);
  return descriptor;
}

std::string machineName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return "";
  return name.data();
}

}  // namespace varnok
