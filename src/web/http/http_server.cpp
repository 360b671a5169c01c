#include "web/http/http_server.h"

#include <unistd.h>

#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <cerrno>
#include <map>
#include <mutex>
#include <string_view>
#include <system_error>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "web/http/http_date.h"
#include "web/http/http_guard.h"
#include "web/http/http_listener.h"
#include "web/http/http_loop.h"
#include "web/http/http_session.h"
#include "web/http/http_static_files.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

using boost::asio::ip::tcp;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using SessionPtr = std::shared_ptr<HTTPSession>;

// How long to wait with the next connection when the process has no descriptor
// left for it.
constexpr milliseconds kRetry{100};

// Deadlines are looked at so often that they are kept to within a quarter.
milliseconds sweepPeriod(const HTTPLimits& limits) {
  const milliseconds shortest = std::min(
      {limits.wholeHead, limits.idle, limits.betweenBytes, limits.bodyGrace, limits.writeProgress, limits.linger});
  return std::clamp(shortest / 4, milliseconds(5), milliseconds(1000));
}

}  // namespace

// A running server.
class HTTPServer::State : public HTTPSession::Host {
 public:
  State(const HTTPServer& server, std::shared_ptr<const HTTPConfig> config, const HTTPListener& listener);
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() override;

  void start();

  std::uint16_t port() const { return port_; }
  std::size_t count() const;

  HTTPDateNow& date() override { return date_; }
  void beforeLongWork() override { loop_.handOver(); }
  bool logsRequests() const override { return log_ != nullptr; }
  void logRequest(const HTTPLogEntry& entry) override { log_(entry); }
  void didDie(HTTPSession& session) override;

 private:
  void awaitConnections();
  void acceptConnections();
  void retryLater();
  void add(int descriptor, const std::string& peerAddress);
  SessionPtr condemnOne(const std::string& newcomer);
  void sweepLater();
  void sweep();
  std::vector<SessionPtr> sessions() const;

  const std::shared_ptr<const HTTPConfig> config_;
  const ConnectionClass connectionClass_;
  const RequestLog log_;
  const std::uint16_t port_;
  const milliseconds sweepPeriod_;
  HTTPDateNow date_;
  HTTPLoop loop_;
  tcp::acceptor acceptor_;
  boost::asio::steady_timer sweepTimer_;
  boost::asio::steady_timer retryTimer_;

  struct Entry {
    SessionPtr session;
    bool condemned = false;  // Told to close, to make room.
  };
  mutable std::mutex mutex_;
  std::unordered_map<const HTTPSession*, Entry> sessions_;
  std::size_t condemned_ = 0;  // Of sessions_.
  bool isSweeping_ = false;    // On the leading thread alone, like the timers and the acceptor.
};

HTTPServer::State::State(const HTTPServer& server, std::shared_ptr<const HTTPConfig> config,
                         const HTTPListener& listener)
    : config_(std::move(config)),
      connectionClass_(server.connectionClass_),
      log_(server.log_),
      port_(listener.port),
      sweepPeriod_(sweepPeriod(config_->limits)),
      date_(server.clock_),
      loop_(server.tasks_),
      acceptor_(loop_.context(), listener.isIPv6 ? tcp::v6() : tcp::v4(), listener.descriptor),
      sweepTimer_(loop_.context()),
      retryTimer_(loop_.context()) {}

// What the threads left behind goes with the context: it does no more than hold
// sessions that are dead by then.
HTTPServer::State::~State() {
  loop_.stop();
  for (const SessionPtr& session : sessions())
    session->die();
}

void HTTPServer::State::start() {
  awaitConnections();
  loop_.start();
}

std::size_t HTTPServer::State::count() const {
  const std::scoped_lock lock(mutex_);
  return sessions_.size();
}

std::vector<SessionPtr> HTTPServer::State::sessions() const {
  const std::scoped_lock lock(mutex_);
  std::vector<SessionPtr> all;
  for (const auto& [key, entry] : sessions_)
    all.push_back(entry.session);
  return all;
}

void HTTPServer::State::didDie(HTTPSession& session) {
  const std::scoped_lock lock(mutex_);
  const auto found = sessions_.find(&session);
  if (found == sessions_.end()) return;
  if (found->second.condemned) --condemned_;
  sessions_.erase(found);
}

void HTTPServer::State::awaitConnections() {
  acceptor_.async_wait(tcp::acceptor::wait_read, [this](const boost::system::error_code& error) {
    if (!error) acceptConnections();
  });
}

void HTTPServer::State::acceptConnections() {
  for (;;) {
    std::string peerAddress;
    const int descriptor = acceptConnection(acceptor_.native_handle(), peerAddress);
    if (descriptor >= 0) {
      add(descriptor, peerAddress);
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      return awaitConnections();
    } else if (errno != ECONNABORTED && errno != EINTR) {
      return retryLater();
    }
  }
}

void HTTPServer::State::retryLater() {
  SessionPtr displaced;
  {
    const std::scoped_lock lock(mutex_);
    displaced = condemnOne("");
  }
  if (displaced) displaced->close();
  retryTimer_.expires_after(kRetry);
  retryTimer_.async_wait([this](const boost::system::error_code& error) {
    if (!error) acceptConnections();
  });
}

void HTTPServer::State::add(int descriptor, const std::string& peerAddress) {
  HTTPSession::Socket socket(boost::asio::make_strand(loop_.context()));
  boost::system::error_code error;
  socket.assign(tcp::v6(), descriptor, error);
  if (error) {
    ::close(descriptor);
    return;
  }
  auto session = std::make_shared<HTTPSession>(*this, config_, std::move(socket), peerAddress, connectionClass_());
  SessionPtr displaced;
  {
    const std::scoped_lock lock(mutex_);
    // Those that have to go may still be at long work.
    if (sessions_.size() >= 2 * config_->limits.connections) return;
    if (sessions_.size() - condemned_ >= config_->limits.connections) displaced = condemnOne(peerAddress);
    sessions_.emplace(session.get(), Entry{session});
  }
  if (displaced) displaced->close();
  session->start();
  if (!isSweeping_) sweepLater();
}

// Who has to go for one more of `newcomer`: of the address that holds most, the
// one that has waited longest for a request; where none waits, the one that has
// been busy longest. So slow clients displace each other, and somebody who asks
// for something is served. With mutex_ held. Null: there is none.
SessionPtr HTTPServer::State::condemnOne(const std::string& newcomer) {
  std::map<std::string_view, std::size_t> held;
  for (const auto& [key, entry] : sessions_)
    held[entry.session->peerAddress()] += entry.condemned ? 0 : 1;
  if (const auto found = held.find(newcomer); found != held.end()) ++found->second;
  Entry* chosen = nullptr;
  const auto rank = [&](const Entry& entry) {
    return std::tuple(held[entry.session->peerAddress()], entry.session->isWaiting(),
                      -entry.session->since().time_since_epoch());
  };
  for (auto& [key, entry] : sessions_) {
    if (!entry.condemned && (chosen == nullptr || rank(entry) > rank(*chosen))) chosen = &entry;
  }
  if (chosen == nullptr) return nullptr;
  chosen->condemned = true;
  ++condemned_;
  return chosen->session;
}

void HTTPServer::State::sweepLater() {
  isSweeping_ = true;
  sweepTimer_.expires_after(sweepPeriod_);
  sweepTimer_.async_wait([this](const boost::system::error_code& error) {
    if (!error) sweep();
  });
}

// Stops with the last connection, so that an unused server does not wake up.
void HTTPServer::State::sweep() {
  const auto now = steady_clock::now();
  const auto all = sessions();
  for (const SessionPtr& session : all) {
    if (session->isOverdue(now)) session->expire();
  }
  isSweeping_ = false;
  if (!all.empty()) sweepLater();
}

HTTPServer::HTTPServer(TaskRunner& tasks, const Clock& clock)
    : tasks_(tasks), clock_(clock), connectionClass_([] { return std::make_unique<HTTPConnection>(); }) {}

HTTPServer::~HTTPServer() {
  stop();
}

void HTTPServer::setConnectionClass(ConnectionClass connectionClass) {
  connectionClass_ = std::move(connectionClass);
}
void HTTPServer::setPort(std::uint16_t port) {
  port_ = port;
}
void HTTPServer::setDocumentRoot(const std::string& documentRoot) {
  documentRoot_ = documentRoot.empty() ? "" : standardizedPath(documentRoot);
}
void HTTPServer::setBindAddress(const std::string& address) {
  bindAddress_ = address;
}
void HTTPServer::setHostNames(std::vector<std::string> names) {
  hostNames_ = std::move(names);
}
void HTTPServer::setLimits(const HTTPLimits& limits) {
  limits_ = limits;
}
void HTTPServer::setRequestLog(RequestLog log) {
  log_ = std::move(log);
}

Status HTTPServer::start() {
  if (isRunning()) return {};
  auto config = std::make_shared<HTTPConfig>();
  config->documentRoot = documentRoot_;
  config->limits = limits_;
  config->files = std::make_shared<HTTPStaticFiles>(documentRoot_);
  config->hostNames = hostNamesOf(machineName());
  for (const std::string& name : hostNames_)
    config->hostNames.push_back(lowerCased(name));
  HTTPListener listener;
  if (Status status = listenForConnections(bindAddress_, port_, listener); !status.ok()) return status;
  try {
    state_ = std::make_unique<State>(*this, std::move(config), listener);
  } catch (const std::system_error& error) {
    // No descriptor left for the event queue.
    ::close(listener.descriptor);
    return {Status::Code::unavailable, std::string("Cannot serve: ") + error.what()};
  }
  state_->start();
  return {};
}

void HTTPServer::stop() {
  state_.reset();
}

std::uint16_t HTTPServer::listeningPort() const {
  return state_ ? state_->port() : 0;
}

std::size_t HTTPServer::numberOfHTTPConnections() const {
  return state_ ? state_->count() : 0;
}

}  // namespace varnok
