#include "import/unicode_stream.h"

#include <algorithm>

#include "platform/utf8.h"

namespace varnok {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kMark = "\xEF\xBB\xBF";

}  // namespace

bool UnicodeStream::recognise(std::string_view& bytes) {
  const std::size_t wanted = std::min(kMark.size() - start_.size(), bytes.size());
  start_.append(bytes.substr(0, wanted));
  bytes.remove_prefix(wanted);
  if (start_.size() < kMark.size()) return false;
  decideOnStart();
  return true;
}

void UnicodeStream::decideOnStart() {
  if (encoding_ != Encoding::unknown) return;
  struct Start {
    std::string_view bytes;
    Encoding encoding;
    std::size_t mark;  // Leading bytes that are no text.
  };
  constexpr Start kStarts[] = {
      {kMark, Encoding::bytes, 3},
      {"\xFF\xFE"sv, Encoding::littleEndian, 2},
      {"\xFE\xFF"sv, Encoding::bigEndian, 2},
      {"B\0"sv, Encoding::littleEndian, 0},
      {"\0B"sv, Encoding::bigEndian, 0},
      {"b\0"sv, Encoding::littleEndian, 0},
      {"\0b"sv, Encoding::bigEndian, 0},
      {""sv, Encoding::bytes, 0},
  };
  const auto* start = std::ranges::find_if(kStarts, [&](const Start& s) { return start_.starts_with(s.bytes); });
  encoding_ = start->encoding;
  start_.erase(0, start->mark);
}

void UnicodeStream::transcode(std::string_view bytes) {
  text_.clear();
  for (const char c : bytes) {
    const int byte = static_cast<unsigned char>(c);
    if (oddByte_ < 0) {
      oddByte_ = byte;
      continue;
    }
    const int unit = encoding_ == Encoding::littleEndian ? byte * 256 + oddByte_ : oddByte_ * 256 + byte;
    oddByte_ = -1;
    addUnit(static_cast<char32_t>(unit));
  }
}

void UnicodeStream::addUnit(char32_t unit) {
  const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
  if (highSurrogate_ != 0) {
    const char32_t high = highSurrogate_;
    highSurrogate_ = 0;
    if (isLow) {
      appendUTF8(text_, 0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
      return;
    }
    appendUTF8(text_, high);
  }
  if (unit >= 0xD800 && unit <= 0xDBFF) {
    highSurrogate_ = unit;
  } else {
    appendUTF8(text_, unit);
  }
}

}  // namespace varnok
