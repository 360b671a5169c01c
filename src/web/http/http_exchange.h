// HTTPExchange: the order in which a connection's operations are called, for one
// request after another. The server drives it from a socket; a test drives it by
// hand:
//
//   MyHTTPConnection connection(...);
//   HTTPExchange exchange(connection, std::make_shared<HTTPConfig>(config));
//   auto response = exchange.begin({.method = "POST", .uri = "/upload.html"}, body.size());
//   if (!response) {
//     exchange.receive(body);
//     response = exchange.finish();
//   }

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "web/http/http_connection.h"

namespace varnok {

class HTTPExchange {
 public:
  // A body's length that is not known in advance.
  static constexpr std::uint64_t kChunked = UINT64_MAX;

  // `connection` must outlive the exchange.
  HTTPExchange(HTTPConnection& connection, std::shared_ptr<const HTTPConfig> config);

  // Called before anything that may take long. Empty: nothing to do.
  void setBeforeLongWork(std::function<void()> beforeLongWork) { beforeLongWork_ = std::move(beforeLongWork); }

  // The head of a request has come. A response answers the request without its
  // body; null: its body comes, if it has one, then finish(). `bodyLength` in
  // bytes, or kChunked.
  std::unique_ptr<HTTPResponse> begin(HTTPRequest request, std::uint64_t bodyLength = 0);

  // Some of the body. False when it became longer than the connection takes.
  bool receive(std::string_view bytes);

  // The body is whole. Null: not found.
  std::unique_ptr<HTTPResponse> finish();

  const HTTPRequest& request() const { return connection_.request_; }

 private:
  void reset(std::uint64_t bodyLength);
  void deliver(std::string_view bytes);
  void deliverFirstPiece();
  void beforeWork();

  HTTPConnection& connection_;
  std::shared_ptr<const HTTPConfig> config_;
  std::function<void()> beforeLongWork_;
  std::string path_;
  std::string firstPiece_;  // Gathered until it is large enough.
  std::uint64_t largestBody_ = 0;
  bool takesBody_ = false;
  bool chunked_ = false;
  bool delivering_ = false;
  bool takesLong_ = false;
};

}  // namespace varnok
