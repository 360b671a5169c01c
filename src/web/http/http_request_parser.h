// HTTPRequestParser: one request out of a connection's bytes, strictly framed.
//
//   HTTPRequestParser parser(limits);
//   while (parser.isReading()) {
//     const std::size_t used = parser.parse(bytes);   // 0: more bytes are needed.
//     ... parser.bodyPiece() ...
//     bytes.remove_prefix(used);
//   }
//
// What is refused does not depend on how the bytes were cut. Refused beyond the
// grammar: line ends other than CR LF, folded fields, a length given twice or
// beside chunks, any coding but "chunked", two hosts.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "web/http/http_config.h"
#include "web/http/http_request.h"

namespace varnok {

class HTTPRequestParser {
 public:
  enum class State { head, body, done, failed };

  explicit HTTPRequestParser(const HTTPLimits& limits);
  HTTPRequestParser(const HTTPRequestParser&) = delete;
  HTTPRequestParser& operator=(const HTTPRequestParser&) = delete;
  ~HTTPRequestParser();

  // `bytes` are what has come and was not used yet; after 0 the same bytes again,
  // with more behind them. Answers how many were used. Stops after the head and
  // after each piece of the body.
  std::size_t parse(std::string_view bytes);

  State state() const { return state_; }
  bool isReading() const { return state_ == State::head || state_ == State::body; }

  // Once `failed`: 400, 414 or 431.
  int status() const { return status_; }

  // What the last parse() found of the body: a part of its bytes. May be empty.
  std::string_view bodyPiece() const { return piece_; }

  // From `body` on. bodyLength() in bytes, or HTTPExchange::kChunked.
  HTTPRequest& request() { return request_; }
  std::uint64_t bodyLength() const { return bodyLength_; }
  bool keepAlive() const { return keepAlive_; }

  // Begins with the next request.
  void reset();

 private:
  class Impl;

  std::size_t parseHead(std::string_view bytes);
  bool scanHead(std::string_view bytes);
  bool endLine(std::string_view line, std::size_t end);
  std::size_t fail(int status);

  const HTTPLimits limits_;
  std::unique_ptr<Impl> impl_;
  State state_ = State::head;
  int status_ = 0;
  HTTPRequest request_;
  std::uint64_t bodyLength_ = 0;
  bool keepAlive_ = false;
  std::string_view piece_;

  // How far the head has been looked at.
  std::size_t headBegin_ = 0;
  std::size_t lineBegin_ = 0;
  std::size_t scanned_ = 0;
  std::size_t lines_ = 0;
};

}  // namespace varnok
