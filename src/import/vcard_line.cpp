#include "import/vcard_line.h"

#include <algorithm>

namespace varnok {
namespace {

// Where `separator` stands first outside quotation marks, or npos. A mark that
// is never closed quotes nothing.
std::size_t findUnquoted(std::string_view text, char separator) {
  std::size_t found = text.find(separator);
  std::size_t open = text.substr(0, found).find('"');
  while (open != std::string_view::npos && open < found) {
    const std::size_t close = text.find('"', open + 1);
    if (close == std::string_view::npos) return found;
    found = text.find(separator, std::max(found, close));
    if (found == std::string_view::npos) return found;
    open = text.find('"', close + 1);
  }
  return found;
}

// Takes the text up to `separator` off the front of `rest`.
std::string_view takeUntil(std::string_view& rest, char separator) {
  const std::size_t end = findUnquoted(rest, separator);
  const std::string_view piece = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return piece;
}

std::string_view unquoted(std::string_view text) {
  text = trimmedBlanks(text);
  if (text.starts_with('"')) text.remove_prefix(1);
  if (text.ends_with('"')) text.remove_suffix(1);
  return trimmedBlanks(text);
}

struct TypeWord {
  std::string_view word;
  unsigned types;  // 0 for noise.
};

constexpr unsigned bit(VCardType type) {
  return static_cast<unsigned>(type);
}

constexpr TypeWord kTypeWords[] = {{"HOME", bit(VCardType::home)},
                                   {"WORK", bit(VCardType::work)},
                                   {"CELL", bit(VCardType::cell)},
                                   {"VOICE", 0},
                                   {"PREF", 0},
                                   {"INTERNET", 0},
                                   {"FAX", bit(VCardType::fax)},
                                   {"IPHONE", bit(VCardType::iPhone)},
                                   {"MAIN", bit(VCardType::main)},
                                   {"PAGER", bit(VCardType::pager)},
                                   {"OTHER", bit(VCardType::other)},
                                   {"HOMEPAGE", bit(VCardType::homePage)},
                                   {"MOBILE", bit(VCardType::cell)},
                                   {"HOME-PAGE", bit(VCardType::homePage)}};

constexpr unsigned kPlaces = bit(VCardType::home) | bit(VCardType::work);

void addType(std::string_view word, VCardParameters& result) {
  const auto* known =
      std::ranges::find_if(kTypeWords, [&](const TypeWord& w) { return equalsIgnoringCase(word, w.word); });
  if (known == std::end(kTypeWords)) {
    if (result.otherType.empty()) result.otherType = word;
  } else if ((known->types & kPlaces) == 0 || (result.types & kPlaces) == 0) {
    result.types |= known->types;
  }
}

bool addEncoding(std::string_view word, VCardParameters& result) {
  if (equalsIgnoringCase(word, "QUOTED-PRINTABLE") || equalsIgnoringCase(word, "Q")) {
    result.encoding = VCardEncoding::quotedPrintable;
  } else if (equalsIgnoringCase(word, "BASE64") || equalsIgnoringCase(word, "B")) {
    result.encoding = VCardEncoding::base64;
  } else {
    return false;
  }
  return true;
}

void addParameter(std::string_view parameter, VCardParameters& result) {
  const std::size_t equals = parameter.find('=');
  if (equals == std::string_view::npos) {
    const std::string_view word = unquoted(parameter);
    if (!word.empty() && !addEncoding(word, result)) addType(word, result);
    return;
  }
  const std::string_view name = trimmedBlanks(parameter.substr(0, equals));
  std::string_view text = unquoted(parameter.substr(equals + 1));
  if (equalsIgnoringCase(name, "TYPE")) {
    // The marks may enclose the whole list or each word.
    while (!text.empty())
      addType(unquoted(takeUntil(text, ',')), result);
  } else if (equalsIgnoringCase(name, "CHARSET")) {
    result.charset = text;
  } else if (equalsIgnoringCase(name, "ENCODING")) {
    addEncoding(text, result);
  } else if (equalsIgnoringCase(name, "VALUE")) {
    result.isURI = equalsIgnoringCase(text, "URI") || equalsIgnoringCase(text, "URL");
  } else if (equalsIgnoringCase(name, "X-SERVICE-TYPE") || equalsIgnoringCase(name, "SERVICE-TYPE")) {
    result.serviceType = text;
  } else if (equalsIgnoringCase(name, "X-USER") || equalsIgnoringCase(name, "USERNAME")) {
    result.user = text;
  }
}

}  // namespace

std::optional<VCardLine> splitVCardLine(std::string_view line) {
  const std::size_t colon = findUnquoted(line, ':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string_view head = line.substr(0, colon);
  const std::size_t nameEnd = std::min(head.find(';'), head.size());
  VCardLine result;
  result.name = head.substr(0, nameEnd);
  result.parameters = head.substr(std::min(nameEnd + 1, head.size()));
  result.value = line.substr(colon + 1);
  const std::size_t dot = result.name.find('.');
  if (dot != std::string_view::npos && !startsIgnoringCase(result.name, "X-")) {
    result.group = result.name.substr(0, dot);
    result.name.remove_prefix(dot + 1);
  }
  return result;
}

VCardParameters parseVCardParameters(std::string_view parameters) {
  VCardParameters result;
  while (!parameters.empty())
    addParameter(takeUntil(parameters, ';'), result);
  return result;
}

std::string decodedParameter(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '^' && i + 1 < text.size() ? text[i + 1] : '\0';
    if (next == 'n' || next == '\'' || next == '^') {
      result.push_back(next == 'n' ? '\n' : next == '\'' ? '"' : '^');
      ++i;
    } else {
      result.push_back(text[i]);
    }
  }
  return result;
}

}  // namespace varnok
