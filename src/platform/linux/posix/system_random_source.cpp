#include "platform/linux/posix/system_random_source.h"

#include <cstdlib>

namespace varnok {

std::uint32_t SystemRandomSource::next() {
  return ::arc4random();
}

}  // namespace varnok
