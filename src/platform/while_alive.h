#pragma once

#include <memory>
#include <utility>

namespace varnok {

// Callbacks of an object that may be called after it has gone, and then do
// nothing. A member of that object:
//
//   alert.delegate = whileAlive_([this](const AlertView&, int index) { ... });
//
// Called, and the object destroyed, on the main thread.
class WhileAlive {
 public:
  WhileAlive() = default;
  WhileAlive(const WhileAlive&) = delete;
  WhileAlive& operator=(const WhileAlive&) = delete;
  ~WhileAlive() = default;

  template <class Callback>
  auto operator()(Callback callback) const {
    return [callback = std::move(callback), alive = std::weak_ptr(token_)](auto&&... arguments) {
      if (!alive.expired()) callback(std::forward<decltype(arguments)>(arguments)...);
    };
  }

 private:
  std::shared_ptr<bool> token_ = std::make_shared<bool>(true);
};

}  // namespace varnok
