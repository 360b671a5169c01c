// HTTPRequest: the head of one request, as the client sent it. A value type.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnok {

// Header fields, name and value, in the order in which they are sent.
using HTTPFields = std::vector<std::pair<std::string, std::string>>;

struct HTTPRequest {
  std::string method;
  std::string uri;       // As sent: a path with an optional query, or a whole "http://" address.
  int minorVersion = 1;  // Of HTTP/1.
  HTTPFields fields = {};
  std::string peerAddress = {};  // Without port; an IPv4 address also when it came through an IPv6 socket.

  // The first field of this name, compared without regard to case.
  std::optional<std::string_view> field(std::string_view name) const;
};

// Of ASCII letters alone, the others stay as they are.
std::string lowerCased(std::string_view text);
bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace varnok
