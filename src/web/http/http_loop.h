// HTTPLoop: the threads of a server. One of them leads: it waits for the
// sockets and runs what they are ready for. A handler whose work may take long
// hands the lead over first and then goes on beside the new leader; its thread
// sleeps when it is done.
//
// A single thread thereby serves everything that is quick, without waking
// others, and a slow handler delays its own connection alone. When all threads
// are at long work, the first that is done leads.

#pragma once

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/task_runner.h"

namespace varnok {

class HTTPLoop {
 public:
  explicit HTTPLoop(TaskRunner& tasks);
  HTTPLoop(const HTTPLoop&) = delete;
  HTTPLoop& operator=(const HTTPLoop&) = delete;
  ~HTTPLoop() { stop(); }

  boost::asio::io_context& context() { return context_; }

  void start();

  // From a task of the context: another thread takes the lead. Nothing happens
  // when this one has handed it over already.
  void handOver();

  // Waits for the task under way on each thread. What is queued stays in the
  // context. start() may not follow.
  void stop();

 private:
  void lead(std::size_t thread);
  bool postLead();
  bool isNeededAgain(std::size_t thread);

  TaskRunner& tasks_;
  boost::asio::io_context context_;
  boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<SerialQueue>> threads_;  // Fixed between start() and stop().
  std::vector<std::size_t> idle_;
  bool isLeaderless_ = false;
};

}  // namespace varnok
