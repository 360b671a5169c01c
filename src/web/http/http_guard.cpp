#include "web/http/http_guard.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>

#include "web/http/http_uri.h"

namespace varnok {
namespace {

bool isPort(std::string_view text) {
  return text.size() <= 5 && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Takes ":port" off the end. False when what follows the name is no port.
bool dropPort(std::string_view& host) {
  const std::size_t bracket = host.rfind(']');
  const std::size_t colon = host.find(':', bracket == std::string_view::npos ? 0 : bracket);
  if (colon == std::string_view::npos) return true;
  if (!isPort(host.substr(colon + 1))) return false;
  host = host.substr(0, colon);
  return true;
}

bool isAddress(const std::string& host) {
  unsigned char address[sizeof(in6_addr)];
  if (host.starts_with('[') && host.ends_with(']')) {
    return ::inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), address) == 1;
  }
  return ::inet_pton(AF_INET, host.c_str(), address) == 1;
}

bool isOurName(std::string_view authority, const std::vector<std::string>& hostNames) {
  if (!dropPort(authority)) return false;
  const std::string host = lowerCased(authority);
  return isAddress(host) || host == "localhost" || std::ranges::find(hostNames, host) != hostNames.end();
}

}  // namespace

bool isForThisHost(const HTTPRequest& request, const std::vector<std::string>& hostNames) {
  const auto authority = authorityOfURI(request.uri);
  if (authority && !isOurName(*authority, hostNames)) return false;
  const auto host = request.field("Host");
  return host ? isOurName(*host, hostNames) : request.minorVersion == 0;
}

bool isFromThisSite(const HTTPRequest& request) {
  if (const auto origin = request.field("Origin")) {
    const auto host = request.field("Host");
    return host && equalsIgnoringCase(*origin, "http://" + std::string(*host));
  }
  const auto site = request.field("Sec-Fetch-Site");
  return !site || *site == "none" || *site == "same-origin";
}

std::vector<std::string> hostNamesOf(std::string_view hostName) {
  if (hostName.empty()) return {};
  const std::string whole = lowerCased(hostName);
  const std::string first = whole.substr(0, whole.find('.'));
  std::vector<std::string> names{first, first + ".local"};
  if (whole != first) names.push_back(whole);
  return names;
}

}  // namespace varnok
