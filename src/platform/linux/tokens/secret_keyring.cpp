#include <libsecret/secret.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "platform/linux/tokens/keyring_module.h"

namespace varnok {
namespace {

// In milliseconds: a service that is there answers at once.
constexpr int kAnswerLimit = 3000;

// For a person to unlock the keyring.
constexpr std::chrono::minutes kPersonLimit{2};

const SecretSchema kSchema = {
    "varnok.Token", SECRET_SCHEMA_NONE, {{"name", SECRET_SCHEMA_ATTRIBUTE_STRING}, {}}, 0, {}, {}, {}, {}, {}, {}, {}};

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

class Error {
 public:
  Error() = default;
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;
  ~Error() { g_clear_error(&error_); }

  GError** out() { return &error_; }
  Status status() const {
    if (error_ == nullptr) return {};
    return {Status::Code::unavailable, std::string("The keyring cannot be used: ") + error_->message};
  }

 private:
  GError* error_ = nullptr;
};

// Ends a call that takes longer than a person does.
class PersonLimit {
 public:
  PersonLimit() : cancellable_(g_cancellable_new()), timer_([this](const std::stop_token& stop) { wait(stop); }) {}

  GCancellable* get() const { return cancellable_.get(); }

 private:
  void wait(const std::stop_token& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any ended;
    if (!ended.wait_for(lock, stop, kPersonLimit, [&stop] { return stop.stop_requested(); })) {
      g_cancellable_cancel(cancellable_.get());
    }
  }

  std::unique_ptr<GCancellable, Unref> cancellable_;
  std::jthread timer_;
};

// The library's own store in a file, for tests and for sandboxes.
bool usesFileBackend() {
  const char* backend = std::getenv("SECRET_BACKEND");
  return backend != nullptr && std::string_view(backend) == "file";
}

// Whether the service answers at all. Its other calls may wait for the user.
Status awaitService() {
  if (usesFileBackend()) return {};
  Error error;
  const std::unique_ptr<GDBusConnection, Unref> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.out()));
  if (bus == nullptr) return error.status();
  GVariant* answer = g_dbus_connection_call_sync(bus.get(), "org.freedesktop.secrets", "/org/freedesktop/secrets",
                                                 "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
                                                 G_DBUS_CALL_FLAGS_NONE, kAnswerLimit, nullptr, error.out());
  if (answer != nullptr) g_variant_unref(answer);
  return error.status();
}

class SecretKeyring : public Keyring {
 public:
  explicit SecretKeyring(std::string name) : name_(std::move(name)) {}

  Status store(const std::string& label, const std::string& secret) override {
    if (Status status = awaitService(); !status.ok()) return status;
    const PersonLimit limit;
    Error error;
    secret_password_store_sync(&kSchema, SECRET_COLLECTION_DEFAULT, label.c_str(), secret.c_str(), limit.get(),
                               error.out(), "name", name_.c_str(), nullptr);
    return error.status();
  }

  std::optional<std::string> load(Status& status) override {
    status = awaitService();
    if (!status.ok()) return std::nullopt;
    const PersonLimit limit;
    Error error;
    gchar* secret = secret_password_lookup_sync(&kSchema, limit.get(), error.out(), "name", name_.c_str(), nullptr);
    status = error.status();
    if (secret == nullptr) return std::nullopt;
    std::string text(secret);
    secret_password_free(secret);
    return text;
  }

  Status clear() override {
    if (Status status = awaitService(); !status.ok()) return status;
    const PersonLimit limit;
    Error error;
    secret_password_clear_sync(&kSchema, limit.get(), error.out(), "name", name_.c_str(), nullptr);
    return error.status();
  }

 private:
  const std::string name_;
};

}  // namespace
}  // namespace varnok

varnok::Keyring* varnokMakeKeyring(const char* name) {
  return new varnok::SecretKeyring(name);
}
