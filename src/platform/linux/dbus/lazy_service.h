#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/dbus/desktop_module.h"

namespace varnok {

// A service of the module, made when it is first used. Any thread, but get()
// loads: worker threads.
template <class Service>
class LazyService {
 public:
  // `maker` is the name of the module's function.
  LazyService(const char* maker, const BusSettings& settings) : maker_(maker), settings_(settings) {}

  // Null when the module cannot be loaded, and after stop().
  std::shared_ptr<Service> get() {
    const std::lock_guard lock(mutex_);
    if (!made_ && !stopped_) {
      made_ = true;
      service_ = makeDesktopService<Service>(maker_, settings_);
    }
    return service_;
  }

  // Ends the calls under way. Who uses the service meanwhile goes on holding it.
  void stop() {
    std::shared_ptr<Service> service;
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
      service = std::exchange(service_, nullptr);
    }
    if (service != nullptr) service->cancel();
  }

 private:
  const char* const maker_;
  const BusSettings settings_;
  std::mutex mutex_;
  bool made_ = false;
  bool stopped_ = false;
  std::shared_ptr<Service> service_;
};

}  // namespace varnok
