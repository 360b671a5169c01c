#include "web/access/web_server.h"

#include <vector>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "web/access/my_http_connection.h"

namespace varnok {
namespace {

std::optional<std::string> addressOfInterface(std::string_view name, NetworkMonitor& network) {
  std::optional<std::string> address;
  for (const NetworkInterface& interface : network.interfaces()) {
    if (interface.name == name) address = interface.address;
  }
  return address;
}

// Separated by commas or blanks.
std::vector<std::string> namesIn(std::string_view text) {
  constexpr std::string_view kSeparators = ", \t";
  std::vector<std::string> names;
  for (;;) {
    const std::size_t start = text.find_first_not_of(kSeparators);
    if (start == std::string_view::npos) return names;
    const std::size_t end = std::min(text.find_first_of(kSeparators, start), text.size());
    names.emplace_back(text.substr(start, end - start));
    text.remove_prefix(end);
  }
}

std::string lineOf(const HTTPLogEntry& entry) {
  return fmt::format("{} {} {} {} {} bytes {} ms", entry.peerAddress, entry.method, entry.uri, entry.status,
                     entry.bytesSent, entry.duration.count() / 1000);
}

}  // namespace

WebServer::WebServer(const WebServices& services) : services_(services), server_(services.tasks, services.clock) {
  server_.setDocumentRoot(services.webPages);
}

WebServer::~WebServer() = default;

Status WebServer::start(std::uint16_t port) {
  if (server_.isRunning()) return {};
  const PreferenceStore& preferences = services_.preferences;
  context_ = std::make_shared<WebContext>(services_);
  server_.setConnectionClass([context = context_] { return std::make_unique<MyHTTPConnection>(context); });
  server_.setPort(port);
  server_.setBindAddress(boundAddress(preferences, services_.network));
  server_.setHostNames(namesIn(preferences.stringForKey(key::WEB_HOST_NAMES).value_or("")));
  const bool logged = requestLog_ && preferences.boolForKey(key::WEB_REQUEST_LOG);
  server_.setRequestLog(!logged ? HTTPServer::RequestLog()
                                : [log = requestLog_](const HTTPLogEntry& entry) { log(lineOf(entry)); });
  return server_.start();
}

std::optional<std::string> WebServer::accessCode() const {
  if (context_ == nullptr || context_->gate == nullptr) return std::nullopt;
  return context_->gate->code();
}

std::optional<std::string> wifiAddress(NetworkMonitor& network) {
  return addressOfInterface("en0", network);
}

std::string boundAddress(const PreferenceStore& preferences, NetworkMonitor& network) {
  const std::string stored = preferences.stringForKey(key::WEB_INTERFACE).value_or("");
  return addressOfInterface(stored, network).value_or(stored);
}

std::optional<std::string> browserAddress(const PreferenceStore& preferences, NetworkMonitor& network) {
  const std::string bound = boundAddress(preferences, network);
  if (bound.empty() || bound == "0.0.0.0" || bound == "::") return wifiAddress(network);
  return bound.find(':') == std::string::npos ? bound : "[" + bound + "]";
}

}  // namespace varnok
