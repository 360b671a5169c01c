// One question to the desktop portal: the call, and the Response that a signal
// brings when the user has answered. Only the module's own files include this.

#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/linux/dbus/desktop_portal.h"
#include "platform/linux/dbus/gdbus.h"

namespace varnok {

inline constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
inline constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";

class PortalRequest : public PortalQuestion {
 public:
  // `results` is the portal's dictionary "a{sv}"; null when it gave none.
  using Answered = std::function<void(PortalAnswer, GVariant* results)>;

  // Listens for the answer first, since it may overtake the call's own.
  PortalRequest(std::shared_ptr<Bus> bus, Answered answered);
  PortalRequest(const PortalRequest&) = delete;
  PortalRequest& operator=(const PortalRequest&) = delete;
  // Closes the request unless it was answered.
  ~PortalRequest() override;

  // For the option "handle_token" of the call.
  const std::string& token() const { return token_; }

  // `call` is one of the portal's that gives a request. Once.
  Status start(BusCall call, GCancellable* cancellable);

  // The answer leaves what was asked for in place, as an inhibition: the request
  // lives until its end.
  void keepAfterAnswer() { kept_ = true; }

 private:
  struct Shared;
  Subscription listen(const std::string& path) const;

  const std::shared_ptr<Bus> bus_;
  const std::string token_;
  std::string path_;
  bool kept_ = false;
  bool started_ = false;
  const std::shared_ptr<Shared> shared_;
  Subscription response_;
  Subscription owner_;
};

}  // namespace varnok
