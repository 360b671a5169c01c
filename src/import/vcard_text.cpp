#include "import/vcard_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/utf8.h"

namespace varnok {
namespace {

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> base64Values() {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}

constexpr std::array<std::uint8_t, 256> kBase64Values = base64Values();

unsigned base64Value(char c) {
  return kBase64Values[static_cast<unsigned char>(c)];
}

void putGroup(unsigned bits, char* bytes) {
  bytes[0] = static_cast<char>(bits >> 16U);
  bytes[1] = static_cast<char>(bits >> 8U);
  bytes[2] = static_cast<char>(bits);
}

// Decodes groups of four digits up to the first that is not whole; the number
// of groups.
std::size_t decodeWholeGroups(std::string_view text, char* bytes) {
  std::size_t groups = 0;
  for (; text.size() >= 4; text.remove_prefix(4), bytes += 3, ++groups) {
    const unsigned a = base64Value(text[0]);
    const unsigned b = base64Value(text[1]);
    const unsigned c = base64Value(text[2]);
    const unsigned d = base64Value(text[3]);
    if ((a | b | c | d) > 63) break;
    putGroup(a << 18U | b << 12U | c << 6U | d, bytes);
  }
  return groups;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Replaces `sign` and the two hexadecimal digits after it by their byte.
std::string decodedHex(std::string_view text, char sign) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool room = text[i] == sign && i + 2 < text.size();
    const int high = room ? hexValue(text[i + 1]) : -1;
    const int low = room ? hexValue(text[i + 2]) : -1;
    if (high >= 0 && low >= 0) {
      bytes.push_back(static_cast<char>(high * 16 + low));
      i += 2;
    } else {
      bytes.push_back(text[i]);
    }
  }
  return bytes;
}

bool isUTF8Name(std::string_view charset) {
  constexpr std::string_view kNames[] = {"", "UTF-8", "UTF8", "US-ASCII", "ASCII"};
  return std::ranges::any_of(kNames, [&](std::string_view name) { return equalsIgnoringCase(charset, name); });
}

// string_view::find_first_of() calls a function for each byte.
std::size_t findEither(std::string_view text, char one, char other, std::size_t from = 0) {
  for (std::size_t i = from; i < text.size(); ++i) {
    if (text[i] == one || text[i] == other) return i;
  }
  return std::string_view::npos;
}

// The end of the component at the front: the first semicolon that no
// backslash escapes.
std::size_t componentEnd(std::string_view text) {
  std::size_t i = findEither(text, ';', '\\');
  while (i != std::string_view::npos && text[i] == '\\')
    i = findEither(text, ';', '\\', i + 2);
  return std::min(i, text.size());
}

}  // namespace

std::string decodedQuotedPrintable(std::string_view text) {
  return decodedHex(text, '=');
}

std::string decodedPercents(std::string_view text) {
  return decodedHex(text, '%');
}

std::optional<std::string> decodedBase64(std::string_view text) {
  std::string bytes(text.size() / 4 * 3 + 3, '\0');
  std::size_t length = 0;
  unsigned bits = 0;
  int digits = 0;
  std::size_t i = 0;
  while (i < text.size() && text[i] != '=') {
    if (digits == 0) {
      const std::size_t groups = decodeWholeGroups(text.substr(i), bytes.data() + length);
      i += groups * 4;
      length += groups * 3;
      if (i == text.size() || text[i] == '=') break;
    }
    const unsigned value = base64Value(text[i]);
    if (value == kNoDigit && text[i] != ' ' && text[i] != '\t') return std::nullopt;
    ++i;
    if (value == kNoDigit) continue;
    bits = bits << 6U | value;
    if (++digits < 4) continue;
    putGroup(bits, bytes.data() + length);
    length += 3;
    bits = 0;
    digits = 0;
  }
  if (text.find_first_not_of("= \t", i) != std::string_view::npos || digits == 1) return std::nullopt;
  if (digits >= 2) bytes[length++] = static_cast<char>(digits == 2 ? bits >> 4U : bits >> 10U);
  if (digits == 3) bytes[length++] = static_cast<char>(bits >> 2U);
  bytes.resize(length);
  return bytes;
}

std::string unescaped(std::string_view text) {
  std::size_t special = findEither(text, '\\', '\r');
  if (special == std::string_view::npos) return std::string(text);
  std::string result;
  result.reserve(text.size());
  for (; special != std::string_view::npos; special = findEither(text, '\\', '\r')) {
    result.append(text.substr(0, special));
    const char next = special + 1 < text.size() ? text[special + 1] : '\0';
    std::size_t taken = 2;
    if (text[special] == '\r') {
      result.push_back('\n');
      taken = next == '\n' ? 2 : 1;
    } else if (next == 'n' || next == 'N') {
      result.push_back('\n');
    } else if (next == ',' || next == ';' || next == '\\' || next == ':') {
      result.push_back(next);
    } else {
      result.push_back('\\');
      taken = 1;
    }
    text.remove_prefix(special + taken);
  }
  result.append(text);
  return result;
}

std::string VCardTextDecoder::text(std::string_view value, const VCardParameters& parameters) const {
  std::string scratch;
  return unescaped(decoded(value, parameters, scratch));
}

void VCardTextDecoder::split(std::string_view value, const VCardParameters& parameters,
                             std::vector<std::string>& components) const {
  components.clear();
  // An encoded semicolon is part of its component. In other encodings a
  // backslash may be the second half of a letter, so those are decoded first.
  const bool splitFirst = parameters.encoding == VCardEncoding::quotedPrintable;
  std::string scratch;
  std::string_view rest = splitFirst ? value : decoded(value, parameters, scratch);
  for (;;) {
    const bool isLast = components.size() + 1 == kMaxComponents;
    const std::size_t end = isLast ? rest.size() : componentEnd(rest);
    const std::string_view component = rest.substr(0, end);
    components.push_back(splitFirst ? text(component, parameters) : unescaped(component));
    if (end == rest.size()) return;
    rest.remove_prefix(end + 1);
  }
}

std::string VCardTextDecoder::bareText(std::string_view bytes) const {
  std::string scratch;
  return std::string(decoded(bytes, {}, scratch));
}

std::string_view VCardTextDecoder::decoded(std::string_view value, const VCardParameters& parameters,
                                           std::string& scratch) const {
  const bool encoded = parameters.encoding != VCardEncoding::none;
  if (parameters.encoding == VCardEncoding::quotedPrintable) {
    scratch = decodedQuotedPrintable(value);
    value = scratch;
  } else if (parameters.encoding == VCardEncoding::base64) {
    scratch = decodedBase64(value).value_or(std::string());
    value = scratch;
  }
  const bool otherCharset = !isUTF8Name(parameters.charset) && (encoded || !transcoded_);
  if (!otherCharset && isValidUTF8(value)) return value;
  const std::string encoding(otherCharset ? parameters.charset : std::string_view(fallbackEncoding_));
  std::optional<std::string> text = encoding.empty() ? std::nullopt : codec_.decode(value, encoding);
  scratch = text ? *std::move(text) : repairedUTF8(value);
  return scratch;
}

}  // namespace varnok
