#include "platform/utf8.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace varnok {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

unsigned byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

// True when the bytes of the words are all ASCII.
template <std::size_t words>
bool areASCII(const char* bytes) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::array<std::uint64_t, words> block;
  std::memcpy(block.data(), bytes, sizeof block);
  std::uint64_t bits = 0;
  for (const std::uint64_t word : block)
    bits |= word;
  return (bits & kHighBits) == 0;
}

// How many bytes at the front are ASCII, looked at 32 and then eight at a time.
std::size_t asciiPrefix(std::string_view bytes) {
  std::size_t length = 0;
  while (length + 32 <= bytes.size() && areASCII<4>(bytes.data() + length))
    length += 32;
  while (length + 8 <= bytes.size() && areASCII<1>(bytes.data() + length))
    length += 8;
  while (length < bytes.size() && byteAt(bytes, length) < 0x80)
    ++length;
  return length;
}

struct Sequence {
  std::size_t length;  // Bytes of the sequence, or of the ill-formed part. At least 1.
  bool valid;
};

// The second byte's range is narrower after some lead bytes: it keeps out
// overlong forms, surrogates and numbers above U+10FFFF.
struct Lead {
  std::size_t length;
  unsigned secondFrom;
  unsigned secondTo;
};

Lead leadOf(unsigned byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
  if (byte >= 0xE0 && byte <= 0xEF) return {3, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
  if (byte >= 0xF0 && byte <= 0xF4) return {4, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
  return {0, 0, 0};
}

// The sequence at the front of `bytes`, which begins with a byte above 0x7F.
Sequence sequenceAt(std::string_view bytes) {
  const Lead lead = leadOf(byteAt(bytes, 0));
  for (std::size_t i = 1; i < lead.length; ++i) {
    if (i == bytes.size()) return {i, false};
    const unsigned byte = byteAt(bytes, i);
    const bool fits = i == 1 ? byte >= lead.secondFrom && byte <= lead.secondTo : (byte & 0xC0U) == 0x80U;
    if (!fits) return {i, false};
  }
  return lead.length == 0 ? Sequence{1, false} : Sequence{lead.length, true};
}

}  // namespace

bool isValidUTF8(std::string_view bytes) {
  for (;;) {
    bytes.remove_prefix(asciiPrefix(bytes));
    // What is not ASCII comes in words.
    while (!bytes.empty() && byteAt(bytes, 0) >= 0x80) {
      const Sequence sequence = sequenceAt(bytes);
      if (!sequence.valid) return false;
      bytes.remove_prefix(sequence.length);
    }
    if (bytes.empty()) return true;
  }
}

std::string repairedUTF8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + kReplacement.size());
  while (!bytes.empty()) {
    const std::size_t ascii = asciiPrefix(bytes);
    text.append(bytes.substr(0, ascii));
    bytes.remove_prefix(ascii);
    if (bytes.empty()) break;
    const Sequence sequence = sequenceAt(bytes);
    text.append(sequence.valid ? bytes.substr(0, sequence.length) : kReplacement);
    bytes.remove_prefix(sequence.length);
  }
  return text;
}

std::string_view validUTF8(std::string_view bytes, std::string& copy) {
  if (isValidUTF8(bytes)) return bytes;
  copy = repairedUTF8(bytes);
  return copy;
}

void appendUTF8(std::string& text, char32_t character) {
  const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0U | (character >> 6U));
    append(0x80U | (character & 0x3FU));
  } else if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
    text.append(kReplacement);
  } else if (character < 0x10000) {
    append(0xE0U | (character >> 12U));
    append(0x80U | ((character >> 6U) & 0x3FU));
    append(0x80U | (character & 0x3FU));
  } else {
    append(0xF0U | (character >> 18U));
    append(0x80U | ((character >> 12U) & 0x3FU));
    append(0x80U | ((character >> 6U) & 0x3FU));
    append(0x80U | (character & 0x3FU));
  }
}

}  // namespace varnok
