#pragma once

#include <string>
#include <string_view>

namespace varnok {

// `text` itself when it is well-formed UTF-8; else a view of `copy`, which then
// holds it with every malformed sequence replaced by U+FFFD. Fast on ASCII.
std::string_view validUTF8(std::string_view text, std::string& copy);

}  // namespace varnok
