// The parts of one logical line of a vCard.
//
//   line   := [group "."] name (";" parameter)* ":" value
//   parameter := name "=" text ("," text)*  |  a bare word, as in version 2.1
//
// Nothing is decoded or copied here: every part points into the line.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varnok {

// These run several times for each line, hence inline.

constexpr bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// Letters of ASCII only.
constexpr char upperCase(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool equalsIgnoringCase(std::string_view text, std::string_view other) {
  if (text.size() != other.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (upperCase(text[i]) != upperCase(other[i])) return false;
  }
  return true;
}

constexpr bool startsIgnoringCase(std::string_view text, std::string_view start) {
  return equalsIgnoringCase(text.substr(0, start.size()), start);
}

constexpr std::string_view trimmedBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.front()))
    text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

struct VCardLine {
  std::string_view group;  // "item1"; empty without one.
  std::string_view name;
  std::string_view parameters;  // Between the name and the colon.
  std::string_view value;
};

// Nothing for a line without a colon. A name that begins with X- has no group
// before it: what our own writer makes of a message service may hold a dot.
std::optional<VCardLine> splitVCardLine(std::string_view line);

enum class VCardEncoding { none, quotedPrintable, base64 };

// The types of which labels are made, as bits.
enum class VCardType : unsigned {
  home = 1,
  work = 2,
  cell = 4,
  main = 8,
  pager = 16,
  fax = 32,
  iPhone = 64,
  other = 128,
  homePage = 256,
};

struct VCardParameters {
  VCardEncoding encoding = VCardEncoding::none;
  std::string_view charset;      // Empty when none is named.
  bool isURI = false;            // VALUE=uri, or url.
  unsigned types = 0;            // VCardType bits. Of home and work only the one that came first.
  std::string_view otherType;    // The first TYPE that is none of those and no noise such as PREF.
  std::string_view serviceType;  // X-SERVICE-TYPE, undecoded.
  std::string_view user;         // X-USER, undecoded.
};

VCardParameters parseVCardParameters(std::string_view parameters);

// A parameter's text: ^n is a line break, ^' a quotation mark, ^^ a caret.
std::string decodedParameter(std::string_view text);

}  // namespace varnok
