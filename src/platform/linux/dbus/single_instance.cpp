#include "platform/linux/dbus/single_instance.h"

#include <cstdlib>

#include "platform/linux/dbus/desktop_module.h"
#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

// Each desktop sets one of them for the programs that it starts.
std::string tokenOfEnvironment() {
  for (const char* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
    if (const char* token = std::getenv(name); token != nullptr && *token != '\0') return token;
  }
  return {};
}

}  // namespace

// Main thread only; what is posted there holds it.
struct SingleInstance::Receiver {
  std::function<void(const ApplicationRequest&)> received;  // Empty once the instance has ended.
};

SingleInstance::SingleInstance(TaskRunner& tasks, DeveloperLog& log,
                               std::function<void(const ApplicationRequest&)> received)
    : tasks_(tasks), log_(log), receiver_(std::make_shared<Receiver>(Receiver{std::move(received)})) {}

SingleInstance::~SingleInstance() {
  bus_.reset();
  receiver_->received = nullptr;
}

SingleInstance::Role SingleInstance::start(ApplicationRequest request) {
  if (hasSessionBus()) bus_ = makeDesktopService<ApplicationBus>("varnokMakeApplicationBus", BusSettings());
  if (bus_ == nullptr) {
    log_.write("application: no session bus, so nobody asks whether it runs already");
    return Role::alone;
  }
  Status status = bus_->own(
      [receiver = receiver_, &tasks = tasks_](const ApplicationRequest& asked) {
        tasks.mainThread([receiver, asked] {
          if (receiver->received) receiver->received(asked);
        });
      },
      [&log = log_] { log.write("application: the session bus has gone, no more requests come"); });
  if (status.ok()) return Role::first;
  if (status.code() == Status::Code::busy) {
    if (request.activationToken.empty()) request.activationToken = tokenOfEnvironment();
    status = bus_->send(request, /*start=*/false);
    if (status.ok()) return Role::second;
  }
  log_.write("application: runs on its own: " + status.message());
  bus_.reset();
  return Role::alone;
}

}  // namespace varnok
