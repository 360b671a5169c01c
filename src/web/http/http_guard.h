// Which requests a page of somebody else's site may have sent. Pure text.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "web/http/http_request.h"

namespace varnok {

// Whether the request was meant for this machine, so that a foreign name that
// was pointed at its address gets nothing: an IP address, localhost or one of
// `hostNames` (lower case), with any port; or no Host at all in HTTP/1.0.
bool isForThisHost(const HTTPRequest& request, const std::vector<std::string>& hostNames);

// Whether a request that changes something came from one of our own pages, or
// from a program that is no browser.
bool isFromThisSite(const HTTPRequest& request);

// The names under which a machine called `hostName` is asked for in its network:
// lower case, with its domain and without, and in ".local".
std::vector<std::string> hostNamesOf(std::string_view hostName);

}  // namespace varnok
