// DesktopIdleTimer: keeps the session from becoming idle through the desktop
// portal, else the screen saver's interface, else logind.
//
// Threads. The services are spoken to on a queue of its own, one call after
// another, each time for what was wanted last.

#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "platform/developer_log.h"
#include "platform/idle_timer.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopIdleTimer : public IdleTimer {
 public:
  struct Settings {
    // A session becomes idle after minutes: what ends sooner than this needs no
    // service.
    std::chrono::milliseconds patience{1000};
    BusSettings bus{};
  };

  // The references outlive it.
  DesktopIdleTimer(const Settings& settings, TaskRunner& tasks, DeveloperLog& log);
  DesktopIdleTimer(const DesktopIdleTimer&) = delete;
  DesktopIdleTimer& operator=(const DesktopIdleTimer&) = delete;
  ~DesktopIdleTimer() override { stop(); }

  void setIdleTimerDisabled(bool disabled) override;

  // Lets the session become idle, and waits for no service that does not answer.
  void stop();

 private:
  void apply();
  std::unique_ptr<Inhibition> inhibit();
  void lost();
  bool takeLost();

  const Settings settings_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  LazyService<IdleInhibitor> inhibitor_;
  std::mutex mutex_;  // For what follows, but for held_.
  std::condition_variable changed_;
  bool wanted_ = false;
  bool changes_ = false;  // Since the services were last told.
  bool lost_ = false;
  bool stopped_ = false;
  std::unique_ptr<Inhibition> held_;  // The queue's alone.
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace varnok
