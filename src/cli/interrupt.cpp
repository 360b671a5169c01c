#include "cli/interrupt.h"

#include <pthread.h>

#include <csignal>

namespace varnok {
namespace {

// SIGUSR2 ends the watch.
sigset_t watchedSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGUSR2);
  return signals;
}

}  // namespace

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt) {
  const sigset_t signals = watchedSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  thread_ = std::thread([onInterrupt = std::move(onInterrupt), signals] {
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal != SIGUSR2)
      onInterrupt();
  });
}

InterruptWatch::~InterruptWatch() {
  pthread_kill(thread_.native_handle(), SIGUSR2);
  thread_.join();
}

}  // namespace varnok
