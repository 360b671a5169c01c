// HTTPReply: a response as it goes over the wire: the head as text, then the
// segments of the body. Conditional requests, byte ranges, HEAD and the framing
// are settled here; what is left is sending.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "web/http/http_date.h"
#include "web/http/http_request.h"
#include "web/http/http_response.h"

namespace varnok {

struct HTTPFileSegment {
  int descriptor = -1;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

struct HTTPStreamSegment {
  HTTPBodyStream* stream = nullptr;
  bool chunked = false;
};

// Text of the framing; bytes that the response owns; a part of a file; a stream.
using HTTPSegment = std::variant<std::string, std::string_view, HTTPFileSegment, HTTPStreamSegment>;

struct HTTPReply {
  int status = 0;
  bool keepAlive = false;
  std::vector<HTTPSegment> segments;
  std::unique_ptr<HTTPResponse> response;  // Owns what the segments name.
};

// Appends the head of the reply to `output`. `keepAlive`: the client and the
// request allow another request on this connection.
HTTPReply makeReply(const HTTPRequest& request, std::unique_ptr<HTTPResponse> response, bool keepAlive,
                    HTTPDateNow& date, std::string& output);

}  // namespace varnok
