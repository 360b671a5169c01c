#include "ui/qt_task_runner.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QTimer>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace varnok {
namespace {

using Clock = std::chrono::steady_clock;

// A quarter of a frame at 60 a second.
constexpr std::chrono::milliseconds kSlice(4);

const auto kWake = static_cast<QEvent::Type>(QEvent::registerEventType());

}  // namespace

// The queue of the main thread. Posting is for any thread.
class QtTaskRunner::MainEvents : public QObject {
 public:
  MainEvents() {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &MainEvents::runSlice);
  }
  MainEvents(const MainEvents&) = delete;
  MainEvents& operator=(const MainEvents&) = delete;
  ~MainEvents() override {
    std::deque<Task> posted;
    std::multimap<Clock::time_point, Task> delayed;
    {
      const std::scoped_lock lock(mutex_);
      closed_ = true;
      posted.swap(posted_);
      delayed.swap(delayed_);
    }
  }

  void post(Task task) {
    const std::scoped_lock lock(mutex_);
    if (closed_) return;
    posted_.push_back(std::move(task));
    wake();
  }

  void postAt(Clock::time_point when, Task task) {
    const std::scoped_lock lock(mutex_);
    if (closed_) return;
    delayed_.emplace(when, std::move(task));
    wake();
  }

  bool idle(Clock::time_point until) const {
    const std::scoped_lock lock(mutex_);
    return posted_.empty() && !running_ && (delayed_.empty() || delayed_.begin()->first > until);
  }

  bool event(QEvent* event) override {
    if (event->type() != kWake) return QObject::event(event);
    runSlice();
    return true;
  }

 private:
  // With mutex_ held.
  void wake() {
    if (std::exchange(woken_, true)) return;
    QCoreApplication::postEvent(this, new QEvent(kWake));
  }

  void runSlice() {
    const Clock::time_point end = Clock::now() + kSlice;
    std::unique_lock lock(mutex_);
    woken_ = false;
    do {
      moveDue();
      if (posted_.empty()) break;
      Task task = std::move(posted_.front());
      posted_.pop_front();
      running_ = true;
      lock.unlock();
      task();
      task = nullptr;
      lock.lock();
      running_ = false;
    } while (Clock::now() < end);
    if (!posted_.empty()) {
      wake();
    } else if (!delayed_.empty()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(delayed_.begin()->first - Clock::now());
      timer_.start(std::max(left, std::chrono::milliseconds(0)));
    }
  }

  // Delayed tasks that are due come before what was posted meanwhile.
  void moveDue() {
    const auto end = delayed_.upper_bound(Clock::now());
    for (auto due = delayed_.begin(); due != end; due = delayed_.erase(due))
      posted_.push_front(std::move(due->second));
  }

  QTimer timer_;
  mutable std::mutex mutex_;
  std::deque<Task> posted_;
  std::multimap<Clock::time_point, Task> delayed_;
  bool woken_ = false;
  bool running_ = false;
  bool closed_ = false;
};

QtTaskRunner::QtTaskRunner() : main_(std::make_unique<MainEvents>()) {}

QtTaskRunner::~QtTaskRunner() = default;

void QtTaskRunner::mainThread(Task task) {
  main_->post(std::move(task));
}

void QtTaskRunner::mainThreadAfter(std::chrono::milliseconds delay, Task task) {
  main_->postAt(Clock::now() + delay, std::move(task));
}

bool QtTaskRunner::idle(std::chrono::milliseconds reach) const {
  // Main thread first: what it set off is then seen in the pools.
  return main_->idle(Clock::now() + reach) && pools_.idle(reach) && main_->idle(Clock::now() + reach);
}

}  // namespace varnok
