#include "web/http/http_loop.h"

#include <pthread.h>

#include <boost/asio/post.hpp>
#include <csignal>
#include <utility>

namespace varnok {
namespace {

// Long work waits for a disk or for the contact store, so there is no use in
// more. A thread is made when it is first needed.
constexpr std::size_t kThreads = 16;

// The loop that this thread leads.
thread_local const HTTPLoop* leads = nullptr;

// Writing to a connection that the client has closed must answer an error. Not
// every call takes a flag for that, and the process may want the signal elsewhere.
void blockBrokenPipeSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

HTTPLoop::HTTPLoop(TaskRunner& tasks) : tasks_(tasks), work_(context_.get_executor()) {}

void HTTPLoop::start() {
  const std::scoped_lock lock(mutex_);
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads_.push_back(tasks_.serviceQueue());
    idle_.push_back(kThreads - 1 - i);
  }
  postLead();
}

// With mutex_ held.
bool HTTPLoop::postLead() {
  if (idle_.empty()) return false;
  const std::size_t thread = idle_.back();
  idle_.pop_back();
  threads_[thread]->post([this, thread] { lead(thread); });
  return true;
}

void HTTPLoop::lead(std::size_t thread) {
  blockBrokenPipeSignal();
  do {
    leads = this;
    while (leads == this && context_.run_one() > 0) {
    }
    leads = nullptr;
    // The leader may sleep while there is something left of what this thread queued.
    boost::asio::post(context_, [] {});
  } while (isNeededAgain(thread));
}

bool HTTPLoop::isNeededAgain(std::size_t thread) {
  const std::scoped_lock lock(mutex_);
  if (std::exchange(isLeaderless_, false)) return true;
  idle_.push_back(thread);
  return false;
}

void HTTPLoop::handOver() {
  if (leads != this) return;
  leads = nullptr;
  const std::scoped_lock lock(mutex_);
  isLeaderless_ = !postLead();
}

void HTTPLoop::stop() {
  context_.stop();
  std::vector<std::unique_ptr<SerialQueue>> ending;
  {
    // From here on the lead is not handed over.
    const std::scoped_lock lock(mutex_);
    ending.swap(threads_);
    idle_.clear();
  }
  ending.clear();  // Waits.
}

}  // namespace varnok
