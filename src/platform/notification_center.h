// NotificationCenter: tells whoever asked that something named has happened.
// Main thread.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnok {

class NotificationCenter {
 public:
  // Observes until it is destroyed.
  using Observation = std::shared_ptr<void>;

  [[nodiscard]] Observation observe(std::string_view name, std::function<void()> observer) {
    auto entry = std::make_shared<Entry>(Entry{std::string(name), std::move(observer)});
    entries_.push_back(entry);
    return entry;
  }

  void post(std::string_view name) {
    std::erase_if(entries_, [](const auto& entry) { return entry.expired(); });
    for (const auto& entry : std::vector(entries_)) {
      if (auto alive = entry.lock(); alive && alive->name == name) alive->observer();
    }
  }

 private:
  struct Entry {
    std::string name;
    std::function<void()> observer;
  };
  std::vector<std::weak_ptr<Entry>> entries_;
};

}  // namespace varnok
