#include "platform/linux/dbus/application_bus.h"

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/dbus/gdbus.h"

namespace varnok {
namespace {

constexpr const char* kPath = "/io/varnok/Varnok";
constexpr const char* kInterface = "org.freedesktop.Application";

constexpr const char* kDescription =
    "<node><interface name='org.freedesktop.Application'>"
    "<method name='Activate'><arg type='a{sv}' name='platform_data' direction='in'/></method>"
    "<method name='Open'><arg type='as' name='uris' direction='in'/>"
    "<arg type='a{sv}' name='platform_data' direction='in'/></method>"
    "<method name='ActivateAction'><arg type='s' name='action_name' direction='in'/>"
    "<arg type='av' name='parameter' direction='in'/><arg type='a{sv}' name='platform_data' direction='in'/></method>"
    "</interface></node>";

// The token by its name of today, else by that of the older protocol.
std::string activationToken(GVariant* platformData) {
  for (const char* name : {"activation-token", "desktop-startup-id"}) {
    const gchar* token = nullptr;
    if (g_variant_lookup(platformData, name, "&s", &token) != 0) return token;
  }
  return {};
}

// `arguments` has the type that the description of the interface gives it.
ApplicationRequest requestOf(const std::string& method, GVariant* arguments) {
  ApplicationRequest request;
  if (method == "Open") {
    request.kind = ApplicationRequest::Kind::open;
    const Variant uris(g_variant_get_child_value(arguments, 0));
    for (gsize i = 0; i < g_variant_n_children(uris.get()); ++i) {
      const Variant uri(g_variant_get_child_value(uris.get(), i));
      request.uris.emplace_back(g_variant_get_string(uri.get(), nullptr));
    }
  } else if (method == "ActivateAction") {
    request.kind = ApplicationRequest::Kind::action;
    const Variant action(g_variant_get_child_value(arguments, 0));
    request.action = g_variant_get_string(action.get(), nullptr);
  }
  const Variant platformData(g_variant_get_child_value(arguments, g_variant_n_children(arguments) - 1));
  request.activationToken = activationToken(platformData.get());
  return request;
}

GVariant* argumentsOf(const ApplicationRequest& request) {
  Options platformData;
  if (!request.activationToken.empty()) {
    platformData.add("activation-token", request.activationToken);
    platformData.add("desktop-startup-id", request.activationToken);
  }
  switch (request.kind) {
    case ApplicationRequest::Kind::activate: return g_variant_new("(@a{sv})", platformData.take());
    case ApplicationRequest::Kind::open: {
      GVariantBuilder uris;
      g_variant_builder_init(&uris, G_VARIANT_TYPE("as"));
      for (const std::string& uri : request.uris)
        g_variant_builder_add(&uris, "s", uri.c_str());
      return g_variant_new("(as@a{sv})", &uris, platformData.take());
    }
    case ApplicationRequest::Kind::action:
      return g_variant_new("(s@av@a{sv})", request.action.c_str(),
                           g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0), platformData.take());
  }
  return nullptr;
}

const char* methodOf(const ApplicationRequest& request) {
  switch (request.kind) {
    case ApplicationRequest::Kind::activate: return "Activate";
    case ApplicationRequest::Kind::open: return "Open";
    case ApplicationRequest::Kind::action: return "ActivateAction";
  }
  return "";
}

class GdbusApplicationBus : public ApplicationBus {
 public:
  explicit GdbusApplicationBus(const BusSettings& settings) : settings_(settings) {}
  GdbusApplicationBus(const GdbusApplicationBus&) = delete;
  GdbusApplicationBus& operator=(const GdbusApplicationBus&) = delete;
  ~GdbusApplicationBus() override { leave(); }

  // The object is there before the name: whoever waits for the name asks at
  // once.
  Status own(std::function<void(ApplicationRequest)> received, std::function<void()> lost) override {
    Status status = connect();
    if (!status.ok()) return status;
    received_ = std::move(received);
    if (status = exportObject(); !status.ok()) return status;
    constexpr guint32 kDoNotQueue = 4;
    constexpr guint32 kOwner = 1;
    constexpr guint32 kExists = 3;
    const BusAnswer answer = callBus("RequestName", g_variant_new("(su)", kApplicationID, kDoNotQueue));
    const guint32 outcome = answer.value.number();
    if (outcome == kOwner) {
      owner_ = bus_->onOwnerChanged(kApplicationID, [lost = std::move(lost)](bool present) {
        if (!present) lost();
      });
      return {};
    }
    leave();
    if (outcome == kExists) return {Status::Code::busy, "the application runs already"};
    return answer.status.ok() ? Status(Status::Code::unavailable, "the bus does not give the name") : answer.status;
  }

  Status send(const ApplicationRequest& request, bool start) override {
    if (Status status = connect(); !status.ok()) return status;
    BusCall call{kApplicationID, kPath, kInterface, methodOf(request)};
    call.arguments = argumentsOf(request);
    call.limit = settings_.callLimit;
    if (!start) call.flags = G_DBUS_CALL_FLAGS_NO_AUTO_START;
    BusAnswer answer = bus_->call(call);
    const bool none = answer.error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                      answer.error == "org.freedesktop.DBus.Error.NameHasNoOwner" ||
                      answer.error.starts_with("org.freedesktop.DBus.Error.Spawn");
    if (none) return {Status::Code::notFound, "the application does not run"};
    return std::move(answer.status);
  }

 private:
  Status connect() {
    Status status;
    if (bus_ == nullptr) bus_ = Bus::connect(Bus::Kind::session, settings_.callLimit, nullptr, status);
    return status;
  }

  Status exportObject() {
    static const GDBusInterfaceVTable table{called, nullptr, nullptr, {}};
    GDBusNodeInfo* description = g_dbus_node_info_new_for_xml(kDescription, nullptr);
    bus_->thread().run([&] {
      object_ = g_dbus_connection_register_object(bus_->connection(), kPath, description->interfaces[0], &table, this,
                                                  nullptr, nullptr);
    });
    g_dbus_node_info_unref(description);
    return object_ != 0 ? Status() : Status(Status::Code::unavailable, "the application is on the bus already");
  }

  static void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
                     GVariant* arguments, GDBusMethodInvocation* invocation, gpointer data) {
    g_dbus_method_invocation_return_value(invocation, nullptr);
    static_cast<GdbusApplicationBus*>(data)->received_(requestOf(method, arguments));
  }

  // The name goes first, so that nobody asks an instance that has left.
  void leave() {
    if (object_ == 0) return;
    owner_.reset();
    if (bus_->isOpen()) {
      callBus("ReleaseName", g_variant_new("(s)", kApplicationID)).status.ignore("the bus takes it when this ends");
    }
    bus_->thread().run([this] { g_dbus_connection_unregister_object(bus_->connection(), object_); });
    object_ = 0;
  }

  BusAnswer callBus(const char* method, GVariant* arguments) {
    BusCall call{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method};
    call.arguments = arguments;
    call.answerType = "(u)";
    call.limit = settings_.callLimit;
    return bus_->call(call);
  }

  const BusSettings settings_;
  std::shared_ptr<Bus> bus_;
  std::function<void(ApplicationRequest)> received_;
  guint object_ = 0;  // 0 while it is not exported.
  Subscription owner_;
};

}  // namespace
}  // namespace varnok

varnok::ApplicationBus* varnokMakeApplicationBus(const varnok::BusSettings& settings) {
  return new varnok::GdbusApplicationBus(settings);
}
