#include "platform/linux/eds/eds_calls.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace varnok {
namespace {

Status::Code codeOf(const GError* error) {
  const auto is = [&](GQuark domain, int code) { return g_error_matches(error, domain, code) != FALSE; };
  if (is(E_CLIENT_ERROR, E_CLIENT_ERROR_PERMISSION_DENIED) ||
      is(E_CLIENT_ERROR, E_CLIENT_ERROR_AUTHENTICATION_FAILED) ||
      is(E_CLIENT_ERROR, E_CLIENT_ERROR_AUTHENTICATION_REQUIRED) || is(G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) ||
      is(G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED) || is(G_IO_ERROR, G_IO_ERROR_PERMISSION_DENIED)) {
    return Status::Code::accessDenied;
  }
  if (is(E_BOOK_CLIENT_ERROR, E_BOOK_CLIENT_ERROR_NO_SPACE)) return Status::Code::noSpace;
  if (is(E_CLIENT_ERROR, E_CLIENT_ERROR_BUSY)) return Status::Code::busy;
  if (is(E_CLIENT_ERROR, E_CLIENT_ERROR_REPOSITORY_OFFLINE) || is(E_CLIENT_ERROR, E_CLIENT_ERROR_OFFLINE_UNAVAILABLE) ||
      is(E_CLIENT_ERROR, E_CLIENT_ERROR_NOT_OPENED) || is(E_CLIENT_ERROR, E_CLIENT_ERROR_SOURCE_NOT_LOADED) ||
      is(E_CLIENT_ERROR, E_CLIENT_ERROR_DBUS_ERROR)) {
    return Status::Code::unavailable;
  }
  const bool isBus = error->domain == G_DBUS_ERROR || error->domain == G_IO_ERROR;
  return isBus ? Status::Code::unavailable : Status::Code::inputOutput;
}

Status statusOf(GError* error) {
  if (error == nullptr) return {};
  g_dbus_error_strip_remote_error(error);
  std::string message = error->message == nullptr ? "no reason given" : error->message;
  for (char& c : message)
    if (c == '\n' || c == '\r') c = ' ';
  return {codeOf(error), std::move(message)};
}

// One call and whoever waits for it; the last of both ends it.
class Call {
 public:
  Call() : cancellable_(owned(g_cancellable_new())) {}
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;
  ~Call() { g_clear_error(&error_); }

  void run(const std::function<void(GCancellable*, GError**)>& call) {
    call(cancellable_.get(), &error_);
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
    ended_.notify_all();
  }

  Status await(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    const auto ended = [this] { return hasEnded_; };
    if (ended_.wait_for(lock, limit, ended)) return statusOf(error_);
    lock.unlock();
    g_cancellable_cancel(cancellable_.get());
    lock.lock();
    // It may have come to its end at the last moment.
    if (ended_.wait_for(lock, kGrace, ended) && error_ == nullptr) return {};
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit).count();
    return {Status::Code::unavailable,
            "the address book service did not answer within " + std::to_string(seconds) + " seconds"};
  }

 private:
  static constexpr std::chrono::milliseconds kGrace{500};

  std::shared_ptr<GCancellable> cancellable_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  GError* error_ = nullptr;
};

}  // namespace

Status callWithin(std::chrono::milliseconds limit, std::function<void(GCancellable*, GError**)> call) {
  const auto shared = std::make_shared<Call>();
  std::thread([shared, call = std::move(call)] { shared->run(call); }).detach();
  return shared->await(limit);
}

}  // namespace varnok
