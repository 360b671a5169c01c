#include <condition_variable>
#include <map>
#include <mutex>
#include <set>

#include "platform/linux/dbus/application_bus.h"
#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/desktop_notifier.h"
#include "platform/linux/dbus/gdbus.h"

namespace varnok {
namespace {

using std::chrono::steady_clock;

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";

constexpr gint32 kServicesChoice = -1;  // Of the time until a notification goes by itself.
constexpr gint32 kNever = 0;

// The texts of a tuple's one array.
std::set<std::string> textsIn(GVariant* tuple) {
  std::set<std::string> texts;
  GVariantIter* each = nullptr;
  const gchar* text = nullptr;
  g_variant_get(tuple, "(as)", &each);
  while (g_variant_iter_next(each, "&s", &text) != 0)
    texts.insert(text);
  g_variant_iter_free(each);
  return texts;
}

std::string escaped(const std::string& text) {
  gchar* markup = g_markup_escape_text(text.c_str(), static_cast<gssize>(text.size()));
  std::string result = markup;
  g_free(markup);
  return result;
}

// What the service says of all its notifications: answers may come before the
// call that made the notification has returned.
class Answers {
 public:
  void invoked(guint32 id) { note(id, NotificationAnswer::Kind::opened); }
  void closed(guint32 id) { note(id, NotificationAnswer::Kind::dismissed); }

  void token(guint32 id, std::string token) {
    const std::lock_guard lock(mutex_);
    tokens_[id] = std::move(token);
  }

  void ownerChanged(bool present) {
    const std::lock_guard lock(mutex_);
    (present ? appeared_ : gone_) = true;
    changed_.notify_all();
  }

  // Whether the service has appeared by `end`, since this was last asked.
  bool waitForService(steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    const bool appeared = changed_.wait_until(lock, end, [this] { return appeared_; });
    appeared_ = false;
    gone_ = false;
    return appeared;
  }

  NotificationAnswer wait(guint32 id, steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, end, [&] { return gone_ || kinds_.contains(id); });
    NotificationAnswer answer;
    if (const auto kind = kinds_.find(id); kind != kinds_.end()) {
      answer.kind = kind->second;
    } else if (gone_) {
      answer.kind = NotificationAnswer::Kind::lost;
    }
    if (const auto token = tokens_.find(id); token != tokens_.end()) answer.activationToken = token->second;
    return answer;
  }

 private:
  // An opened notification is closed after it: the first counts.
  void note(guint32 id, NotificationAnswer::Kind kind) {
    const std::lock_guard lock(mutex_);
    kinds_.emplace(id, kind);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<guint32, NotificationAnswer::Kind> kinds_;
  std::map<guint32, std::string> tokens_;
  bool appeared_ = false;
  bool gone_ = false;
};

class BusDesktopNotifier : public DesktopNotifier {
 public:
  explicit BusDesktopNotifier(const BusSettings& settings) : settings_(settings) {}

  Status show(const DesktopNotification& notification, std::chrono::milliseconds patience) override {
    Status status = connect();
    if (!status.ok()) return status;
    const auto end = steady_clock::now() + patience;
    BusAnswer capabilities = call("GetCapabilities", nullptr, "(as)");
    while (isAbsent(capabilities) && answers_->waitForService(end))
      capabilities = call("GetCapabilities", nullptr, "(as)");
    if (!capabilities.status.ok()) return std::move(capabilities.status);
    const BusAnswer shown = call("Notify", arguments(notification, textsIn(capabilities.value.get())), "(u)");
    id_ = shown.value.number();
    return shown.status;
  }

  NotificationAnswer waitForAnswer(std::chrono::milliseconds limit) override {
    return answers_->wait(id_, steady_clock::now() + limit);
  }

 private:
  static bool isAbsent(const BusAnswer& answer) {
    return answer.error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           answer.error == "org.freedesktop.DBus.Error.NameHasNoOwner";
  }

  Status connect() {
    Status status;
    if (bus_ != nullptr) return status;
    bus_ = Bus::connect(Bus::Kind::session, settings_.callLimit, nullptr, status);
    if (bus_ == nullptr) return status;
    const auto told = [this](const char* name, const char* type, auto use) {
      return bus_->onSignal(kService, kPath, kService, name, [answers = answers_, type, use](GVariant* arguments) {
        if (g_variant_is_of_type(arguments, G_VARIANT_TYPE(type)) == 0) return;
        guint32 id = 0;
        g_variant_get_child(arguments, 0, "u", &id);
        use(*answers, id, arguments);
      });
    };
    owner_ = bus_->onOwnerChanged(kService, [answers = answers_](bool present) { answers->ownerChanged(present); });
    invoked_ = told("ActionInvoked", "(us)", [](Answers& answers, guint32 id, GVariant*) { answers.invoked(id); });
    closed_ = told("NotificationClosed", "(uu)", [](Answers& answers, guint32 id, GVariant*) { answers.closed(id); });
    token_ = told("ActivationToken", "(us)", [](Answers& answers, guint32 id, GVariant* arguments) {
      const gchar* token = nullptr;
      g_variant_get_child(arguments, 1, "&s", &token);
      answers.token(id, token);
    });
    return status;
  }

  // A shell that knows the application takes its notifications away when their
  // sender has gone. So it is told of it only by a sender that waits.
  static GVariant* arguments(const DesktopNotification& notification, const std::set<std::string>& capabilities) {
    const bool waits = !notification.action.empty() && capabilities.contains("actions");
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    if (waits) {
      for (const char* key : {"default", kReminderAction}) {
        g_variant_builder_add(&actions, "s", key);
        g_variant_builder_add(&actions, "s", notification.action.c_str());
      }
    }
    Options hints;
    hints.add("urgency", g_variant_new_byte(1));
    hints.add("category", std::string("reminder"));
    if (waits) hints.add("desktop-entry", std::string(kApplicationID));
    if (!notification.sound.empty()) hints.add("sound-name", notification.sound);
    const bool kept = capabilities.contains("persistence") || !waits;
    return g_variant_new(
        "(susss@as@a{sv}i)", "Varnok", 0, kApplicationID, notification.summary.c_str(),
        capabilities.contains("body-markup") ? escaped(notification.body).c_str() : notification.body.c_str(),
        g_variant_builder_end(&actions), hints.take(), kept ? kServicesChoice : kNever);
  }

  BusAnswer call(const char* method, GVariant* arguments, const char* answerType) {
    BusCall call{kService, kPath, kService, method};
    call.arguments = arguments;
    call.answerType = answerType;
    call.limit = settings_.callLimit;
    return bus_->call(call);
  }

  const BusSettings settings_;
  const std::shared_ptr<Answers> answers_ = std::make_shared<Answers>();
  std::shared_ptr<Bus> bus_;
  guint32 id_ = 0;
  Subscription owner_;
  Subscription invoked_;
  Subscription closed_;
  Subscription token_;
};

}  // namespace
}  // namespace varnok

varnok::DesktopNotifier* varnokMakeDesktopNotifier(const varnok::BusSettings& settings) {
  return new varnok::BusDesktopNotifier(settings);
}
