#include "platform/linux/dbus/portal_request.h"

#include <algorithm>
#include <atomic>

namespace varnok {
namespace {

constexpr const char* kRequest = "org.freedesktop.portal.Request";

std::string newToken() {
  static std::atomic<unsigned> count{0};
  return "varnok" + std::to_string(++count);
}

// Where the portal will put the request of `token`: known before the call, so
// that its answer cannot be missed.
std::string pathFor(const Bus& bus, const std::string& token) {
  std::string sender = bus.uniqueName();
  sender.erase(0, 1);  // The colon.
  std::ranges::replace(sender, '.', '_');
  return std::string(kPortalPath) + "/request/" + sender + "/" + token;
}

PortalAnswer answerOf(guint32 response) {
  if (response == 0) return PortalAnswer::done;
  return response == 1 ? PortalAnswer::cancelled : PortalAnswer::failed;
}

}  // namespace

struct PortalRequest::Shared {
  explicit Shared(Answered toTell) : answered(std::move(toTell)) {}

  const Answered answered;
  std::atomic<bool> done{false};

  void answer(PortalAnswer answer, GVariant* results = nullptr) {
    if (!done.exchange(true)) answered(answer, results);
  }
  // The arguments of a Response.
  void respond(GVariant* arguments) {
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ua{sv})")) == 0) return answer(PortalAnswer::failed);
    guint32 response = 0;
    GVariant* results = nullptr;
    g_variant_get(arguments, "(u@a{sv})", &response, &results);
    answer(answerOf(response), results);
    g_variant_unref(results);
  }
};

PortalRequest::PortalRequest(std::shared_ptr<Bus> bus, Answered answered)
    : bus_(std::move(bus)),
      token_(newToken()),
      path_(pathFor(*bus_, token_)),
      shared_(std::make_shared<Shared>(std::move(answered))),
      response_(listen(path_)),
      owner_(bus_->onOwnerChanged(kPortalName, [shared = shared_](bool present) {
        if (!present) shared->answer(PortalAnswer::failed);
      })) {}

PortalRequest::~PortalRequest() {
  response_.reset();
  owner_.reset();
  const bool answered = shared_->done.exchange(true);
  if (started_ && (!answered || kept_)) {
    bus_->send({.destination = kPortalName,
                .path = path_,
                .interface = kRequest,
                .method = "Close",
                .flags = G_DBUS_CALL_FLAGS_NO_AUTO_START});
  }
}

Subscription PortalRequest::listen(const std::string& path) const {
  return bus_->onSignal(kPortalName, path, kRequest, "Response",
                        [shared = shared_](GVariant* arguments) { shared->respond(arguments); });
}

Status PortalRequest::start(BusCall call, GCancellable* cancellable) {
  call.answerType = "(o)";
  started_ = true;  // Also when no answer comes in time: the portal may still have taken it.
  const BusAnswer answer = bus_->call(call, cancellable);
  if (!answer.status.ok()) return answer.status;
  // Portals of old chose the place themselves.
  if (const std::string given = answer.value.text(); given != path_) {
    path_ = given;
    response_ = listen(path_);
  }
  return {};
}

}  // namespace varnok
