// QtTaskRunner: TaskRunner whose main thread is the one of Qt's event loop.
//
// Tasks for the main thread run in slices of a few milliseconds, so that what
// was touched and what is to be drawn never wait long for them.
//
// Lifetime. Made and destroyed on the main thread, after QGuiApplication and
// before it goes. Otherwise as ThreadTaskRunner.

#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/posix/thread_task_runner.h"

namespace varnok {

class QtTaskRunner : public TaskRunner {
 public:
  QtTaskRunner();
  QtTaskRunner(const QtTaskRunner&) = delete;
  QtTaskRunner& operator=(const QtTaskRunner&) = delete;
  ~QtTaskRunner() override;

  void mainThread(Task task) override;
  void mainThreadAfter(std::chrono::milliseconds delay, Task task) override;
  bool isMainThread() const override { return pools_.isMainThread(); }
  void globalQueue(Task task) override { pools_.globalQueue(std::move(task)); }
  void detached(Task task) override { pools_.detached(std::move(task)); }
  void sleep(std::chrono::milliseconds time) override { pools_.sleep(time); }
  std::unique_ptr<SerialQueue> operationQueue() override { return pools_.operationQueue(); }
  std::unique_ptr<SerialQueue> serviceQueue() override { return pools_.serviceQueue(); }

  // Nothing is queued or running on any thread, and no delayed task falls due
  // within `reach`.
  bool idle(std::chrono::milliseconds reach = std::chrono::seconds(1)) const;

 private:
  class MainEvents;
  std::unique_ptr<MainEvents> main_;
  ThreadTaskRunner pools_;  // Last: stops first, its tasks may still post to the main thread.
};

}  // namespace varnok
