// A RandomSource that counts up from where the test sets it.

#pragma once

#include "platform/random.h"

namespace varnok {

class FakeRandomSource : public RandomSource {
 public:
  std::uint32_t upcoming = 1;
  std::uint32_t next() override { return upcoming++; }
};

}  // namespace varnok
