// ShellDriver: what the one in front of the shell can do, a person or a program,
// in terms of the screen in front. Main thread.

#pragma once

#include <chrono>
#include <string_view>

#include "app/startup/varnok_app_delegate.h"
#include "cli/shell_mail_composer.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/presentation_stack.h"

namespace varnok {

class ShellDriver {
 public:
  // All outlive the driver.
  ShellDriver(VarnokAppDelegate& application, PresentationStack& stack, ShellMailComposer& mail,
              ThreadTaskRunner& tasks)
      : application_(application), stack_(stack), mail_(mail), tasks_(tasks) {}

  // Each answers what stands against it, and then nothing has happened. What it
  // set off on the main thread has run when it returns.
  Status tap(std::string_view control, int segment);
  Status select(const IndexPath& indexPath);
  Status toggle(const IndexPath& indexPath, bool on);
  Status press(const IndexPath& indexPath);
  Status mark(const IndexPath& indexPath, bool on);
  Status remove(const IndexPath& indexPath);
  Status answer(int index);
  Status finishMail(MailComposeResult result);
  Status sendMail(std::vector<std::string> to);

  void becomeActive();
  void openURL(const std::string& url);
  void localNotification(ApplicationState state);

  // Until no work is left on any thread. busy when there still is after `limit`.
  Status wait(std::chrono::duration<double> limit);

  // Runs what waits for the main thread by now.
  void settle();

 private:
  // What keeps the screen in front from being touched, if anything.
  Status reachable() const;
  Status rowAt(const IndexPath& indexPath, TableRow& row) const;
  Status done(bool taken, std::string_view otherwise);

  VarnokAppDelegate& application_;
  PresentationStack& stack_;
  ShellMailComposer& mail_;
  ThreadTaskRunner& tasks_;
};

}  // namespace varnok
