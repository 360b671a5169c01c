#include "ui/desktop_settings.h"

#include <gio/gio.h>

#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <string_view>

namespace varnok {
namespace {

constexpr const char* kName = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kDesktop = "org.gnome.desktop.interface";

constexpr guint32 kPrefersDark = 1;

// The value inside any number of variants.
GVariant* unwrapped(GVariant* value) {
  GVariant* inner = g_variant_ref(value);
  while (g_variant_is_of_type(inner, G_VARIANT_TYPE_VARIANT)) {
    GVariant* next = g_variant_get_variant(inner);
    g_variant_unref(inner);
    inner = next;
  }
  return inner;
}

}  // namespace

// Answers come through GLib's main context, which Qt's event loop runs.
class DesktopSettings::Portal {
 public:
  explicit Portal(DesktopSettings& settings) : settings_(settings), cancel_(g_cancellable_new()) {
    g_bus_get(G_BUS_TYPE_SESSION, cancel_, &Portal::connected, this);
  }
  Portal(const Portal&) = delete;
  Portal& operator=(const Portal&) = delete;
  ~Portal() {
    g_cancellable_cancel(cancel_);
    g_object_unref(cancel_);
    if (bus_ == nullptr) return;
    g_dbus_connection_signal_unsubscribe(bus_, subscription_);
    g_object_unref(bus_);
  }

 private:
  // After a cancellation `data` is no longer there.
  static bool failed(GError* error) {
    if (error == nullptr) return false;
    g_error_free(error);
    return true;
  }

  static void connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_finish(result, &error);
    if (failed(error)) return;
    static_cast<Portal*>(data)->ask(bus);
  }

  void ask(GDBusConnection* bus) {
    bus_ = bus;
    g_dbus_connection_set_exit_on_close(bus_, FALSE);
    subscription_ = g_dbus_connection_signal_subscribe(bus_, kName, kInterface, "SettingChanged", kPath, nullptr,
                                                       G_DBUS_SIGNAL_FLAGS_NONE, &Portal::signalled, this, nullptr);
    const char* namespaces[] = {kAppearance, kDesktop, nullptr};
    g_dbus_connection_call(bus_, kName, kPath, kInterface, "ReadAll", g_variant_new("(^as)", namespaces),
                           G_VARIANT_TYPE("(a{sa{sv}})"), G_DBUS_CALL_FLAGS_NONE, -1, cancel_, &Portal::answered, this);
  }

  static void answered(GObject* source, GAsyncResult* result, gpointer data) {
    GError* error = nullptr;
    GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
    if (failed(error)) return;
    GVariantIter* spaces = nullptr;
    g_variant_get(answer, "(a{sa{sv}})", &spaces);
    const char* space = nullptr;
    GVariantIter* keys = nullptr;
    while (g_variant_iter_loop(spaces, "{&sa{sv}}", &space, &keys)) {
      const char* key = nullptr;
      GVariant* value = nullptr;
      while (g_variant_iter_loop(keys, "{&sv}", &key, &value))
        static_cast<Portal*>(data)->apply(space, key, value);
    }
    g_variant_iter_free(spaces);
    g_variant_unref(answer);
  }

  static void signalled(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                        const char* /*interface*/, const char* /*signal*/, GVariant* parameters, gpointer data) {
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)"))) return;
    const char* space = nullptr;
    const char* key = nullptr;
    GVariant* value = nullptr;
    g_variant_get(parameters, "(&s&sv)", &space, &key, &value);
    static_cast<Portal*>(data)->apply(space, key, value);
    g_variant_unref(value);
  }

  void apply(std::string_view space, std::string_view key, GVariant* wrapped) {
    GVariant* value = unwrapped(wrapped);
    if (space == kAppearance && key == "color-scheme" && g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32)) {
      settings_.setDark(g_variant_get_uint32(value) == kPrefersDark);
    } else if (space == kDesktop && key == "enable-animations" && g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN)) {
      settings_.setMotion(g_variant_get_boolean(value) != FALSE);
    } else if (space == kDesktop && key == "text-scaling-factor" &&
               g_variant_is_of_type(value, G_VARIANT_TYPE_DOUBLE)) {
      settings_.setTextScale(g_variant_get_double(value));
    }
    g_variant_unref(value);
  }

  DesktopSettings& settings_;
  GCancellable* cancel_;
  GDBusConnection* bus_ = nullptr;
  guint subscription_ = 0;
};

DesktopSettings::DesktopSettings(QObject* parent)
    : QObject(parent), dark_(QGuiApplication::palette().color(QPalette::Window).lightness() < 128) {}

DesktopSettings::~DesktopSettings() = default;

void DesktopSettings::follow() {
  portal_ = std::make_unique<Portal>(*this);
}

void DesktopSettings::setDark(bool dark) {
  if (std::exchange(dark_, dark) != dark) Q_EMIT changed();
}

void DesktopSettings::setMotion(bool motion) {
  if (std::exchange(motion_, motion) != motion) Q_EMIT changed();
}

void DesktopSettings::setTextScale(double scale) {
  const double held = std::clamp(scale, 0.5, 3.0);
  if (std::exchange(textScale_, held) != held) Q_EMIT changed();
}

}  // namespace varnok
