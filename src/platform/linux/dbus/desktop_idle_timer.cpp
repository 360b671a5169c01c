#include "platform/linux/dbus/desktop_idle_timer.h"

#include <array>
#include <string>
#include <utility>

#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

struct NamedWay {
  IdleInhibitor::Way way;
  const char* name;
};

constexpr std::array kWays = {NamedWay{IdleInhibitor::Way::portal, "the portal"},
                              NamedWay{IdleInhibitor::Way::screenSaver, "the screen saver"},
                              NamedWay{IdleInhibitor::Way::logind, "logind"}};

bool hasBus(IdleInhibitor::Way way) {
  return way == IdleInhibitor::Way::logind ? hasSystemBus() : hasSessionBus();
}

}  // namespace

DesktopIdleTimer::DesktopIdleTimer(const Settings& settings, TaskRunner& tasks, DeveloperLog& log)
    : settings_(settings), tasks_(tasks), log_(log), inhibitor_("varnokMakeIdleInhibitor", settings.bus) {}

void DesktopIdleTimer::setIdleTimerDisabled(bool disabled) {
  const std::lock_guard lock(mutex_);
  if (wanted_ == disabled || stopped_) return;
  wanted_ = disabled;
  changes_ = true;
  log_.write(disabled ? "Idle timer off" : "Idle timer on");
  if (!hasSessionBus() && !hasSystemBus()) return;
  changed_.notify_all();
  if (queue_ == nullptr) queue_ = tasks_.serviceQueue();
  queue_->post([this] { apply(); });
}

void DesktopIdleTimer::apply() {
  if (takeLost()) held_.reset();
  bool wanted = false;
  {
    std::unique_lock lock(mutex_);
    if (!changes_) return;  // An earlier task did what this one is for.
    if (held_ == nullptr) changed_.wait_for(lock, settings_.patience, [this] { return stopped_ || !wanted_; });
    if (stopped_) return;
    changes_ = false;
    wanted = wanted_;
  }
  if (wanted == (held_ != nullptr)) return;
  if (wanted) {
    held_ = inhibit();
  } else {
    held_.reset();
  }
}

bool DesktopIdleTimer::takeLost() {
  const std::lock_guard lock(mutex_);
  return std::exchange(lost_, false);
}

std::unique_ptr<Inhibition> DesktopIdleTimer::inhibit() {
  for (const NamedWay& way : kWays) {
    const auto inhibitor = hasBus(way.way) ? inhibitor_.get() : nullptr;
    if (inhibitor == nullptr) continue;
    Status status;
    auto inhibition = inhibitor->inhibit(
        way.way, [this] { lost(); }, status);
    if (inhibition != nullptr) {
      log_.write(std::string("The session is kept awake by ") + way.name);
      return inhibition;
    }
    if (status.code() == Status::Code::cancelled) return nullptr;
    log_.write(std::string("Not kept awake by ") + way.name + ": " + status.message());
  }
  log_.write("Nothing here keeps the session awake");
  return nullptr;
}

void DesktopIdleTimer::lost() {
  const std::lock_guard lock(mutex_);
  if (stopped_) return;
  lost_ = true;
  changes_ = true;
  log_.write("What kept the session awake went away");
  queue_->post([this] { apply(); });
}

void DesktopIdleTimer::stop() {
  std::unique_ptr<SerialQueue> queue;
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
    queue = std::move(queue_);
  }
  inhibitor_.stop();
  queue.reset();  // Waits for the task under way.
  held_.reset();
}

}  // namespace varnok
