// The message buses as the module varnok-desktop uses them: GDBus with owners
// for its objects. Only the module's own files include this.
//
// Threads. Calls block and are made on worker threads. Signals and the answers
// of callAsync() come on one thread, the module's own, which therefore never
// waits for anything.

#pragma once

#include <gio/gio.h>
#include <gio/gunixfdlist.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/status.h"

namespace varnok {

struct GUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class Object>
using GPointer = std::unique_ptr<Object, GUnref>;

// Owns a GVariant; null is none.
class Variant {
 public:
  Variant() = default;
  // Takes over a reference, or a floating one.
  explicit Variant(GVariant* value) : value_(value == nullptr ? nullptr : g_variant_take_ref(value)) {}
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  Variant(Variant&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Variant() {
    if (value_ != nullptr) g_variant_unref(value_);
  }

  GVariant* get() const { return value_; }
  explicit operator bool() const { return value_ != nullptr; }

  // The text or number at `index` of a tuple; empty or 0 when it is none.
  std::string text(gsize index = 0) const;
  guint32 number(gsize index = 0) const;

 private:
  GVariant* value_ = nullptr;
};

// A floating reference to a text for arguments; what is no UTF-8 is replaced.
GVariant* textValue(const std::string& text);

// The dictionary a{sv} that services take options in. Spent by take().
class Options {
 public:
  Options() { g_variant_builder_init(&builder_, G_VARIANT_TYPE_VARDICT); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;
  ~Options() { g_variant_builder_clear(&builder_); }

  Options& add(const char* name, GVariant* value) {
    g_variant_builder_add(&builder_, "{sv}", name, value);
    return *this;
  }
  Options& add(const char* name, const std::string& text) { return add(name, textValue(text)); }
  // A floating reference, for the arguments of a call.
  GVariant* take() { return g_variant_builder_end(&builder_); }

 private:
  GVariantBuilder builder_{};
};

// Ends calls from another thread; calls that follow fail at once.
class Cancellation {
 public:
  Cancellation() : cancellable_(g_cancellable_new()) {}
  void cancel() { g_cancellable_cancel(cancellable_.get()); }
  GCancellable* get() const { return cancellable_.get(); }

 private:
  GPointer<GCancellable> cancellable_;
};

// One thread that dispatches what arrives from the buses. It exists while
// somebody holds it.
class BusThread {
 public:
  static std::shared_ptr<BusThread> shared();
  BusThread(const BusThread&) = delete;
  BusThread& operator=(const BusThread&) = delete;
  ~BusThread();

  // Runs `work` on the thread and waits for its end.
  void run(const std::function<void()>& work);
  bool isCurrent() const;

 private:
  BusThread();
  class Loop;
  std::shared_ptr<Loop> loop_;
};

class Bus;

// Ends with its owner: then the callback is not running and not called again,
// unless the callback itself ended it. So whoever ends one holds no lock that
// the callback takes.
class Subscription {
 public:
  struct State;

  Subscription() = default;
  explicit Subscription(std::shared_ptr<State> state) : state_(std::move(state)) {}
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  Subscription(Subscription&&) = default;
  Subscription& operator=(Subscription&& other) noexcept {
    reset();
    state_ = std::move(other.state_);
    return *this;
  }
  ~Subscription() { reset(); }

  void reset();

 private:
  std::shared_ptr<State> state_;
};

struct BusCall {
  std::string destination;  // "org.freedesktop.Notifications"
  std::string path;
  std::string interface;
  std::string method;
  GVariant* arguments = nullptr;          // A tuple, or null for none. The call takes a floating reference over.
  const char* answerType = nullptr;       // "(u)"; null when any will do. Another type of answer is a failure.
  GUnixFDList* descriptors = nullptr;     // What the arguments' handles count. May be null.
  std::chrono::milliseconds limit{3000};  // For the answer.
  GDBusCallFlags flags = G_DBUS_CALL_FLAGS_NONE;
};

struct BusAnswer {
  Status status;      // unavailable: no such service, no answer in time, an error as the answer. Or cancelled.
  std::string error;  // Its D-Bus name, "org.freedesktop.DBus.Error.ServiceUnknown"; empty where it has none.
  Variant value;      // A tuple; only when the status is ok.
  GPointer<GUnixFDList> descriptors;  // May be null.
};

class Bus {
 public:
  enum class Kind { session, system };

  // The program's connection to the bus, made when there is none that is open.
  // It is closed when nobody holds it. Null with a Status when no bus answers
  // within `limit`. Blocks.
  static std::shared_ptr<Bus> connect(Kind kind, std::chrono::milliseconds limit, GCancellable* cancellable,
                                      Status& status);
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;
  ~Bus();

  // Blocks; never on the bus's own thread.
  BusAnswer call(const BusCall& call, GCancellable* cancellable = nullptr) const;

  // Does not wait: `answered` runs on the bus's thread, also after a failure.
  void callAsync(const BusCall& call, GCancellable* cancellable, std::function<void(BusAnswer)> answered) const;

  // For what needs no answer. Does not wait.
  void send(const BusCall& call) const;

  // `received` gets the signal's arguments. What is empty matches anything.
  // Signals that a later call causes are not missed.
  Subscription onSignal(const std::string& sender, const std::string& path, const std::string& interface,
                        const std::string& name, std::function<void(GVariant* arguments)> received) const;

  // Told each time the service `name` appears or goes, and with false when the
  // connection to the bus ends. Not told how it is at first.
  Subscription onOwnerChanged(const std::string& name, std::function<void(bool present)> changed) const;

  // ":1.42"
  std::string uniqueName() const;
  bool isOpen() const;

  // For what the above has no words for: exporting objects, owning names. What
  // delivers to the thread's context is called within thread().run().
  GDBusConnection* connection() const { return connection_.get(); }
  BusThread& thread() const { return *thread_; }

 private:
  Bus(std::shared_ptr<BusThread> thread, GPointer<GDBusConnection> connection)
      : thread_(std::move(thread)), connection_(std::move(connection)) {}
  Subscription subscribe(std::shared_ptr<Subscription::State> state, const std::string& sender, const std::string& path,
                         const std::string& interface, const std::string& name, const std::string& firstArgument) const;

  std::shared_ptr<BusThread> thread_;  // Outlives the connection.
  GPointer<GDBusConnection> connection_;
};

}  // namespace varnok
