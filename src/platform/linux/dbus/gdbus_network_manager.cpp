#include <atomic>
#include <optional>
#include <utility>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/gdbus.h"

namespace varnok {
namespace {

constexpr const char* kName = "org.freedesktop.NetworkManager";
constexpr const char* kPath = "/org/freedesktop/NetworkManager";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

NetworkManagerState stateOf(GVariant* properties) {
  NetworkManagerState state;
  guint32 number = 0;
  const gchar* text = nullptr;
  if (g_variant_lookup(properties, "State", "u", &number) != 0) state.state = number;
  if (g_variant_lookup(properties, "Connectivity", "u", &number) != 0) state.connectivity = number;
  if (g_variant_lookup(properties, "PrimaryConnectionType", "&s", &text) != 0) state.primaryType = text;
  return state;
}

// Lives on the buses' thread once it was started.
class Watch : public std::enable_shared_from_this<Watch> {
 public:
  Watch(std::chrono::milliseconds limit, NetworkManagerClient::Told told) : limit_(limit), told_(std::move(told)) {}

  void start(const std::shared_ptr<Bus>& bus) {
    bus_ = bus;
    owner_ = bus->onOwnerChanged(kName, [this](bool present) {
      if (present) return ask();
      ++asked_;  // An answer under way is of the one that went.
      told_(std::nullopt, {Status::Code::unavailable, "NetworkManager went away"});
    });
    changes_ = bus->onSignal(kName, kPath, kProperties, "PropertiesChanged", [this](GVariant*) { ask(); });
    bus->thread().run([this] { ask(); });
  }

  // From any other thread.
  void end() {
    cancellation_.cancel();
    owner_.reset();
    changes_.reset();
    // An answer that was being told has been told.
    bus_->thread().run([this] { ended_ = true; });
  }

 private:
  // All of it each time: a change of the connection's kind comes in several
  // signals, of which only the last answer is told.
  void ask() {
    const unsigned number = ++asked_;
    bus_->callAsync({.destination = kName,
                     .path = kPath,
                     .interface = kProperties,
                     .method = "GetAll",
                     .arguments = g_variant_new("(s)", kName),
                     .answerType = "(a{sv})",
                     .limit = limit_,
                     .flags = G_DBUS_CALL_FLAGS_NO_AUTO_START},
                    cancellation_.get(), [watch = weak_from_this(), number](BusAnswer answer) {
                      const auto kept = watch.lock();
                      if (kept != nullptr && !kept->ended_ && number == kept->asked_) kept->take(answer);
                    });
  }

  void take(const BusAnswer& answer) {
    if (!answer.status.ok()) return told_(std::nullopt, answer.status);
    const Variant properties(g_variant_get_child_value(answer.value.get(), 0));
    told_(stateOf(properties.get()), {});
  }

  const std::chrono::milliseconds limit_;
  const NetworkManagerClient::Told told_;
  std::shared_ptr<Bus> bus_;
  Cancellation cancellation_;
  unsigned asked_ = 0;
  bool ended_ = false;
  Subscription owner_;
  Subscription changes_;
};

class GDBusNetworkManager : public NetworkManagerClient {
 public:
  explicit GDBusNetworkManager(const BusSettings& settings) : settings_(settings) {}
  GDBusNetworkManager(const GDBusNetworkManager&) = delete;
  GDBusNetworkManager& operator=(const GDBusNetworkManager&) = delete;
  ~GDBusNetworkManager() override {
    if (watch_ != nullptr) watch_->end();
  }

  Status start(Told told) override {
    Status status;
    const auto bus = Bus::connect(Bus::Kind::system, settings_.callLimit, cancellation_.get(), status);
    if (bus == nullptr) return status;
    watch_ = std::make_shared<Watch>(settings_.callLimit, std::move(told));
    watch_->start(bus);
    return {};
  }

  void cancel() override { cancellation_.cancel(); }

 private:
  const BusSettings settings_;
  Cancellation cancellation_;
  std::shared_ptr<Watch> watch_;
};

}  // namespace
}  // namespace varnok

varnok::NetworkManagerClient* varnokMakeNetworkManager(const varnok::BusSettings& settings) {
  return new varnok::GDBusNetworkManager(settings);
}
