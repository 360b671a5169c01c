#include "web/http/http_exchange.h"

#include <utility>

#include "web/http/http_data_response.h"
#include "web/http/http_guard.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

std::unique_ptr<HTTPResponse> error(int status, HTTPFields fields = {}) {
  return std::make_unique<HTTPErrorResponse>(status, std::move(fields));
}

std::string supportedMethods(HTTPConnection& connection, const std::string& path) {
  std::string methods;
  for (const char* method : {"GET", "HEAD", "POST", "PUT", "DELETE", "OPTIONS"}) {
    if (connection.supportsMethod(method, path)) methods.append(methods.empty() ? "" : ", ").append(method);
  }
  return methods;
}

}  // namespace

HTTPExchange::HTTPExchange(HTTPConnection& connection, std::shared_ptr<const HTTPConfig> config)
    : connection_(connection), config_(std::move(config)) {
  connection_.config_ = config_;
}

void HTTPExchange::beforeWork() {
  if (takesLong_ && beforeLongWork_) beforeLongWork_();
}

void HTTPExchange::reset(std::uint64_t bodyLength) {
  connection_.requestContentLength_ = bodyLength == kChunked ? 0 : bodyLength;
  connection_.requestContentLengthReceived_ = 0;
  connection_.multipartData_.clear();
  connection_.dataStartIndex_ = 0;
  connection_.postHeaderOK_ = false;
  firstPiece_.clear();
  chunked_ = bodyLength == kChunked;
  takesBody_ = false;
  delivering_ = false;
  takesLong_ = false;
}

std::unique_ptr<HTTPResponse> HTTPExchange::begin(HTTPRequest request, std::uint64_t bodyLength) {
  connection_.request_ = std::move(request);
  reset(bodyLength);
  const std::string& method = connection_.request_.method;
  if (!isForThisHost(connection_.request_, config_->hostNames)) return error(403);
  const auto expectation = connection_.request_.field("Expect");
  if (expectation && !equalsIgnoringCase(*expectation, "100-continue")) return error(417, {{"Connection", "close"}});
  path_ = connection_.pathOfURI(connection_.request_.uri);
  if (!connection_.supportsMethod(method, path_)) {
    return error(405, {{"Allow", supportedMethods(connection_, path_)}});
  }
  if (method == "POST" && !isFromThisSite(connection_.request_)) return error(403, {{"Connection", "close"}});
  if (auto refusal = connection_.refusal(connection_.request_)) return refusal;
  takesBody_ = connection_.expectsRequestBodyFromMethod(method, path_);
  takesLong_ = connection_.mayTakeLong(method, path_);
  if (bodyLength == 0) return nullptr;
  largestBody_ = takesBody_ ? connection_.largestBody(method, path_) : config_->limits.skippedBody;
  if (bodyLength != kChunked && bodyLength > largestBody_) return error(413);
  if (takesBody_) {
    beforeWork();
    connection_.prepareForBodyWithSize(connection_.requestContentLength_);
  }
  return nullptr;
}

bool HTTPExchange::receive(std::string_view bytes) {
  std::uint64_t& received = connection_.requestContentLengthReceived_;
  received += bytes.size();
  if (received > largestBody_) return false;
  if (chunked_) connection_.requestContentLength_ = received;
  if (!takesBody_) return true;
  if (delivering_) {
    deliver(bytes);
    return true;
  }
  // An upload's part header is thereby not cut, unless it is longer than that.
  const bool whole = !chunked_ && received == connection_.requestContentLength_;
  if (firstPiece_.empty() && (whole || bytes.size() >= config_->limits.firstPiece)) {
    deliver(bytes);
  } else {
    firstPiece_ += bytes;
    if (whole || firstPiece_.size() >= config_->limits.firstPiece) deliverFirstPiece();
  }
  return true;
}

void HTTPExchange::deliver(std::string_view bytes) {
  delivering_ = true;
  beforeWork();
  connection_.processDataChunk(bytes);
}

void HTTPExchange::deliverFirstPiece() {
  deliver(firstPiece_);
  firstPiece_ = {};
}

std::unique_ptr<HTTPResponse> HTTPExchange::finish() {
  if (!firstPiece_.empty()) deliverFirstPiece();
  beforeWork();
  auto response = connection_.httpResponseForMethod(connection_.request_.method, connection_.request_.uri);
  return response && response->exists() ? std::move(response) : nullptr;
}

}  // namespace varnok
