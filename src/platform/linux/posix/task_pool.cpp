#include "platform/linux/posix/task_pool.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include "platform/check.h"

namespace varnok {
// TaskPool.

void TaskPool::post(Task task) {
  std::unique_lock lock(mutex_);
  if (stopping_) {
    lock.unlock();  // `task` may post when it is destroyed.
    return;
  }
  count_.add();
  tasks_.push_back(std::move(task));
  provideThread(lock);
}

// Sees to it that somebody takes the task at the front. Leaves `lock` unlocked.
void TaskPool::provideThread(std::unique_lock<std::mutex>& lock) {
  if (tasks_.empty()) {
    lock.unlock();
  } else if (sleeping_ > woken_) {
    ++woken_;
    lock.unlock();
    wake_.notify_one();
  } else {
    // A thread that was called but has not come yet will take a task.
    if (woken_ < tasks_.size() && threads_.size() < mostThreads_) addThread();
    lock.unlock();
  }
}

// A machine that gives no more threads leaves the work to those there are.
void TaskPool::addThread() {
  try {
    threads_.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    VARNOK_CHECK(!threads_.empty());
  }
}

void TaskPool::work() {
  std::unique_lock lock(mutex_);
  while (awaitTasks(lock)) {
    std::vector<Task> batch = takeBatch();
    provideThread(lock);  // For what is left.
    for (Task& task : batch) {
      task();
      task = nullptr;  // What it captured goes before the next one runs.
    }
    count_.remove(batch.size());
    lock.lock();
  }
}

// Waits until there is a task; false when the pool stops.
bool TaskPool::awaitTasks(std::unique_lock<std::mutex>& lock) {
  while (tasks_.empty() && !stopping_) {
    ++sleeping_;
    wake_.wait(lock, [this] { return woken_ > 0 || stopping_; });
    --sleeping_;
    if (woken_ > 0) --woken_;
  }
  return !stopping_;
}

std::vector<Task> TaskPool::takeBatch() {
  const std::size_t share = tasks_.size() / (2 * mostThreads_);
  const std::size_t size = std::clamp<std::size_t>(share, 1, batch_);
  const auto end = tasks_.begin() + static_cast<std::ptrdiff_t>(size);
  std::vector<Task> batch(std::make_move_iterator(tasks_.begin()), std::make_move_iterator(end));
  tasks_.erase(tasks_.begin(), end);
  return batch;
}

void TaskPool::cancelAll() {
  std::deque<Task> dropped;
  {
    const std::scoped_lock lock(mutex_);
    dropped.swap(tasks_);
  }
  const std::size_t size = dropped.size();
  dropped.clear();
  count_.remove(size);
}

void TaskPool::stop() {
  std::vector<std::thread> threads;
  {
    const std::scoped_lock lock(mutex_);
    stopping_ = true;
    threads.swap(threads_);
  }
  wake_.notify_all();
  for (std::thread& thread : threads)
    thread.join();
  cancelAll();
}

bool TaskPool::isCurrent() const {
  const std::scoped_lock lock(mutex_);
  const auto self = std::this_thread::get_id();
  return std::any_of(threads_.begin(), threads_.end(), [&](const std::thread& t) { return t.get_id() == self; });
}

// MainQueue.

void MainQueue::post(Task task) {
  std::unique_lock lock(mutex_);
  if (closed_) {
    lock.unlock();
    return;
  }
  count_.add();
  posted_.push_back(std::move(task));
  if (!std::exchange(waiting_, false)) return;
  lock.unlock();
  wake_.notify_one();
}

void MainQueue::postAt(TimePoint when, Task task) {
  std::unique_lock lock(mutex_);
  if (closed_) {
    lock.unlock();
    return;
  }
  delayed_.emplace(when, std::move(task));
  waiting_ = false;
  lock.unlock();
  wake_.notify_one();
}

void MainQueue::notify() {
  const std::scoped_lock lock(mutex_);
  notified_ = true;
  waiting_ = false;
  wake_.notify_one();
}

bool MainQueue::runOne() {
  if (ready_.empty()) moveDue();
  if (ready_.empty()) return false;
  Task task = std::move(ready_.front());
  ready_.pop_front();
  task();
  task = nullptr;
  count_.remove(1);
  return true;
}

// Delayed tasks that are due come before what was posted meanwhile.
void MainQueue::moveDue() {
  const std::scoped_lock lock(mutex_);
  if (!delayed_.empty()) {
    const auto end = delayed_.upper_bound(std::chrono::steady_clock::now());
    for (auto due = delayed_.begin(); due != end; due = delayed_.erase(due)) {
      count_.add();
      ready_.push_back(std::move(due->second));
    }
  }
  std::move(posted_.begin(), posted_.end(), std::back_inserter(ready_));
  posted_.clear();
}

void MainQueue::wait() {
  std::unique_lock lock(mutex_);
  waiting_ = posted_.empty() && !notified_;
  const auto woken = [this] { return !waiting_; };
  if (waiting_ && delayed_.empty()) wake_.wait(lock, woken);
  if (waiting_ && !delayed_.empty()) wake_.wait_until(lock, delayed_.begin()->first, woken);
  waiting_ = false;
  notified_ = false;
}

bool MainQueue::hasDelayedBefore(TimePoint when) const {
  const std::scoped_lock lock(mutex_);
  return !delayed_.empty() && delayed_.begin()->first < when;
}

void MainQueue::close() {
  std::vector<Task> posted;
  std::multimap<TimePoint, Task> delayed;
  {
    const std::scoped_lock lock(mutex_);
    closed_ = true;
    posted.swap(posted_);
    delayed.swap(delayed_);
  }
  const std::size_t size = ready_.size() + posted.size();
  ready_.clear();
  posted.clear();
  delayed.clear();
  count_.remove(size);
}

}  // namespace varnok
