#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/portal_request.h"

namespace varnok {
namespace {

constexpr const char* kApplication = "Varnok";
constexpr const char* kReason = "Backing up contacts";

// An answer that nobody waits for any more is taken until then, to undo it.
constexpr std::chrono::minutes kLateAnswer{5};

// Of the portal's inhibitions.
constexpr guint32 kIdle = 8;

// The portal's answer, waited for.
class Agreement {
 public:
  void set(PortalAnswer answer) {
    const std::lock_guard lock(mutex_);
    answer_ = answer;
    changed_.notify_all();
  }
  void cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    changed_.notify_all();
  }

  Status wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, limit, [this] { return answer_ || cancelled_; });
    if (answer_ == PortalAnswer::done) return {};
    if (cancelled_) return {Status::Code::cancelled, "not waited for"};
    return {Status::Code::unavailable, answer_ ? "the portal refuses" : "the portal does not answer"};
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<PortalAnswer> answer_;
  bool cancelled_ = false;
};

// Whether the service went away; told only after it had agreed.
class Loss {
 public:
  explicit Loss(std::function<void()> lost) : lost_(std::move(lost)) {}

  static Subscription watch(const Bus& bus, const std::string& service, std::shared_ptr<Loss> loss) {
    return bus.onOwnerChanged(service, [loss = std::move(loss)](bool present) {
      if (!present) loss->happened();
    });
  }
  // unavailable when it has gone meanwhile.
  Status agreed() {
    agreed_ = true;
    return gone_ ? Status(Status::Code::unavailable, "the service went away") : Status();
  }

 private:
  void happened() {
    gone_ = true;
    if (agreed_) lost_();
  }

  const std::function<void()> lost_;
  std::atomic<bool> gone_{false};
  std::atomic<bool> agreed_{false};
};

class PortalInhibition : public Inhibition {
 public:
  PortalInhibition(std::unique_ptr<PortalRequest> request, Subscription owner)
      : request_(std::move(request)), owner_(std::move(owner)) {}

 private:
  std::unique_ptr<PortalRequest> request_;
  Subscription owner_;
};

void uninhibit(const Bus& bus, BusCall release, guint32 cookie) {
  release.arguments = g_variant_new("(u)", cookie);
  bus.send(release);
}

class ScreenSaverInhibition : public Inhibition {
 public:
  ScreenSaverInhibition(std::shared_ptr<Bus> bus, BusCall release, guint32 cookie, Subscription owner)
      : bus_(std::move(bus)), release_(std::move(release)), cookie_(cookie), owner_(std::move(owner)) {}
  ScreenSaverInhibition(const ScreenSaverInhibition&) = delete;
  ScreenSaverInhibition& operator=(const ScreenSaverInhibition&) = delete;
  ~ScreenSaverInhibition() override {
    owner_.reset();
    uninhibit(*bus_, release_, cookie_);
  }

 private:
  const std::shared_ptr<Bus> bus_;
  const BusCall release_;
  const guint32 cookie_;
  Subscription owner_;
};

// An answer that is waited for, and undone when it comes too late: the service
// would go on keeping the session awake for nobody.
class Cookie {
 public:
  explicit Cookie(std::function<void(guint32 cookie)> undo) : undo_(std::move(undo)) {}

  void take(BusAnswer answer) {
    const std::lock_guard lock(mutex_);
    if (late_ && answer.status.ok()) undo_(answer.value.number());
    answer_ = std::move(answer);
    came_.notify_all();
  }

  guint32 wait(std::chrono::milliseconds limit, Status& status) {
    std::unique_lock lock(mutex_);
    late_ = !came_.wait_for(lock, limit, [this] { return answer_.has_value(); });
    status = late_ ? Status(Status::Code::unavailable, "no answer") : answer_->status;
    return status.ok() ? answer_->value.number() : 0;
  }

 private:
  const std::function<void(guint32 cookie)> undo_;
  std::mutex mutex_;
  std::condition_variable came_;
  std::optional<BusAnswer> answer_;
  bool late_ = false;
};

// In place until the last copy of the descriptor is closed.
class LogindInhibition : public Inhibition {
 public:
  explicit LogindInhibition(GPointer<GUnixFDList> descriptors) : descriptors_(std::move(descriptors)) {}

 private:
  GPointer<GUnixFDList> descriptors_;
};

class GDBusIdleInhibitor : public IdleInhibitor {
 public:
  explicit GDBusIdleInhibitor(const BusSettings& settings) : settings_(settings) {}

  std::unique_ptr<Inhibition> inhibit(Way way, std::function<void()> lost, Status& status) override {
    const auto kind = way == Way::logind ? Bus::Kind::system : Bus::Kind::session;
    auto bus = Bus::connect(kind, settings_.callLimit, cancellation_.get(), status);
    if (bus == nullptr) return nullptr;
    switch (way) {
      case Way::portal: return throughPortal(bus, std::move(lost), status);
      case Way::screenSaver: return throughScreenSaver(std::move(bus), std::move(lost), status);
      case Way::logind: return throughLogind(*bus, status);
    }
    return nullptr;
  }

  void cancel() override {
    cancellation_.cancel();
    const std::lock_guard lock(mutex_);
    if (agreement_ != nullptr) agreement_->cancel();
  }

 private:
  std::unique_ptr<Inhibition> throughPortal(const std::shared_ptr<Bus>& bus, std::function<void()> lost,
                                            Status& status) {
    const auto agreement = std::make_shared<Agreement>();
    {
      const std::lock_guard lock(mutex_);
      agreement_ = agreement;
    }
    const auto loss = std::make_shared<Loss>(std::move(lost));
    auto owner = Loss::watch(*bus, kPortalName, loss);
    auto request = std::make_unique<PortalRequest>(
        bus, [agreement](PortalAnswer answer, GVariant* /*results*/) { agreement->set(answer); });
    request->keepAfterAnswer();
    Options options;
    options.add("handle_token", request->token()).add("reason", std::string(kReason));
    status = request->start({.destination = kPortalName,
                             .path = kPortalPath,
                             .interface = "org.freedesktop.portal.Inhibit",
                             .method = "Inhibit",
                             .arguments = g_variant_new("(su@a{sv})", "", kIdle, options.take()),
                             .limit = settings_.callLimit},
                            cancellation_.get());
    if (status.ok()) status = agreement->wait(settings_.callLimit);
    if (status.ok()) status = loss->agreed();
    if (!status.ok()) return nullptr;
    return std::make_unique<PortalInhibition>(std::move(request), std::move(owner));
  }

  std::unique_ptr<Inhibition> throughScreenSaver(std::shared_ptr<Bus> bus, std::function<void()> lost,
                                                 Status& status) const {
    const BusCall release{.destination = "org.freedesktop.ScreenSaver",
                          .path = "/org/freedesktop/ScreenSaver",
                          .interface = "org.freedesktop.ScreenSaver",
                          .method = "UnInhibit",
                          .flags = G_DBUS_CALL_FLAGS_NO_AUTO_START};
    BusCall inhibit = release;
    inhibit.method = "Inhibit";
    inhibit.arguments = g_variant_new("(ss)", kApplication, kReason);
    inhibit.answerType = "(u)";
    inhibit.limit = kLateAnswer;
    inhibit.flags = G_DBUS_CALL_FLAGS_NONE;
    const auto loss = std::make_shared<Loss>(std::move(lost));
    auto owner = Loss::watch(*bus, release.destination, loss);
    const auto cookie = std::make_shared<Cookie>([bus = std::weak_ptr(bus), release](guint32 late) {
      if (const auto open = bus.lock()) uninhibit(*open, release, late);
    });
    bus->callAsync(inhibit, cancellation_.get(), [cookie](BusAnswer answer) { cookie->take(std::move(answer)); });
    const guint32 number = cookie->wait(settings_.callLimit, status);
    if (status.ok()) status = loss->agreed();
    if (!status.ok()) return nullptr;
    return std::make_unique<ScreenSaverInhibition>(std::move(bus), release, number, std::move(owner));
  }

  std::unique_ptr<Inhibition> throughLogind(const Bus& bus, Status& status) const {
    BusAnswer answer = bus.call({.destination = "org.freedesktop.login1",
                                 .path = "/org/freedesktop/login1",
                                 .interface = "org.freedesktop.login1.Manager",
                                 .method = "Inhibit",
                                 .arguments = g_variant_new("(ssss)", "idle", kApplication, kReason, "block"),
                                 .answerType = "(h)",
                                 .limit = settings_.callLimit},
                                cancellation_.get());
    status = answer.status;
    if (!status.ok()) return nullptr;
    return std::make_unique<LogindInhibition>(std::move(answer.descriptors));
  }

  const BusSettings settings_;
  Cancellation cancellation_;
  std::mutex mutex_;
  std::shared_ptr<Agreement> agreement_;  // Of the portal call under way, or the last.
};

}  // namespace
}  // namespace varnok

varnok::IdleInhibitor* varnokMakeIdleInhibitor(const varnok::BusSettings& settings) {
  return new varnok::GDBusIdleInhibitor(settings);
}
