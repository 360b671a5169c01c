// HTTPConnection: the handler of one TCP connection. A subclass collects bodies
// and answers requests; it sees no socket.
//
// Lifetime. Made by the server's connection class for each accepted connection,
// and destroyed with it, also in the middle of a body.
//
// Threads. All calls come on the connection's own serial queue. Connections run
// at the same time. A call must not throw.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "web/http/http_config.h"
#include "web/http/http_request.h"
#include "web/http/http_response.h"

namespace varnok {

class HTTPConnection {
 public:
  HTTPConnection() = default;
  HTTPConnection(const HTTPConnection&) = delete;
  HTTPConnection& operator=(const HTTPConnection&) = delete;
  virtual ~HTTPConnection() = default;

  // For each request the server resets the body members, then calls these in
  // this order. `path` is the path of the URI without percent escapes, "." and
  // "..", beginning with "/"; empty when the URI has none that can be used.

  // False: 405. GET, HEAD and POST are supported.
  virtual bool supportsMethod(const std::string& method, const std::string& path);

  // POST and PUT. The body of any other method is dropped.
  virtual bool expectsRequestBodyFromMethod(const std::string& method, const std::string& path);

  // Bytes; a longer body is refused with 413 before any of it is read. Asked only
  // where a body is expected. Everything is accepted.
  virtual std::uint64_t largestBody(const std::string& method, const std::string& path);

  // A response here answers the request without its body and without the calls
  // below; null lets it pass, and all pass.
  virtual std::unique_ptr<HTTPResponse> refusal(const HTTPRequest& request);

  // Whether the calls below may wait for a disk or take longer than a millisecond.
  // The server then goes on with other connections on another thread meanwhile.
  // True where a body is expected: a subclass adds the paths whose answers it
  // computes.
  virtual bool mayTakeLong(const std::string& method, const std::string& path);

  // Once before the body, where one is expected and there is one. `size` is 0
  // for a body whose length is not known in advance (sent chunked).
  virtual void prepareForBodyWithSize(std::uint64_t size);

  // The body's pieces in order. The first has at least HTTPLimits::firstPiece
  // bytes or is the whole body. Valid during the call.
  virtual void processDataChunk(std::string_view chunk);

  // After the whole request. Null: 404. Serves the file that filePathForURI()
  // gives.
  virtual std::unique_ptr<HTTPResponse> httpResponseForMethod(const std::string& method, const std::string& uri);

  // The full path of the URI's path (percent escapes and query removed) below the
  // document root, "." and ".." resolved; nothing when it lies outside or the
  // URI has no usable path. For a directory its first existing index file, or
  // nothing. The file itself need not exist.
  std::optional<std::string> filePathForURI(const std::string& uri) const;

  // "edit.html".
  const std::vector<std::string>& directoryIndexFileNames() const;

 protected:
  const HTTPConfig& config() const { return *config_; }

  // The request being served.
  const HTTPRequest& request() const { return request_; }

  // 0 without a body. Of a chunked body: what has come so far.
  std::uint64_t requestContentLength_ = 0;
  std::uint64_t requestContentLengthReceived_ = 0;

  // For the subclass alone; reset to 0, empty, false for each request.
  std::string multipartData_;
  std::uint64_t dataStartIndex_ = 0;
  bool postHeaderOK_ = false;

 private:
  friend class HTTPExchange;

  std::optional<std::string> fullPathOfURI(const std::string& uri) const;
  std::string pathOfURI(const std::string& uri) const;

  std::shared_ptr<const HTTPConfig> config_ = std::make_shared<const HTTPConfig>();
  HTTPRequest request_;
};

}  // namespace varnok
