// HTTPServer: listens on one port and gives each connection a handler of its own.
//
//   HTTPServer server(tasks, clock);
//   server.setConnectionClass([&] { return std::make_unique<MyHTTPConnection>(services); });
//   server.setPort(8080);
//   server.setDocumentRoot("/usr/share/varnok/Web");
//   if (Status status = server.start(); !status.ok()) ...
//   server.stop();
//
// Lifetime. The task runner, the clock and whatever the connection class makes
// use of must outlive the server; its destructor stops it. start() after stop()
// listens again.
//
// Threads. All members belong to the thread that made the server, except where
// said otherwise. The server's own threads come from TaskRunner::serviceQueue,
// made when first needed and gone when stop() returns.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/status.h"
#include "platform/task_runner.h"
#include "web/http/http_config.h"
#include "web/http/http_connection.h"

namespace varnok {

// One answered request.
struct HTTPLogEntry {
  std::string peerAddress;
  std::string method;  // Empty, as is uri, when the request could not be read.
  std::string uri;
  int status = 0;
  std::uint64_t bytesSent = 0;  // Of the body.
  std::chrono::microseconds duration{0};
};

class HTTPServer {
 public:
  using ConnectionClass = std::function<std::unique_ptr<HTTPConnection>()>;
  using RequestLog = std::function<void(const HTTPLogEntry&)>;

  HTTPServer(TaskRunner& tasks, const Clock& clock);
  HTTPServer(const HTTPServer&) = delete;
  HTTPServer& operator=(const HTTPServer&) = delete;
  ~HTTPServer();

  // All of these take effect at the next start().
  void setConnectionClass(ConnectionClass connectionClass);  // Called on the server's threads.
  void setPort(std::uint16_t port);                          // 0: any free one.
  void setDocumentRoot(const std::string& documentRoot);
  void setBindAddress(const std::string& address);    // An IP address. Empty: every interface.
  void setHostNames(std::vector<std::string> names);  // Beside the machine's own, under which requests are answered.
  void setLimits(const HTTPLimits& limits);
  void setRequestLog(RequestLog log);  // Called on the server's threads. Empty: none.

  // Listens. A server that is running goes on as it is. After a failure nothing
  // is left behind, and start() may be tried again.
  Status start();

  // Closes the port and every connection, and waits for the calls of handlers
  // that are under way. Not from a handler.
  void stop();

  bool isRunning() const { return state_ != nullptr; }
  std::uint16_t listeningPort() const;          // 0 when not running.
  std::size_t numberOfHTTPConnections() const;  // Live ones; any thread while running.

 private:
  class State;

  TaskRunner& tasks_;
  const Clock& clock_;
  ConnectionClass connectionClass_;
  std::uint16_t port_ = 0;
  std::string documentRoot_;
  std::string bindAddress_;
  std::vector<std::string> hostNames_;
  HTTPLimits limits_;
  RequestLog log_;
  std::unique_ptr<State> state_;  // Null: stopped.
};

}  // namespace varnok
