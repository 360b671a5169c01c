// HTTPSession: one TCP connection: reads requests, drives their exchange with
// the handler and sends the replies.
//
// Lifetime. Kept alive by the server until it dies, and by what it waits for.
// Its handler is destroyed when it dies.
//
// Threads. Runs on its strand, but for the members that are said to be for any
// thread.

#pragma once

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/strand.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "web/http/http_exchange.h"
#include "web/http/http_input.h"
#include "web/http/http_request_parser.h"
#include "web/http/http_sender.h"
#include "web/http/http_server.h"

namespace varnok {

class HTTPSession : public std::enable_shared_from_this<HTTPSession> {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Strand = boost::asio::strand<boost::asio::io_context::executor_type>;
  using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, Strand>;

  // The server, as a session sees it. Any thread.
  class Host {
   public:
    virtual ~Host() = default;
    virtual HTTPDateNow& date() = 0;
    virtual void beforeLongWork() = 0;
    virtual bool logsRequests() const = 0;
    virtual void logRequest(const HTTPLogEntry& entry) = 0;
    virtual void didDie(HTTPSession& session) = 0;
  };

  // `host` must outlive the session. `socket` is connected and does not block.
  HTTPSession(Host& host, std::shared_ptr<const HTTPConfig> config, Socket socket, std::string peerAddress,
              std::unique_ptr<HTTPConnection> connection);

  // Once, on any thread.
  void start();

  // Any thread: dies soon.
  void close();

  // Any thread: dies soon, unless the deadline has been moved meanwhile.
  void expire();

  // At once; while no thread runs the strand.
  void die();

  // Any thread.
  const std::string& peerAddress() const { return peerAddress_; }
  bool isOverdue(Time now) const { return deadline_.load(std::memory_order_relaxed) <= now; }
  // Waits for a request, or for the client to close; since when. Else: since
  // when it has been busy with a request.
  bool isWaiting() const { return waiting_.load(std::memory_order_relaxed); }
  Time since() const { return since_.load(std::memory_order_relaxed); }

 private:
  enum class Phase { head, body, reply, linger, dead };

  // Each of these answers whether there is more to do now.
  void run();
  bool readHead();
  bool beginExchange();
  bool readBody();
  bool sendReply();
  bool linger();

  bool answer(const HTTPRequest& request, std::unique_ptr<HTTPResponse> response);
  bool refuse(int status);
  bool afterSending(HTTPSender::Result result);
  bool endReply();
  bool awaitInput();
  bool awaitOutput();

  void receive(std::size_t capacity, Time deadline);
  void received(const boost::system::error_code& error, std::size_t size);
  Time headDeadline();
  Time bodyDeadline() const;
  void setWaiting(bool waiting);
  void logReply();
  template <typename Function>
  void post(Function function);

  Host& host_;
  const std::shared_ptr<const HTTPConfig> config_;
  const std::string peerAddress_;
  Socket socket_;
  std::unique_ptr<HTTPConnection> connection_;
  std::optional<HTTPExchange> exchange_;
  HTTPRequestParser parser_;
  HTTPInput input_;
  HTTPSender sender_;
  Phase phase_ = Phase::head;
  bool hasAnswered_ = false;
  bool hasExpired_ = false;

  // Of the request under way.
  std::optional<Time> headBegan_;
  Time requestBegan_;
  Time bodyBegan_;
  std::uint64_t bodyReceived_ = 0;
  const HTTPRequest* request_ = nullptr;  // The one being answered.

  Time outputDeadline_;
  Time lingersUntil_;

  std::atomic<Time> deadline_ = Time::max();
  std::atomic<bool> waiting_ = true;
  std::atomic<Time> since_;
};

}  // namespace varnok
