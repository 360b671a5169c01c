#include "web/http/http_session.h"

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <utility>

#include "web/http/http_data_response.h"

namespace varnok {
namespace {

using std::chrono::steady_clock;

// Bytes.
constexpr std::size_t kHeadBuffer = 4'096;  // Holds nearly every head.
constexpr std::size_t kBodyBuffer = 65'536;

// Stands in for a request that could not be read.
const HTTPRequest kNoRequest;

}  // namespace

HTTPSession::HTTPSession(Host& host, std::shared_ptr<const HTTPConfig> config, Socket socket, std::string peerAddress,
                         std::unique_ptr<HTTPConnection> connection)
    : host_(host),
      config_(std::move(config)),
      peerAddress_(std::move(peerAddress)),
      socket_(std::move(socket)),
      connection_(std::move(connection)),
      exchange_(std::in_place, *connection_, config_),
      parser_(config_->limits),
      sender_(socket_.native_handle(), [this] { host_.beforeLongWork(); }),
      since_(steady_clock::now()) {
  exchange_->setBeforeLongWork([this] { host_.beforeLongWork(); });
}

template <typename Function>
void HTTPSession::post(Function function) {
  boost::asio::post(socket_.get_executor(), [self = shared_from_this(), function] { function(*self); });
}

void HTTPSession::start() {
  post([](HTTPSession& self) { self.run(); });
}

void HTTPSession::close() {
  post([](HTTPSession& self) { self.die(); });
}

// What the session waits for is given up; that ends the wait with an error.
void HTTPSession::expire() {
  post([](HTTPSession& self) {
    if (!self.isOverdue(steady_clock::now())) return;
    self.hasExpired_ = true;
    boost::system::error_code error;
    self.socket_.cancel(error);
  });
}

void HTTPSession::die() {
  if (phase_ == Phase::dead) return;
  phase_ = Phase::dead;
  deadline_ = Time::max();
  boost::system::error_code error;
  socket_.close(error);
  sender_.drop();
  exchange_.reset();
  connection_.reset();
  host_.didDie(*this);
}

void HTTPSession::run() {
  for (bool more = true; more;) {
    switch (phase_) {
      case Phase::head: more = readHead(); break;
      case Phase::body: more = readBody(); break;
      case Phase::reply: more = sendReply(); break;
      case Phase::linger: more = linger(); break;
      case Phase::dead: return;
    }
  }
}

bool HTTPSession::readHead() {
  input_.consume(parser_.parse(input_.bytes()));
  switch (parser_.state()) {
    case HTTPRequestParser::State::head: return awaitInput();
    case HTTPRequestParser::State::failed: return refuse(parser_.status());
    case HTTPRequestParser::State::body:
    case HTTPRequestParser::State::done: return beginExchange();
  }
  return false;
}

bool HTTPSession::beginExchange() {
  setWaiting(/*waiting=*/false);
  headBegan_.reset();
  HTTPRequest request = std::move(parser_.request());
  request.peerAddress = peerAddress_;
  const bool awaitsContinue = request.minorVersion > 0 && request.field("Expect");
  if (auto response = exchange_->begin(std::move(request), parser_.bodyLength())) {
    return answer(exchange_->request(), std::move(response));
  }
  if (!parser_.isReading()) return answer(exchange_->request(), exchange_->finish());
  if (awaitsContinue && input_.empty()) sender_.gathered() += "HTTP/1.1 100 Continue\r\n\r\n";
  phase_ = Phase::body;
  bodyBegan_ = steady_clock::now();
  bodyReceived_ = 0;
  return true;
}

bool HTTPSession::readBody() {
  const std::size_t used = parser_.parse(input_.bytes());
  const std::string_view piece = parser_.bodyPiece();
  bodyReceived_ += piece.size();
  const bool fits = piece.empty() || exchange_->receive(piece);
  input_.consume(used);
  if (parser_.state() == HTTPRequestParser::State::failed) return refuse(parser_.status());
  if (!fits) return answer(exchange_->request(), std::make_unique<HTTPErrorResponse>(413));
  if (!parser_.isReading()) return answer(exchange_->request(), exchange_->finish());
  if (used > 0) return true;
  // The line before a chunk fills the whole buffer.
  if (input_.bytes().size() >= kBodyBuffer) return refuse(400);
  return awaitInput();
}

bool HTTPSession::answer(const HTTPRequest& request, std::unique_ptr<HTTPResponse> response) {
  if (!response) response = std::make_unique<HTTPErrorResponse>(404);
  const bool keepAlive = parser_.state() == HTTPRequestParser::State::done && parser_.keepAlive();
  sender_.begin(makeReply(request, std::move(response), keepAlive, host_.date(), sender_.gathered()));
  request_ = &request;
  phase_ = Phase::reply;
  return true;
}

// Answers what is no request and closes.
bool HTTPSession::refuse(int status) {
  return answer(kNoRequest, std::make_unique<HTTPErrorResponse>(status, HTTPFields{{"Connection", "close"}}));
}

bool HTTPSession::sendReply() {
  HTTPSender::Result result = sender_.send();
  // The replies to requests that came together go out together.
  if (result == HTTPSender::Result::whole && (!sender_.reply().keepAlive || sender_.isFull())) result = sender_.flush();
  return result == HTTPSender::Result::whole ? endReply() : afterSending(result);
}

bool HTTPSession::afterSending(HTTPSender::Result result) {
  switch (result) {
    case HTTPSender::Result::whole: return true;
    case HTTPSender::Result::blocked: return awaitOutput();
    case HTTPSender::Result::turnOver: post([](HTTPSession& self) { self.run(); }); return false;
    case HTTPSender::Result::failed: die(); return false;
  }
  return false;
}

bool HTTPSession::endReply() {
  if (host_.logsRequests()) logReply();
  const bool keepAlive = sender_.reply().keepAlive;
  sender_.drop();
  hasAnswered_ = true;
  if (keepAlive) {
    parser_.reset();
    phase_ = Phase::head;
    setWaiting(/*waiting=*/true);
    return true;
  }
  if (parser_.state() == HTTPRequestParser::State::done && input_.empty()) return die(), false;
  // Closing now, with bytes of the client unread or on their way, could take the
  // answer back before it is read.
  boost::system::error_code error;
  socket_.shutdown(Socket::shutdown_send, error);
  phase_ = Phase::linger;
  lingersUntil_ = steady_clock::now() + config_->limits.linger;
  setWaiting(/*waiting=*/true);
  return true;
}

bool HTTPSession::linger() {
  input_.consume(input_.bytes().size());
  receive(kBodyBuffer, lingersUntil_);
  return false;
}

void HTTPSession::setWaiting(bool waiting) {
  waiting_.store(waiting, std::memory_order_relaxed);
  requestBegan_ = steady_clock::now();
  since_.store(requestBegan_, std::memory_order_relaxed);
}

void HTTPSession::logReply() {
  const auto taken = std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - requestBegan_);
  host_.logRequest({peerAddress_, request_->method, request_->uri, sender_.reply().status, sender_.bodyBytes(), taken});
}

// ---- waiting for the socket

bool HTTPSession::awaitInput() {
  if (!sender_.gathered().empty()) {
    if (const auto result = sender_.flush(); result != HTTPSender::Result::whole) return afterSending(result);
  }
  if (phase_ == Phase::body) {
    receive(kBodyBuffer, bodyDeadline());
  } else {
    input_.shrink(kHeadBuffer);
    receive(input_.bytes().size() < kHeadBuffer ? kHeadBuffer : config_->limits.head, headDeadline());
  }
  return false;
}

HTTPSession::Time HTTPSession::headDeadline() {
  const Time now = steady_clock::now();
  if (hasAnswered_ && input_.empty()) return now + config_->limits.idle;
  if (!headBegan_) headBegan_ = now;
  return *headBegan_ + config_->limits.wholeHead;
}

HTTPSession::Time HTTPSession::bodyDeadline() const {
  const HTTPLimits& limits = config_->limits;
  const std::chrono::milliseconds atRate(bodyReceived_ * 1000 / limits.bodyRate);
  return std::min(steady_clock::now() + limits.betweenBytes, bodyBegan_ + std::max(limits.bodyGrace, atRate));
}

void HTTPSession::receive(std::size_t capacity, Time deadline) {
  deadline_ = deadline;
  char* const space = input_.space(capacity);
  socket_.async_receive(boost::asio::buffer(space, input_.spaceSize()),
                        [self = shared_from_this()](const boost::system::error_code& error, std::size_t size) {
                          self->received(error, size);
                        });
}

void HTTPSession::received(const boost::system::error_code& error, std::size_t size) {
  if (phase_ == Phase::dead) return;
  deadline_ = Time::max();
  const bool hasExpired = std::exchange(hasExpired_, false);
  if (error) {
    // Who began a head and did not end it is told.
    if (!hasExpired || phase_ != Phase::head || input_.empty()) return die();
    refuse(408);
  }
  input_.commit(size);
  run();
}

bool HTTPSession::awaitOutput() {
  if (sender_.hasProgressed()) outputDeadline_ = steady_clock::now() + config_->limits.writeProgress;
  deadline_ = outputDeadline_;
  socket_.async_wait(Socket::wait_write, [self = shared_from_this()](const boost::system::error_code& error) {
    if (self->phase_ == Phase::dead) return;
    self->deadline_ = Time::max();
    if (error) return self->die();
    self->run();
  });
  return false;
}

}  // namespace varnok
