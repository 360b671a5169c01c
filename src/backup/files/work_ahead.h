// WorkAhead: jobs in order, done ahead by other threads.
//
// What comes out depends on what went in alone: neither on the number of
// threads nor on when they had time. The caller's thread works too when it
// would have to wait, so that a pool that is busy, or never runs anything, only
// costs time.
//
//   WorkAhead<Photo, Reducer> ahead(tasks);   // Reducer: void operator()(Photo&)
//   ahead.push(photo, photo.bytes.size());
//   if (ahead.weight() > kEnough) use(*ahead.take());
//
// A Worker is made for each thread that needs one and used again: it may keep
// what is costly to make. It must not throw.
//
// Lifetime. Work under way goes on after the queue is gone, on its own copy of
// everything it needs; work that has not begun is dropped.
//
// Threads. All calls come from one thread.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/task_runner.h"

namespace varnok {

template <typename Job, typename Worker>
class WorkAhead {
 public:
  // A further thread is called for each `workerShare` of waiting weight, up to
  // `mostWorkers`.
  WorkAhead(TaskRunner& tasks, std::uint64_t workerShare, std::uint64_t mostWorkers = 4)
      : tasks_(tasks), window_(std::make_shared<Window>(workerShare, mostWorkers)) {}
  WorkAhead(const WorkAhead&) = delete;
  WorkAhead& operator=(const WorkAhead&) = delete;
  ~WorkAhead() { window_->abandon(); }

  // `weight` is what the job costs in memory or time, in a unit of the caller's.
  void push(Job job, std::uint64_t weight) {
    ++jobs_;
    weight_ += weight;
    if (window_->push(std::move(job), weight)) {
      tasks_.globalQueue([window = window_] { window->work(); });
    }
  }

  // What is inside: pushed and not taken.
  std::size_t jobs() const { return jobs_; }
  std::uint64_t weight() const { return weight_; }

  // The oldest job, done. takeReady() answers nothing when it is not done yet;
  // take() sees to it that it is. Nothing when there is none.
  std::optional<Job> takeReady() { return takeOldest(/*help=*/false); }
  std::optional<Job> take() { return takeOldest(/*help=*/true); }

 private:
  struct Slot {
    Job job;
    std::uint64_t weight;
    bool done = false;
  };

  // What the queue shares with its workers.
  class Window {
   public:
    Window(std::uint64_t workerShare, std::uint64_t mostWorkers)
        : workerShare_(workerShare), mostWorkers_(mostWorkers) {}

    // True when another worker is wanted, which the caller then calls.
    bool push(Job job, std::uint64_t weight) {
      const std::scoped_lock lock(mutex_);
      waitingWeight_ += weight;
      slots_.push_back({std::move(job), weight});
      const bool wanted = workers_ < mostWorkers_ && waitingWeight_ >= (workers_ + 1) * workerShare_;
      if (wanted) ++workers_;
      return wanted;
    }

    // One worker: works until nothing waits.
    void work() {
      std::unique_lock lock(mutex_);
      workWhile(lock, [] { return true; });
      --workers_;
    }

    // The oldest slot. With `help` this thread sees to it that it is done.
    std::optional<Slot> take(bool help) {
      std::unique_lock lock(mutex_);
      if (slots_.empty()) return std::nullopt;
      const Slot& oldest = slots_.front();
      if (help && !oldest.done) {
        workWhile(lock, [&] { return !oldest.done; });
        finished_.wait(lock, [&] { return oldest.done; });
      }
      if (!oldest.done) return std::nullopt;
      Slot slot = std::move(slots_.front());
      slots_.pop_front();
      --begun_;
      return slot;
    }

    // Nobody wants what waits.
    void abandon() {
      const std::scoped_lock lock(mutex_);
      while (slots_.size() > begun_)
        slots_.pop_back();
      waitingWeight_ = 0;
    }

   private:
    // Does jobs, the oldest first, while some wait and `wanted` answers true.
    // The lock is held but for the work itself.
    template <typename Wanted>
    void workWhile(std::unique_lock<std::mutex>& lock, const Wanted& wanted) {
      std::unique_ptr<Worker> worker = takeWorker();
      while (begun_ < slots_.size() && wanted()) {
        Slot& slot = slots_[begun_++];
        waitingWeight_ -= slot.weight;
        lock.unlock();
        (*worker)(slot.job);
        lock.lock();
        slot.done = true;
        finished_.notify_one();
      }
      idleWorkers_.push_back(std::move(worker));
    }

    std::unique_ptr<Worker> takeWorker() {
      if (idleWorkers_.empty()) return std::make_unique<Worker>();
      std::unique_ptr<Worker> worker = std::move(idleWorkers_.back());
      idleWorkers_.pop_back();
      return worker;
    }

    const std::uint64_t workerShare_;
    const std::uint64_t mostWorkers_;
    std::mutex mutex_;
    std::condition_variable finished_;  // For the queue's thread, which alone waits.
    std::deque<Slot> slots_;            // Oldest first. Those in use stay where they are.
    std::size_t begun_ = 0;             // Slots from the front that somebody works on or has done.
    std::uint64_t waitingWeight_ = 0;   // Of the others.
    std::uint64_t workers_ = 0;         // Called and not finished.
    std::vector<std::unique_ptr<Worker>> idleWorkers_;
  };

  std::optional<Job> takeOldest(bool help) {
    std::optional<Slot> slot = window_->take(help);
    if (!slot) return std::nullopt;
    --jobs_;
    weight_ -= slot->weight;
    return std::move(slot->job);
  }

  TaskRunner& tasks_;
  std::shared_ptr<Window> window_;
  std::size_t jobs_ = 0;
  std::uint64_t weight_ = 0;
};

}  // namespace varnok
