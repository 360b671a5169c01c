// ThreadTaskRunner: TaskRunner with the standard library's threads, for programs
// without a toolkit's event loop.
//
//   ThreadTaskRunner tasks;             // This thread is the main thread.
//   ...post, directly or through the screens...
//   tasks.runUntil([&] { return tasks.idle(); });
//
// Lifetime. Made and destroyed on the main thread. The destructor waits for the
// tasks that have begun and drops the others, also what they post; serial
// queues may outlive it, their tasks then have no main thread to post to.
//
// Threads are made when first needed. A thread that has run out of work looks
// again a few times before it sleeps, so that a steady stream of short tasks
// does not pay for waking it each time.

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

#include "platform/task_runner.h"

namespace varnok {

class ThreadTaskRunner : public TaskRunner {
 public:
  ThreadTaskRunner();
  ThreadTaskRunner(const ThreadTaskRunner&) = delete;
  ThreadTaskRunner& operator=(const ThreadTaskRunner&) = delete;
  ~ThreadTaskRunner() override;

  void mainThread(Task task) override;
  void mainThreadAfter(std::chrono::milliseconds delay, Task task) override;
  bool isMainThread() const final;
  void globalQueue(Task task) override;
  void sleep(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }
  void detached(Task task) override;
  std::unique_ptr<SerialQueue> operationQueue() override;
  std::unique_ptr<SerialQueue> serviceQueue() override;

  // Main thread only; also from within a task. Runs main-thread tasks until
  // quit() is called.
  void run();

  // Ends the innermost run() or runUntil() after the task under way, or the next
  // one at once when none is running. Any thread; not from a signal handler.
  void quit();

  // Main thread only. Runs main-thread tasks until `done` answers true, which is
  // asked first, after each task, and when the last piece of work anywhere has
  // ended. False when quit() was called before.
  bool runUntil(const std::function<bool()>& done);

  // Nothing is queued or running on any thread, and no delayed task falls due
  // within `reach`. A task that asks counts itself.
  bool idle(std::chrono::milliseconds reach = std::chrono::seconds(5)) const;

 private:
  class State;
  std::shared_ptr<State> state_;  // Shared with the serial queues.
};

}  // namespace varnok
