#include "web/access/web_access.h"

#include <fmt/format.h>

#include "backup/files/backup_file.h"
#include "platform/text_key.h"

namespace varnok {

WebAccess::WebAccess(const WebServices& services, std::function<void()> changed, std::uint16_t port)
    : services_(services),
      changed_(std::move(changed)),
      port_(port),
      networkObservation_(
          services.notifications.observe(kNetworkReachabilityChangedNotification, [this] { handleNetworkChange(); })) {
  services_.network.startNotifier([&tasks = services.tasks, &notifications = services.notifications] {
    tasks.mainThread([&notifications] { notifications.post(kNetworkReachabilityChangedNotification); });
  });
  refreshSwitch();
}

WebAccess::~WebAccess() {
  if (serverSwitch_.on) services_.idleTimer.setIdleTimerDisabled(/*disabled=*/false);
}

void WebAccess::serverEvent(bool on) {
  serverSwitch_.on = on;
  services_.idleTimer.setIdleTimerDisabled(/*disabled=*/true);
  if (on) {
    if (httpServer_ == nullptr) {
      httpServer_ = std::make_unique<WebServer>(services_);
      httpServer_->setRequestLog([&log = services_.log](const std::string& line) { log.write(line); });
    }
    // Quirk: the address is shown all the same.
    if (const Status status = httpServer_->start(port_); !status.ok()) services_.log.write(status.message());
    addressRow_ = addressText();
  } else {
    services_.idleTimer.setIdleTimerDisabled(/*disabled=*/false);
    if (httpServer_ != nullptr) httpServer_->stop();
    addressRow_.clear();
  }
  changed_();
}

std::string WebAccess::addressText() const {
  const std::optional<std::string> address = browserAddress(services_.preferences, services_.network);
  if (!address) return "";
  std::string text = fmt::format("http://{}:{}", *address, port_);
  if (const auto code = httpServer_->accessCode()) {
    text += fmt::format("  {} {}", services_.texts.text(text_key::ACCESS_CODE), *code);
  }
  return text;
}

void WebAccess::handleNetworkChange() {
  const NetworkStatus status = services_.network.currentReachabilityStatus();
  const bool wifi = status == NetworkStatus::reachableViaWiFi;
  const bool mobile = status == NetworkStatus::reachableViaWWAN;
  services_.log.write(wifi ? "ReachableWiFi" : mobile ? "ReachableWWan" : "Unreachable");
  refreshSwitch();
  serverEvent(wifi && serverSwitch_.on);
}

void WebAccess::refreshSwitch() {
  serverSwitch_.enabled = getIPAddress() && (hasBackup() || hasMultipleVCF());
}

bool WebAccess::hasBackup() const {
  return hasFileWithExtension(services_.files, services_.documents, "vcf");
}

bool WebAccess::hasMultipleVCF() const {
  return hasFileWithExtension(services_.files, services_.documents, "zip");
}

}  // namespace varnok
