// A TaskRunner that runs what was posted when the test says so, all on the
// test's thread. Delayed tasks wait for advance().
//
//   ManualTaskRunner tasks;
//   screen.onClick_Backup();
//   tasks.runUntilIdle();              // Work, then what it posted to the main thread.
//   tasks.advance(500ms);

#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <utility>
#include <vector>

#include "platform/task_runner.h"

namespace varnok {

class ManualTaskRunner : public TaskRunner {
 public:
  std::deque<Task> mainTasks;
  std::deque<Task> backgroundTasks;
  int detachedCount = 0;
  std::chrono::milliseconds slept{0};  // By all background tasks together.

  void mainThread(Task task) override { mainTasks.push_back(std::move(task)); }
  void mainThreadAfter(std::chrono::milliseconds delay, Task task) override {
    delayed_.emplace_back(now_ + delay, std::move(task));
  }
  bool isMainThread() const override { return !inBackground_; }
  void globalQueue(Task task) override { backgroundTasks.push_back(std::move(task)); }
  void detached(Task task) override {
    ++detachedCount;
    backgroundTasks.push_back(std::move(task));
  }
  void sleep(std::chrono::milliseconds time) override { slept += time; }
  std::unique_ptr<SerialQueue> operationQueue() override { return std::make_unique<Queue>(*this); }
  std::unique_ptr<SerialQueue> serviceQueue() override { return operationQueue(); }

  // Runs the oldest background task; false when there is none.
  bool runOneInBackground() {
    if (backgroundTasks.empty()) return false;
    Task task = std::move(backgroundTasks.front());
    backgroundTasks.pop_front();
    inBackground_ = true;
    task();
    inBackground_ = false;
    return true;
  }

  bool runOneOnMain() {
    if (mainTasks.empty()) return false;
    Task task = std::move(mainTasks.front());
    mainTasks.pop_front();
    task();
    return true;
  }

  void runUntilIdle() {
    while (runOneOnMain() || runOneInBackground()) {
    }
  }

  // Moves the time on; tasks that fall due are run with everything they post.
  void advance(std::chrono::milliseconds by) {
    now_ += by;
    for (;;) {
      const auto due = std::ranges::find_if(delayed_, [&](const auto& entry) { return entry.first <= now_; });
      if (due == delayed_.end()) break;
      mainTasks.push_back(std::move(due->second));
      delayed_.erase(due);
      runUntilIdle();
    }
  }

 private:
  class Queue : public SerialQueue {
   public:
    explicit Queue(ManualTaskRunner& runner) : runner_(runner) {}
    void post(Task task) override {
      runner_.backgroundTasks.push_back([task = std::move(task), alive = alive_] {
        if (*alive) task();
      });
    }
    void cancelAll() override {
      *alive_ = false;
      alive_ = std::make_shared<bool>(true);
    }

   private:
    ManualTaskRunner& runner_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  };

  bool inBackground_ = false;
  std::chrono::milliseconds now_{0};
  std::vector<std::pair<std::chrono::milliseconds, Task>> delayed_;
};

}  // namespace varnok
