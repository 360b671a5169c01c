// CurlConnection: HTTP requests one after another over one connection, kept open
// between them.
//
// Threads. One at a time; perform() blocks until the answer is there, the stop
// token asks for an end (noticed within a second), or nothing has moved for as
// long as the settings allow.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

// A piece of an open file, sent as a request's body. It is not read into memory.
struct FilePiece {
  int fd = -1;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

struct HttpHead {
  long status = 0;                             // 0: no answer came.
  std::map<std::string, std::string> headers;  // Names in lower case.

  // Empty when there is none.
  std::string header(const std::string& name) const;
};

struct HttpRequest {
  enum class Method { head, post };
  Method method = Method::post;
  std::string url;
  std::vector<std::string> headers = {};  // "Name: value".
  std::string body = {};
  FilePiece file = {};  // In the place of `body` when its descriptor is valid.

  // Takes the body of a successful answer piece by piece; false gives up. Where
  // it is empty the body is collected.
  std::function<bool(const HttpHead& head, std::string_view bytes)> sink = {};
  // Bytes of the request's body that have been sent.
  std::function<void(std::uint64_t sent)> sent = {};
};

struct HttpResponse {
  enum class Failure {
    none,
    cancelled,
    unreachable,  // No connection came about: refused, no such host, no answer.
    untrusted,    // Whoever answered is not who was asked.
    broken,       // The connection ended, or nothing moved, before the answer was whole.
    readFailed,   // The file to be sent cannot be read, or is shorter than it was.
    sinkRefused,
    other,
  };
  Failure failure = Failure::none;
  std::string error;  // Of a failure, one line.
  HttpHead head;
  std::string body;  // Unless the sink took it; cut at 16 MiB.
};

class CurlConnection {
 public:
  struct Settings {
    std::string caFile = {};    // Empty: the system's.
    bool plainAllowed = false;  // http besides https.
    bool direct = false;        // Past the proxies of the environment.
    std::chrono::seconds connectLimit{20};
    std::chrono::seconds stallLimit{60};
    std::chrono::seconds wholeLimit{0};  // 0: none.
  };

  explicit CurlConnection(Settings settings);
  CurlConnection(const CurlConnection&) = delete;
  CurlConnection& operator=(const CurlConnection&) = delete;
  ~CurlConnection();

  // Redirects are not followed.
  HttpResponse perform(const HttpRequest& request, const std::stop_token& stop);

 private:
  class Handle;
  Settings settings_;
  std::unique_ptr<Handle> handle_;
};

}  // namespace varnok
