// RandomSource: chance. Any thread.

#pragma once

#include <cstdint>

namespace varnok {

class RandomSource {
 public:
  virtual ~RandomSource() = default;

  // Any of the 2^32 numbers, each as likely as the others.
  virtual std::uint32_t next() = 0;
};

}  // namespace varnok
