// SingleInstance: the application runs once in a session, and others reach it by
// org.freedesktop.Application: the desktop, which brings it to the front and
// gives it addresses, and a reminder that was opened. For front ends with
// windows; only where the application's usual places are used, since all homes
// would share the one name.
//
//   SingleInstance instance(tasks, log, [&](const ApplicationRequest& request) {
//     switch (request.kind) {
//       case ApplicationRequest::Kind::activate: break;
//       case ApplicationRequest::Kind::open:
//         for (const std::string& uri : request.uris) delegate.openURL(uri);
//         break;
//       case ApplicationRequest::Kind::action:
//         if (request.action == kReminderAction) delegate.didReceiveLocalNotification(ApplicationState::inactive);
//     }
//     ...the window comes to the front, by request.activationToken where the desktop wants one...
//   });
//   if (instance.start(requestOfTheCommandLine) == SingleInstance::Role::second) return 0;
//   ...only now the platform, the delegate and the windows...
//   options.localNotification = requestOfTheCommandLine is the reminder's action;
//   delegate.didFinishLaunchingWithOptions(options);
//
// The command line is `varnok [--home DIR] [--reminder] [ADDRESS...]`. A program
// that the bus started has no arguments; what it was started for comes as its
// first request.
//
// Lifetime. The references outlive it; made and ended on the main thread. Its
// end gives the name back, and nothing is received after it. Threads. Main
// thread; requests come there by the task runner, in their order, and not
// before its loop runs.

#pragma once

#include <functional>
#include <memory>

#include "platform/developer_log.h"
#include "platform/linux/dbus/application_bus.h"
#include "platform/task_runner.h"

namespace varnok {

class SingleInstance {
 public:
  enum class Role {
    first,   // Has the name; others' requests come from now on.
    second,  // Another has it and took the request: nothing is left to do.
    alone,   // No bus, or nobody there answered; no requests come.
  };

  SingleInstance(TaskRunner& tasks, DeveloperLog& log, std::function<void(const ApplicationRequest&)> received);
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;
  ~SingleInstance();

  // Once. `request` is what this program was started for; where its activation
  // token is empty, that of the environment is taken. Blocks for milliseconds;
  // with a bus that does not answer, for three seconds a call.
  Role start(ApplicationRequest request);

 private:
  struct Receiver;

  TaskRunner& tasks_;
  DeveloperLog& log_;
  std::shared_ptr<Receiver> receiver_;
  std::unique_ptr<ApplicationBus> bus_;
};

}  // namespace varnok
