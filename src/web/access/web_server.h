// WebServer: the HTTP server with everything that the web access answers, set up
// from the preferences.
//
// Threads. All members belong to the thread that made it.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/status.h"
#include "web/access/web_services.h"
#include "web/http/http_server.h"

namespace varnok {

struct WebContext;

class WebServer {
 public:
  static constexpr std::uint16_t kPort = 8080;

  explicit WebServer(const WebServices& services);
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;
  ~WebServer();

  // One line for each answered request goes to `log`, on any thread, where the
  // preferences ask for it.
  void setRequestLog(std::function<void(const std::string& line)> log) { requestLog_ = std::move(log); }

  // Reads the preferences afresh; one that is running goes on as it is. 0 is any
  // free port.
  Status start(std::uint16_t port = kPort);
  void stop() { server_.stop(); }

  std::uint16_t port() const { return server_.listeningPort(); }

  // The code that a browser is asked for; nothing when it is asked for none. A
  // new one with each start.
  std::optional<std::string> accessCode() const;

 private:
  WebServices services_;
  std::function<void(const std::string& line)> requestLog_;
  std::shared_ptr<WebContext> context_;  // Of the last start.
  HTTPServer server_;
};

// The device's address in the local network: that of "en0", the last one listed
// when there are several.
std::optional<std::string> wifiAddress(NetworkMonitor& network);

// The address that the web access is bound to; empty when to every interface. In
// the preference it may stand as the name of an interface.
std::string boundAddress(const PreferenceStore& preferences, NetworkMonitor& network);

// The address that a browser opens: the one the web access is bound to, else the
// device's in the local network. Nothing when there is none.
std::optional<std::string> browserAddress(const PreferenceStore& preferences, NetworkMonitor& network);

}  // namespace varnok
