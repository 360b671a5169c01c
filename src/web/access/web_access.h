// WebAccess: the life cycle of the web access, as the settings screen's switch
// drives it.
//
//   state  entered by                                     server      device
//   off    the start, the switch, loss of the network     stopped     may sleep
//   on     the switch, while the network is there         listening   kept awake
//
// Lifetime. The services must outlive it; it goes with the screen, and the
// server with it.
//
// Threads. Main thread.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/notification_center.h"
#include "web/access/web_server.h"
#include "web/access/web_services.h"

namespace varnok {

class WebAccess {
 public:
  // Begins to watch the network. `changed` is called after the switch or the
  // address row has changed.
  WebAccess(const WebServices& services, std::function<void()> changed, std::uint16_t port = WebServer::kPort);
  WebAccess(const WebAccess&) = delete;
  WebAccess& operator=(const WebAccess&) = delete;
  ~WebAccess();  // A server that runs is stopped, and the device may sleep again.

  struct ServerSwitch {
    bool on = false;
    bool enabled = false;
  };
  const ServerSwitch& serverSwitch() const { return serverSwitch_; }

  // "http://192.168.1.7:8080", with the access code beside it where one is asked
  // for; empty while the switch is off.
  const std::string& addressRow() const { return addressRow_; }

  // Puts the switch where `on` says, and the server after it. A server that
  // cannot start is written to the log alone.
  void serverEvent(bool on);

  std::optional<std::string> getIPAddress() const { return wifiAddress(services_.network); }

  // The status of the network has changed.
  void handleNetworkChange();

  // Enables the switch where there is an address to serve at and a backup to
  // serve, else disables it; leaves it on or off as it is.
  void refreshSwitch();

  // A vCard file, or a zip archive, lies below the documents directory.
  bool hasBackup() const;
  bool hasMultipleVCF() const;

 private:
  std::string addressText() const;

  WebServices services_;
  std::function<void()> changed_;
  std::uint16_t port_;
  ServerSwitch serverSwitch_;
  std::string addressRow_;
  std::unique_ptr<WebServer> httpServer_;  // Null until the switch is first on; then kept.
  NotificationCenter::Observation networkObservation_;
};

}  // namespace varnok
