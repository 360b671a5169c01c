#include "platform/linux/dbus/gdbus.h"

#include <condition_variable>
#include <csignal>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/check.h"

namespace varnok {
namespace {

const char* orNull(const std::string& text) {
  return text.empty() ? nullptr : text.c_str();
}

// Frees `error`. `what` begins the message.
Status statusOf(GError* error, const std::string& what) {
  if (error == nullptr) return {};
  g_dbus_error_strip_remote_error(error);
  const bool cancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != 0;
  Status status(cancelled ? Status::Code::cancelled : Status::Code::unavailable, what + ": " + error->message);
  g_error_free(error);
  return status;
}

BusAnswer answerOf(GVariant* value, GUnixFDList* descriptors, GError* error, const std::string& what) {
  BusAnswer answer;
  answer.value = Variant(value);
  answer.descriptors.reset(descriptors);
  if (error != nullptr && g_dbus_error_is_remote_error(error) != 0) {
    gchar* name = g_dbus_error_get_remote_error(error);
    answer.error = name;
    g_free(name);
  }
  answer.status = statusOf(error, what);
  return answer;
}

std::string nameOf(const BusCall& call) {
  return call.interface + "." + call.method;
}

struct AnswerType {
  explicit AnswerType(const BusCall& call)
      : type(call.answerType == nullptr ? nullptr : g_variant_type_new(call.answerType)) {}
  AnswerType(const AnswerType&) = delete;
  AnswerType& operator=(const AnswerType&) = delete;
  ~AnswerType() {
    if (type != nullptr) g_variant_type_free(type);
  }
  GVariantType* type;
};

int milliseconds(std::chrono::milliseconds time) {
  return static_cast<int>(time.count());
}

// A connection under way; shared with GDBus, which may be done with it later
// than those who waited.
struct Attempt {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  GPointer<GDBusConnection> connection;
  Status status;
};

void connected(GObject* /*source*/, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<std::shared_ptr<Attempt>> attempt(static_cast<std::shared_ptr<Attempt>*>(data));
  GError* error = nullptr;
  GPointer<GDBusConnection> connection(g_dbus_connection_new_for_address_finish(result, &error));
  const std::lock_guard lock((*attempt)->mutex);
  (*attempt)->connection = std::move(connection);
  (*attempt)->status = statusOf(error, "no message bus");
  (*attempt)->done = true;
  (*attempt)->ended.notify_all();
}

void cancelInner(GCancellable* /*outer*/, gpointer inner) {
  g_cancellable_cancel(static_cast<GCancellable*>(inner));
}

GPointer<GDBusConnection> newConnection(BusThread& thread, const std::string& address, std::chrono::milliseconds limit,
                                        GCancellable* cancellable, Status& status) {
  const auto attempt = std::make_shared<Attempt>();
  Cancellation inner;
  const gulong link =
      cancellable == nullptr ? 0 : g_cancellable_connect(cancellable, G_CALLBACK(cancelInner), inner.get(), nullptr);
  thread.run([&] {
    g_dbus_connection_new_for_address(address.c_str(),
                                      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                                      nullptr, inner.get(), connected, new std::shared_ptr<Attempt>(attempt));
  });
  std::unique_lock lock(attempt->mutex);
  const bool inTime = attempt->ended.wait_for(lock, limit, [&] { return attempt->done; });
  status = inTime ? attempt->status : Status(Status::Code::unavailable, "the message bus does not answer");
  GPointer<GDBusConnection> connection = std::move(attempt->connection);
  lock.unlock();
  if (!inTime) inner.cancel();
  if (link != 0) g_cancellable_disconnect(cancellable, link);
  return connection;
}

}  // namespace

GVariant* textValue(const std::string& text) {
  return g_variant_new_take_string(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

std::string Variant::text(gsize index) const {
  if (value_ == nullptr || g_variant_is_of_type(value_, G_VARIANT_TYPE_TUPLE) == 0) return {};
  if (index >= g_variant_n_children(value_)) return {};
  const Variant child(g_variant_get_child_value(value_, index));
  const GVariantClass kind = g_variant_classify(child.get());
  const bool isText = kind == G_VARIANT_CLASS_STRING || kind == G_VARIANT_CLASS_OBJECT_PATH;
  return isText ? g_variant_get_string(child.get(), nullptr) : "";
}

guint32 Variant::number(gsize index) const {
  if (value_ == nullptr || g_variant_is_of_type(value_, G_VARIANT_TYPE_TUPLE) == 0) return 0;
  if (index >= g_variant_n_children(value_)) return 0;
  const Variant child(g_variant_get_child_value(value_, index));
  return g_variant_is_of_type(child.get(), G_VARIANT_TYPE_UINT32) == 0 ? 0 : g_variant_get_uint32(child.get());
}

// Its own thread holds it too, so that it may be told to end from that thread.
class BusThread::Loop {
 public:
  Loop() : context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)) {}
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;
  ~Loop() {
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
  }

  static void start(const std::shared_ptr<Loop>& loop) {
    // Signals are for the threads that ask for them.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    loop->thread_ = std::thread([loop] {
      g_main_context_push_thread_default(loop->context_);
      g_main_loop_run(loop->loop_);
      while (g_main_context_iteration(loop->context_, FALSE) != 0) {
      }
      g_main_context_pop_thread_default(loop->context_);
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }

  bool isCurrent() const { return thread_.get_id() == std::this_thread::get_id(); }

  // Later than everything that was posted before.
  void end() {
    post([this] { g_main_loop_quit(loop_); });
    if (isCurrent()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  void post(std::function<void()> work) {
    auto* posted = new std::function<void()>(std::move(work));
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
          (*static_cast<std::function<void()>*>(data))();
          return G_SOURCE_REMOVE;
        },
        posted, [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    g_source_attach(source, context_);
    g_source_unref(source);
  }

 private:
  GMainContext* const context_;
  GMainLoop* const loop_;
  std::thread thread_;
};

std::shared_ptr<BusThread> BusThread::shared() {
  static std::mutex mutex;
  static std::weak_ptr<BusThread> known;
  const std::lock_guard lock(mutex);
  std::shared_ptr<BusThread> thread = known.lock();
  if (thread == nullptr) {
    thread.reset(new BusThread);
    known = thread;
  }
  return thread;
}

BusThread::BusThread() : loop_(std::make_shared<Loop>()) {
  Loop::start(loop_);
}

BusThread::~BusThread() {
  loop_->end();
}

bool BusThread::isCurrent() const {
  return loop_->isCurrent();
}

void BusThread::run(const std::function<void()>& work) {
  if (isCurrent()) return work();
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  loop_->post([&] {
    work();
    const std::lock_guard lock(mutex);
    done = true;
    ended.notify_all();
  });
  std::unique_lock lock(mutex);
  ended.wait(lock, [&] { return done; });
}

std::shared_ptr<Bus> Bus::connect(Kind kind, std::chrono::milliseconds limit, GCancellable* cancellable,
                                  Status& status) {
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<Bus>> known;
  GError* error = nullptr;
  gchar* found = g_dbus_address_get_for_bus_sync(kind == Kind::session ? G_BUS_TYPE_SESSION : G_BUS_TYPE_SYSTEM,
                                                 cancellable, &error);
  status = statusOf(error, "no message bus");
  if (found == nullptr) return nullptr;
  const std::string address = found;
  g_free(found);
  const std::lock_guard lock(mutex);
  std::shared_ptr<Bus> bus = known[address].lock();
  if (bus != nullptr && bus->isOpen()) return bus;
  auto thread = BusThread::shared();
  auto connection = newConnection(*thread, address, limit, cancellable, status);
  if (connection == nullptr) return nullptr;
  bus.reset(new Bus(std::move(thread), std::move(connection)));
  known[address] = bus;
  return bus;
}

Bus::~Bus() {
  // Not waiting: the bus may be the one that does not answer.
  g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
}

BusAnswer Bus::call(const BusCall& call, GCancellable* cancellable) const {
  VARNOK_CHECK(!thread_->isCurrent());
  const AnswerType type(call);
  GError* error = nullptr;
  GUnixFDList* descriptors = nullptr;
  GVariant* value = g_dbus_connection_call_with_unix_fd_list_sync(
      connection_.get(), call.destination.c_str(), call.path.c_str(), call.interface.c_str(), call.method.c_str(),
      call.arguments, type.type, call.flags, milliseconds(call.limit), call.descriptors, &descriptors, cancellable,
      &error);
  return answerOf(value, descriptors, error, nameOf(call));
}

void Bus::callAsync(const BusCall& call, GCancellable* cancellable, std::function<void(BusAnswer)> answered) const {
  struct Waiting {
    std::string name;
    std::function<void(BusAnswer)> answered;
  };
  thread_->run([&] {
    const AnswerType type(call);
    g_dbus_connection_call_with_unix_fd_list(
        connection_.get(), call.destination.c_str(), call.path.c_str(), call.interface.c_str(), call.method.c_str(),
        call.arguments, type.type, call.flags, milliseconds(call.limit), call.descriptors, cancellable,
        [](GObject* source, GAsyncResult* result, gpointer data) {
          const std::unique_ptr<Waiting> waiting(static_cast<Waiting*>(data));
          GError* error = nullptr;
          GUnixFDList* descriptors = nullptr;
          GVariant* value = g_dbus_connection_call_with_unix_fd_list_finish(reinterpret_cast<GDBusConnection*>(source),
                                                                            &descriptors, result, &error);
          waiting->answered(answerOf(value, descriptors, error, waiting->name));
        },
        new Waiting{nameOf(call), std::move(answered)});
  });
}

void Bus::send(const BusCall& call) const {
  g_dbus_connection_call(connection_.get(), call.destination.c_str(), call.path.c_str(), call.interface.c_str(),
                         call.method.c_str(), call.arguments, nullptr, call.flags, milliseconds(call.limit), nullptr,
                         nullptr, nullptr);
}

struct Subscription::State : std::enable_shared_from_this<Subscription::State> {
  std::shared_ptr<BusThread> thread;
  GPointer<GDBusConnection> connection;
  guint signal = 0;
  gulong closed = 0;  // 0 when the end of the connection is not told.
  std::function<void(GVariant* arguments)> received;
  std::function<void()> ended;
};

void Subscription::reset() {
  const std::shared_ptr<State> state = std::move(state_);
  if (state == nullptr) return;
  state->thread->run([&state] {
    g_dbus_connection_signal_unsubscribe(state->connection.get(), state->signal);
    if (state->closed != 0) g_signal_handler_disconnect(state->connection.get(), state->closed);
  });
}

Subscription Bus::subscribe(std::shared_ptr<Subscription::State> state, const std::string& sender,
                            const std::string& path, const std::string& interface, const std::string& name,
                            const std::string& firstArgument) const {
  using State = Subscription::State;
  state->thread = thread_;
  state->connection.reset(static_cast<GDBusConnection*>(g_object_ref(connection_.get())));
  thread_->run([&] {
    state->signal = g_dbus_connection_signal_subscribe(
        connection_.get(), orNull(sender), orNull(interface), orNull(name), orNull(path), orNull(firstArgument),
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* arguments,
           gpointer data) {
          const auto kept = static_cast<State*>(data)->shared_from_this();
          kept->received(arguments);
        },
        state.get(), nullptr);
    if (!state->ended) return;
    state->closed = g_signal_connect(connection_.get(), "closed",
                                     G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer data) {
                                       const auto kept = static_cast<State*>(data)->shared_from_this();
                                       kept->ended();
                                     }),
                                     state.get());
  });
  return Subscription(std::move(state));
}

Subscription Bus::onSignal(const std::string& sender, const std::string& path, const std::string& interface,
                           const std::string& name, std::function<void(GVariant* arguments)> received) const {
  auto state = std::make_shared<Subscription::State>();
  state->received = std::move(received);
  return subscribe(std::move(state), sender, path, interface, name, "");
}

Subscription Bus::onOwnerChanged(const std::string& name, std::function<void(bool present)> changed) const {
  auto state = std::make_shared<Subscription::State>();
  state->received = [changed](GVariant* arguments) {
    const gchar* owner = nullptr;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(sss)")) == 0) return;
    g_variant_get(arguments, "(&s&s&s)", nullptr, nullptr, &owner);
    changed(*owner != '\0');
  };
  state->ended = [changed = std::move(changed)] { changed(false); };
  return subscribe(std::move(state), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                   "NameOwnerChanged", name);
}

std::string Bus::uniqueName() const {
  const gchar* name = g_dbus_connection_get_unique_name(connection_.get());
  return name == nullptr ? "" : name;
}

bool Bus::isOpen() const {
  return g_dbus_connection_is_closed(connection_.get()) == 0;
}

}  // namespace varnok
