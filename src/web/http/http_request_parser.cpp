#include "web/http/http_request_parser.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>
#include <optional>
#include <string>

#include "web/http/http_exchange.h"

namespace varnok {
namespace {

namespace beast = boost::beast;
namespace http = boost::beast::http;
using beast::error_code;
using BoostView = beast::string_view;

bool isDigits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Collects what the library's parser finds, and refuses what it would let pass.
class Collector : public http::basic_parser<true> {
 public:
  Collector(HTTPRequest& request, std::string_view& piece) : request_(request), piece_(piece) {
    body_limit(boost::none);  // The handler has its own.
  }

  // Bytes that have to be there for put(). The library takes for granted that a
  // line before a chunk comes with the shortest end of a body.
  std::size_t leastBytes() const {
    constexpr std::string_view kShortestEnd = "0\r\n\r\n";
    return headDone_ && chunked() && chunkLeft_ == 0 ? kShortestEnd.size() : 1;
  }

 private:
  void on_request_impl(http::verb /*verb*/, BoostView method, BoostView target, int version, error_code&) override {
    request_.method.assign(method.data(), method.size());
    request_.uri.assign(target.data(), target.size());
    request_.minorVersion = version % 10;
  }

  void on_field_impl(http::field name, BoostView nameText, BoostView value, error_code& error) override {
    if (headDone_) return;  // Behind the last chunk.
    const std::string_view text(value.data(), value.size());
    switch (name) {
      case http::field::content_length:
        if (++lengths_ > 1 || codings_ > 0 || !isDigits(text)) error = http::error::bad_content_length;
        break;
      case http::field::transfer_encoding:
        if (++codings_ > 1 || lengths_ > 0 || request_.minorVersion == 0 || !equalsIgnoringCase(text, "chunked")) {
          error = http::error::bad_transfer_encoding;
        }
        break;
      case http::field::host:
        if (++hosts_ > 1) error = http::error::bad_field;
        break;
      default: break;
    }
    request_.fields.emplace_back(std::string_view(nameText.data(), nameText.size()), text);
  }

  void on_header_impl(error_code&) override { headDone_ = true; }
  void on_body_init_impl(const boost::optional<std::uint64_t>&, error_code&) override {}

  std::size_t on_body_impl(BoostView body, error_code&) override {
    piece_ = {body.data(), body.size()};
    return body.size();
  }

  void on_chunk_header_impl(std::uint64_t size, BoostView extensions, error_code& error) override {
    chunkLeft_ = size;
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t'; };
    if (std::ranges::any_of(extensions, isControl)) error = http::error::bad_chunk_extension;
  }

  std::size_t on_chunk_body_impl(std::uint64_t left, BoostView body, error_code& error) override {
    chunkLeft_ = left - body.size();
    return on_body_impl(body, error);
  }

  void on_response_impl(int, BoostView, int, error_code&) override {}
  void on_finish_impl(error_code&) override {}

  HTTPRequest& request_;
  std::string_view& piece_;
  int lengths_ = 0;
  int codings_ = 0;
  int hosts_ = 0;
  bool headDone_ = false;
  std::uint64_t chunkLeft_ = 0;  // Of the chunk under way.
};

}  // namespace

// The library's parser serves one message.
class HTTPRequestParser::Impl {
 public:
  std::optional<Collector> collector;
};

HTTPRequestParser::HTTPRequestParser(const HTTPLimits& limits) : limits_(limits), impl_(std::make_unique<Impl>()) {
  reset();
}

HTTPRequestParser::~HTTPRequestParser() = default;

void HTTPRequestParser::reset() {
  request_.fields.clear();
  impl_->collector.emplace(request_, piece_);
  impl_->collector->header_limit(static_cast<std::uint32_t>(limits_.head + 2));
  state_ = State::head;
  status_ = 0;
  bodyLength_ = 0;
  keepAlive_ = false;
  piece_ = {};
  headBegin_ = lineBegin_ = scanned_ = lines_ = 0;
}

std::size_t HTTPRequestParser::fail(int status) {
  state_ = State::failed;
  status_ = status;
  return 0;
}

// A line has come; `line` is without its line feed, which stands at `end`. True
// when the head ends with it.
bool HTTPRequestParser::endLine(std::string_view line, std::size_t end) {
  lineBegin_ = end + 1;
  if (!line.ends_with('\r')) return fail(400), false;
  if (line.size() == 1) {
    if (lines_ > 0) return true;
    // Some clients send a line end behind a body.
    if (headBegin_ > 0) return fail(400), false;
    headBegin_ = lineBegin_;
    return false;
  }
  if (line.front() == ' ' || line.front() == '\t') return fail(400), false;
  if (++lines_ > limits_.fields + 1) return fail(431), false;
  return false;
}

// Looks at each byte of the head once, however often it is called. True when the
// head has come whole; its end is lineBegin_.
bool HTTPRequestParser::scanHead(std::string_view bytes) {
  while (state_ == State::head) {
    const std::size_t end = bytes.find('\n', scanned_);
    scanned_ = std::min(end, bytes.size());
    if (lines_ == 0 && scanned_ > lineBegin_ + limits_.requestLine + 1) return fail(414), false;
    if (scanned_ >= limits_.head) return fail(431), false;
    if (end == std::string_view::npos) return false;
    ++scanned_;
    if (endLine(bytes.substr(lineBegin_, end - lineBegin_), end)) return true;
  }
  return false;
}

std::size_t HTTPRequestParser::parseHead(std::string_view bytes) {
  if (!scanHead(bytes)) return 0;
  const std::size_t size = lineBegin_ - headBegin_;
  error_code error;
  Collector& collector = *impl_->collector;
  collector.put(boost::asio::const_buffer(bytes.data() + headBegin_, size), error);
  if (error || !collector.is_header_done()) return fail(400);
  keepAlive_ = collector.keep_alive();
  bodyLength_ = collector.chunked() ? HTTPExchange::kChunked : collector.content_length().value_or(0);
  state_ = collector.is_done() ? State::done : State::body;
  return lineBegin_;
}

std::size_t HTTPRequestParser::parse(std::string_view bytes) {
  piece_ = {};
  if (state_ == State::head) return parseHead(bytes);
  Collector& collector = *impl_->collector;
  if (state_ != State::body || bytes.size() < collector.leastBytes()) return 0;
  error_code error;
  const std::size_t used = collector.put(boost::asio::const_buffer(bytes.data(), bytes.size()), error);
  if (error == http::error::need_more) return used;
  if (error) return fail(400);
  if (collector.is_done()) state_ = State::done;
  return used;
}

}  // namespace varnok
