// TaskRunner: the only way to another thread.
//
// Lifetime. Objects that a task captures must outlive it; screens post to the
// main thread and live as long as the application. A task must not throw.

#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace varnok {

using Task = std::function<void()>;

// Runs its tasks one after another in the order they were posted.
class SerialQueue {
 public:
  virtual ~SerialQueue() = default;  // Waits for the task under way; later ones are dropped.

  virtual void post(Task task) = 0;

  // Drops every task that has not begun.
  virtual void cancelAll() = 0;
};

class TaskRunner {
 public:
  virtual ~TaskRunner() = default;

  // The main thread, which alone touches screens. Never waits, also when
  // called on the main thread.
  virtual void mainThread(Task task) = 0;
  virtual void mainThreadAfter(std::chrono::milliseconds delay, Task task) = 0;
  virtual bool isMainThread() const = 0;

  // A shared pool; tasks may run at once and in any order.
  virtual void globalQueue(Task task) = 0;

  // A short task of its own, from any thread. Every one runs; the order is
  // free. Many share the threads of a pool.
  virtual void detached(Task task) = 0;

  // Holds the calling thread. Never on the main thread.
  virtual void sleep(std::chrono::milliseconds time) = 0;

  // A queue with a thread of its own.
  virtual std::unique_ptr<SerialQueue> operationQueue() = 0;

  // The same, for work that goes on until it is told to end, such as a server's.
  // Nobody who waits for all work to be done waits for it.
  virtual std::unique_ptr<SerialQueue> serviceQueue() = 0;
};

}  // namespace varnok
