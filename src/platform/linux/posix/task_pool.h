// TaskPool: threads that share one queue of tasks. MainQueue: the tasks of the
// main thread. Both count their tasks in a WorkCount, which knows when nothing
// is left to do.

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/task_runner.h"

namespace varnok {

// How many tasks are queued or running. Any thread.
class WorkCount {
 public:
  // `whenNone` is called by whichever thread ends the last task.
  explicit WorkCount(std::function<void()> whenNone) : whenNone_(std::move(whenNone)) {}

  void add() { count_.fetch_add(1, std::memory_order_relaxed); }
  void remove(std::size_t tasks) {
    if (tasks > 0 && count_.fetch_sub(tasks, std::memory_order_acq_rel) == tasks) whenNone_();
  }
  bool none() const { return count_.load(std::memory_order_acquire) == 0; }

 private:
  std::atomic<std::size_t> count_ = 0;
  std::function<void()> whenNone_;
};

class TaskPool {
 public:
  // Threads take up to `batch` tasks at a time when many are waiting. More than
  // one is for short tasks only: a task delays those taken with it.
  TaskPool(WorkCount& count, std::size_t threads, std::size_t batch)
      : count_(count), mostThreads_(threads), batch_(batch) {}
  TaskPool(const TaskPool&) = delete;
  TaskPool& operator=(const TaskPool&) = delete;
  ~TaskPool() { stop(); }

  // Any thread. After stop() the task is dropped.
  void post(Task task);

  // Drops what has not begun. Any thread.
  void cancelAll();

  // Waits for the tasks that have begun and drops the others. Not from a task.
  void stop();

  // True when the caller is a thread of this pool.
  bool isCurrent() const;

 private:
  void addThread();
  void work();
  bool awaitTasks(std::unique_lock<std::mutex>& lock);
  std::vector<Task> takeBatch();
  void provideThread(std::unique_lock<std::mutex>& lock);

  WorkCount& count_;
  const std::size_t mostThreads_;
  const std::size_t batch_;

  mutable std::mutex mutex_;
  std::deque<Task> tasks_;
  std::vector<std::thread> threads_;
  std::condition_variable wake_;
  std::size_t sleeping_ = 0;  // Threads that wait for wake_.
  std::size_t woken_ = 0;     // Those of them that have been called.
  bool stopping_ = false;
};

class MainQueue {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  explicit MainQueue(WorkCount& count) : count_(count) {}

  // Any thread. After close() tasks are dropped.
  void post(Task task);
  void postAt(TimePoint when, Task task);

  // Makes wait() return.
  void notify();

  // The thread that runs the tasks only. runOne() is false when there is none.
  bool runOne();
  void wait();

  // True when a delayed task falls due before `when`.
  bool hasDelayedBefore(TimePoint when) const;

  // Drops every task.
  void close();

 private:
  void moveDue();

  WorkCount& count_;
  mutable std::mutex mutex_;
  std::vector<Task> posted_;
  std::multimap<TimePoint, Task> delayed_;
  std::condition_variable wake_;
  bool waiting_ = false;
  bool notified_ = false;
  bool closed_ = false;

  // Of the running thread alone: what it has taken from posted_.
  std::deque<Task> ready_;
};

}  // namespace varnok
