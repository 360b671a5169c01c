#include "platform/linux/posix/thread_task_runner.h"

#include <atomic>
#include <thread>

#include "platform/check.h"
#include "platform/linux/posix/task_pool.h"

namespace varnok {
namespace {

// Two threads keep up with short tasks; more would only contend for the queue.
constexpr std::size_t kDetachedThreads = 2;
constexpr std::size_t kDetachedBatch = 32;

// Long tasks, most of which wait for a disk or another program.
constexpr std::size_t kGlobalThreads = 8;

}  // namespace

class ThreadTaskRunner::State {
 public:
  const std::thread::id mainThread = std::this_thread::get_id();
  WorkCount count{[this] { main.notify(); }};
  WorkCount services{[] {}};
  MainQueue main{count};
  TaskPool detached{count, kDetachedThreads, kDetachedBatch};
  TaskPool global{count, kGlobalThreads, /*batch=*/1};
  std::atomic<bool> quitting = false;
};

namespace {

// Runs on a thread of its own, made at the first post. `Owner` keeps the count
// alive that the pool refers to.
template <typename Owner>
class ThreadQueue : public SerialQueue {
 public:
  ThreadQueue(std::shared_ptr<Owner> owner, WorkCount& count)
      : owner_(std::move(owner)), pool_(count, /*threads=*/1, /*batch=*/1) {}
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;
  ~ThreadQueue() override {
    VARNOK_CHECK(!pool_.isCurrent());  // A task cannot wait for itself.
    pool_.stop();
  }

  void post(Task task) override { pool_.post(std::move(task)); }
  void cancelAll() override { pool_.cancelAll(); }

 private:
  std::shared_ptr<Owner> owner_;
  TaskPool pool_;
};

}  // namespace

ThreadTaskRunner::ThreadTaskRunner() : state_(std::make_shared<State>()) {}

// The pools first: their tasks may still post to the main thread, whose tasks
// are dropped last, and on this thread, where they would have run.
ThreadTaskRunner::~ThreadTaskRunner() {
  VARNOK_CHECK(isMainThread());
  state_->global.stop();
  state_->detached.stop();
  state_->main.close();
}

void ThreadTaskRunner::mainThread(Task task) {
  state_->main.post(std::move(task));
}

void ThreadTaskRunner::mainThreadAfter(std::chrono::milliseconds delay, Task task) {
  state_->main.postAt(std::chrono::steady_clock::now() + delay, std::move(task));
}

bool ThreadTaskRunner::isMainThread() const {
  return std::this_thread::get_id() == state_->mainThread;
}
void ThreadTaskRunner::globalQueue(Task task) {
  state_->global.post(std::move(task));
}
void ThreadTaskRunner::detached(Task task) {
  state_->detached.post(std::move(task));
}

std::unique_ptr<SerialQueue> ThreadTaskRunner::operationQueue() {
  return std::make_unique<ThreadQueue<State>>(state_, state_->count);
}

std::unique_ptr<SerialQueue> ThreadTaskRunner::serviceQueue() {
  return std::make_unique<ThreadQueue<State>>(state_, state_->services);
}

void ThreadTaskRunner::run() {
  runUntil([] { return false; });
}

void ThreadTaskRunner::quit() {
  state_->quitting = true;
  state_->main.notify();
}

bool ThreadTaskRunner::runUntil(const std::function<bool()>& done) {
  VARNOK_CHECK(isMainThread());
  for (;;) {
    if (done()) return true;
    if (state_->quitting.exchange(false)) return false;
    if (!state_->main.runOne()) state_->main.wait();
  }
}

bool ThreadTaskRunner::idle(std::chrono::milliseconds reach) const {
  return !state_->main.hasDelayedBefore(std::chrono::steady_clock::now() + reach) && state_->count.none();
}

}  // namespace varnok
