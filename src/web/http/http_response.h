// HTTPResponse: what a connection answers to one request.
//
// Lifetime. Owned by the server from the moment it is returned, until its last
// byte has been sent or the connection has died. Memory and descriptors that it
// names stay its own.
//
// Threads. Asked on the queue of its connection, one call at a time.
//
// The server adds Date, Accept-Ranges, Content-Length or Transfer-Encoding, and
// Connection. It answers conditional requests and byte ranges by itself.
// Control characters in a field's value are not sent.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "web/http/http_request.h"

namespace varnok {

// A body that is read in pieces.
class HTTPBodyStream {
 public:
  virtual ~HTTPBodyStream() = default;

  // Bytes of the whole body; nothing when that is not known in advance, which
  // makes the server send it chunked.
  virtual std::optional<std::uint64_t> length() const = 0;

  // Appends the next bytes to `piece`; at the end appends nothing. False when the
  // rest cannot be read: the connection is then cut, so that the client does not
  // take the part for the whole. May wait for a disk.
  virtual bool read(std::string& piece) = 0;
};

// The first `length` bytes of an open file.
struct HTTPFileBody {
  int descriptor = -1;
  std::uint64_t length = 0;
};

// Where a body's bytes come from. A stream is not null.
using HTTPBody = std::variant<std::string_view, HTTPFileBody, HTTPBodyStream*>;

// What a client may keep and ask for again with If-None-Match, If-Modified-Since
// and If-Range.
struct HTTPValidators {
  std::string entityTag;      // With its quotes.
  std::int64_t modified = 0;  // Seconds since 1970-01-01 00:00 UTC.
};

class HTTPResponse {
 public:
  HTTPResponse() = default;
  HTTPResponse(const HTTPResponse&) = delete;
  HTTPResponse& operator=(const HTTPResponse&) = delete;
  virtual ~HTTPResponse() = default;

  // False: there is nothing to send, and the server answers "not found".
  virtual bool exists() const { return true; }

  virtual int status() const { return 200; }

  // The fields that this response adds.
  virtual HTTPFields httpHeaders() const { return {}; }

  // Nothing: always sent anew and whole, unless a range is asked for.
  virtual std::optional<HTTPValidators> validators() const { return std::nullopt; }

  virtual HTTPBody body() = 0;
};

}  // namespace varnok
