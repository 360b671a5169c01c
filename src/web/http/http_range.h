#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace varnok {

// Bytes first ... first + length - 1; length is at least 1.
struct HTTPByteRange {
  std::uint64_t first = 0;
  std::uint64_t length = 0;

  bool operator==(const HTTPByteRange&) const = default;
};

// The ranges that a Range field asks for, of a body of `size` bytes, in its
// order. Empty when none of them can be had. Nothing when the whole body is to be
// sent instead: the field is malformed, or asks for more than the body holds.
std::optional<std::vector<HTTPByteRange>> parseRangeField(std::string_view field, std::uint64_t size);

}  // namespace varnok
