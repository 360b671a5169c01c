#pragma once

#include <string>

namespace varnok {

// The application's page in the store that it came from. Main thread.
class StoreReview {
 public:
  virtual ~StoreReview() = default;

  // Asks for a rating. Whether anything is shown is the platform's decision.
  virtual void requestReview() = 0;

  virtual void openURL(const std::string& url) = 0;
};

}  // namespace varnok
