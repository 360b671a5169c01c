#include "platform/utf8.h"

#include <cstdint>
#include <cstring>

namespace varnok {
namespace {

// The length of the well-formed sequence that `bytes` begins with, 0 for none.
std::size_t sequenceLength(std::string_view bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const auto follows = [&](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
    return i < bytes.size() && byte(i) >= low && byte(i) <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const unsigned low = first == 0xE0 ? 0xA0 : 0x80;   // Shorter forms exist below.
    const unsigned high = first == 0xED ? 0x9F : 0xBF;  // Surrogates lie above.
    return follows(1, low, high) && follows(2) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const unsigned low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
    return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
  }
  return 0;
}

// The bytes before the first malformed sequence. Eight ASCII bytes at a time.
std::size_t validPrefix(std::string_view text) {
  std::size_t offset = 0;
  while (offset < text.size()) {
    std::uint64_t block = 0;
    if (offset + sizeof block <= text.size()) {
      std::memcpy(&block, text.data() + offset, sizeof block);
      if ((block & 0x8080808080808080U) == 0) {
        offset += sizeof block;
        continue;
      }
    }
    const std::size_t length = sequenceLength(text.substr(offset));
    if (length == 0) break;
    offset += length;
  }
  return offset;
}

}  // namespace

std::string_view validUTF8(std::string_view text, std::string& copy) {
  std::size_t valid = validPrefix(text);
  if (valid == text.size()) return text;
  copy.clear();
  while (valid < text.size()) {
    copy += text.substr(0, valid);
    copy += "\uFFFD";
    text.remove_prefix(valid + 1);
    // What was left of a longer sequence belongs to the same fault.
    while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0U) == 0x80)
      text.remove_prefix(1);
    valid = validPrefix(text);
  }
  copy += text;
  return copy;
}

}  // namespace varnok
