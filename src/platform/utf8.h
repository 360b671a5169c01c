// UTF-8 from strangers: checked, and repaired where it is not valid.

#pragma once

#include <string>
#include <string_view>

namespace varnok {

bool isValidUTF8(std::string_view bytes);

// `bytes` with U+FFFD in the place of each maximal ill-formed part.
std::string repairedUTF8(std::string_view bytes);

// `bytes` itself when it is valid; else a view of `copy`, which then holds it
// repaired.
std::string_view validUTF8(std::string_view bytes, std::string& copy);

// A surrogate or a number outside Unicode is appended as U+FFFD.
void appendUTF8(std::string& text, char32_t character);

}  // namespace varnok
