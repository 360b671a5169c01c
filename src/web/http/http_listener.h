// A listening socket, made the way the server needs it.

#pragma once

#include <cstdint>
#include <string>

#include "platform/status.h"

namespace varnok {

struct HTTPListener {
  int descriptor = -1;  // Does not block, closed in child processes; the caller closes it.
  bool isIPv6 = false;
  std::uint16_t port = 0;
};

// Listens on `port` (0: any free one) of `address`, or of every interface when
// it is empty, IPv4 and IPv6 alike.
Status listenForConnections(const std::string& address, std::uint16_t port, HTTPListener& listener);

// The next connection that has come: its descriptor, which does not block and is
// closed in child processes, and the client's address without port. -1 with
// errno when there is none.
int acceptConnection(int listener, std::string& peerAddress);

// This machine's name; empty when it has none.
std::string machineName();

}  // namespace varnok
