#include "platform/linux/posix/thread_task_runner.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace varnok {
namespace {

using namespace std::chrono_literals;

TEST(ThreadTaskRunner, RunsMainTasksInOrderAndDelayedOnesWhenDue) {
  ThreadTaskRunner tasks;
  std::vector<int> order;
  const auto start = std::chrono::steady_clock::now();
  tasks.mainThreadAfter(40ms, [&] { order.push_back(5); });
  tasks.mainThreadAfter(20ms, [&] {
    EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
    order.push_back(4);
  });
  tasks.mainThread([&] {
    order.push_back(1);
    tasks.mainThread([&] { order.push_back(3); });
  });
  tasks.mainThread([&] { order.push_back(2); });
  EXPECT_FALSE(tasks.idle());
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  EXPECT_EQ(order, (std::vector{1, 2, 3, 4, 5}));
}

TEST(ThreadTaskRunner, EveryDetachedTaskRunsAndReachesTheMainThread) {
  constexpr int kTasks = 50'000;
  ThreadTaskRunner tasks;
  std::atomic<int> elsewhere = 0;
  int here = 0;
  for (int i = 0; i < kTasks; ++i) {
    tasks.detached([&] {
      if (!tasks.isMainThread()) ++elsewhere;
      tasks.mainThread([&] { ++here; });
    });
  }
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  EXPECT_EQ(elsewhere, kTasks);
  EXPECT_EQ(here, kTasks);
}

TEST(ThreadTaskRunner, GlobalTasksRunAtOnce) {
  ThreadTaskRunner tasks;
  std::promise<void> second;
  std::atomic<bool> met = false;
  tasks.globalQueue(
      [&, reached = second.get_future().share()] { met = reached.wait_for(60s) == std::future_status::ready; });
  tasks.globalQueue([&] { second.set_value(); });
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  EXPECT_TRUE(met);
}

TEST(ThreadTaskRunner, AWaitingMainThreadIsWokenByTheEndOfWorkAndByQuit) {
  ThreadTaskRunner tasks;
  tasks.globalQueue([] { std::this_thread::sleep_for(5ms); });
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  tasks.globalQueue([&] { tasks.quit(); });
  tasks.run();
  tasks.quit();
  EXPECT_FALSE(tasks.runUntil([] { return false; }));
}

TEST(ThreadTaskRunner, AnInnerRunGoesOnInOrder) {
  ThreadTaskRunner tasks;
  std::vector<int> order;
  tasks.mainThread([&] {
    EXPECT_TRUE(tasks.runUntil([&] { return order.size() == 2; }));
    order.push_back(3);
  });
  tasks.mainThread([&] { order.push_back(1); });
  tasks.mainThread([&] { order.push_back(2); });
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(ThreadTaskRunner, ASerialQueueKeepsTheOrderOnOneThreadOfItsOwn) {
  ThreadTaskRunner tasks;
  const auto queue = tasks.operationQueue();
  std::vector<int> order;
  std::thread::id thread;
  for (int i = 0; i < 1000; ++i) {
    queue->post([&, i] {
      if (i == 0) thread = std::this_thread::get_id();
      EXPECT_EQ(std::this_thread::get_id(), thread);
      order.push_back(i);
    });
  }
  EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  ASSERT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(ThreadTaskRunner, ASerialQueueDropsWhatHasNotBegun) {
  ThreadTaskRunner tasks;
  std::atomic<int> ran = 0;
  std::promise<void> begun;
  std::promise<void> goOn;
  {
    const auto queue = tasks.operationQueue();
    queue->post([&] {
      begun.set_value();
      goOn.get_future().wait();
      ++ran;
    });
    begun.get_future().wait();
    queue->post([&] { ran += 100; });
    queue->cancelAll();
    queue->post([&] { ran += 10'000; });
    tasks.mainThreadAfter(1ms, [&] { goOn.set_value(); });
    tasks.globalQueue([&] { EXPECT_FALSE(tasks.idle()); });
    EXPECT_TRUE(tasks.runUntil([&] { return tasks.idle(); }));
  }
  EXPECT_EQ(ran, 10'001);
}

// Tasks that hold each other alive, and that post when they are dropped.
TEST(ThreadTaskRunner, IsDestroyedWithWorkOutstanding) {
  std::atomic<int> finished = 0;
  std::unique_ptr<SerialQueue> outlives;
  {
    ThreadTaskRunner tasks;
    outlives = tasks.operationQueue();
    outlives->post([&] { ++finished; });
    std::promise<void> begun;
    struct PostsWhenDropped {
      ThreadTaskRunner& tasks;
      ~PostsWhenDropped() {
        tasks.mainThread([] {});
        tasks.detached([] {});
      }
    };
    tasks.globalQueue([&] {
      begun.set_value();
      std::this_thread::sleep_for(2ms);
      tasks.mainThread([&] { finished += 100; });
      tasks.detached([held = std::make_shared<PostsWhenDropped>(tasks)] {});
      ++finished;
    });
    for (int i = 0; i < 1000; ++i)
      tasks.detached([&] { tasks.mainThread([] {}); });
    tasks.mainThreadAfter(1h, [held = std::make_shared<PostsWhenDropped>(tasks)] {});
    EXPECT_FALSE(tasks.idle(2h));
    begun.get_future().wait();
  }
  outlives.reset();
  EXPECT_GE(finished, 1);
  EXPECT_LE(finished, 2);
}

}  // namespace
}  // namespace varnok
