#pragma once

#include <string_view>

namespace varnok {

// `text` without the blanks and line breaks of any script at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace varnok
