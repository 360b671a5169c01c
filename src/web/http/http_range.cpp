#include "web/http/http_range.h"

#include <algorithm>
#include <charconv>

#include "web/http/http_request.h"

namespace varnok {
namespace {

// What a real client asks for at once is far below.
constexpr std::size_t kMostRanges = 32;

// A number too large for 64 bits lies behind every body.
std::optional<std::uint64_t> parseNumber(std::string_view text) {
  std::uint64_t number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  if (text.empty() || end != last || error == std::errc::invalid_argument) return std::nullopt;
  return error == std::errc() ? number : UINT64_MAX;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// "first-last", "first-" or "-count". Nothing when malformed; a length of 0 when
// there are no such bytes.
std::optional<HTTPByteRange> parseRange(std::string_view text, std::uint64_t size) {
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return std::nullopt;
  const std::string_view before = text.substr(0, dash);
  const std::string_view after = text.substr(dash + 1);
  if (before.empty()) {
    const auto count = parseNumber(after);
    if (!count) return std::nullopt;
    const std::uint64_t length = std::min(*count, size);
    return HTTPByteRange{size - length, length};
  }
  const auto first = parseNumber(before);
  const auto last = after.empty() ? UINT64_MAX : parseNumber(after);
  if (!first || !last || *first > *last) return std::nullopt;
  if (*first >= size) return HTTPByteRange{};
  return HTTPByteRange{*first, std::min(*last, size - 1) - *first + 1};
}

}  // namespace

std::optional<std::vector<HTTPByteRange>> parseRangeField(std::string_view field, std::uint64_t size) {
  constexpr std::string_view kUnit = "bytes=";
  if (!equalsIgnoringCase(field.substr(0, kUnit.size()), kUnit)) return std::nullopt;
  field.remove_prefix(kUnit.size());
  std::vector<HTTPByteRange> ranges;
  std::uint64_t total = 0;
  for (std::size_t count = 0; !field.empty(); ++count) {
    const std::size_t comma = field.find(',');
    const auto range = parseRange(trimmed(field.substr(0, comma)), size);
    if (!range || count == kMostRanges) return std::nullopt;
    field.remove_prefix(comma == std::string_view::npos ? field.size() : comma + 1);
    if (range->length == 0) continue;
    if (range->length > size - total) return std::nullopt;
    total += range->length;
    ranges.push_back(*range);
  }
  return ranges;
}

}  // namespace varnok
