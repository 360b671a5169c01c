#pragma once

#include <string_view>

namespace varnok {

// Asks on stderr and reads one line of stdin. Only "y" and "yes" are yes.
bool confirmed(std::string_view question);

}  // namespace varnok
