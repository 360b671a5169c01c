#pragma once

#include "platform/random.h"

namespace varnok {

// The system's own randomness.
class SystemRandomSource : public RandomSource {
 public:
  std::uint32_t next() override;
};

}  // namespace varnok
