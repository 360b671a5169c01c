#include "platform/linux/eds/card.h"

#include "import/vcard_line.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

bool isFrame(std::string_view line) {
  return startsIgnoringCase(line, "BEGIN:") || startsIgnoringCase(line, "VERSION:") || startsIgnoringCase(line, "END:");
}

// Takes one physical line off the front of `text`.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace

Card::Card(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = takeLine(text);
    if (line.empty()) continue;
    if (isBlank(line.front())) {
      if (!lines_.empty()) lines_.back() += line.substr(1);
    } else if (!isFrame(line)) {
      lines_.emplace_back(line);
    }
  }
}

void Card::insert(std::size_t position, std::string line) {
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(position), std::move(line));
}

void Card::erase(std::size_t position) {
  lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(position));
}

std::optional<std::string_view> Card::valueOf(std::string_view name) const {
  for (const std::string& text : lines_) {
    if (!startsIgnoringCase(text, name)) continue;
    const auto line = splitVCardLine(text);
    if (line && equalsIgnoringCase(line->name, name)) return line->value;
  }
  return std::nullopt;
}

std::string Card::text() const {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  for (const std::string& line : lines_) {
    text += line;
    text += "\r\n";
  }
  return text + "END:VCARD\r\n";
}

std::string cardValue(std::string_view text) {
  std::string copy;
  std::string value;
  for (const char c : validUTF8(text, copy)) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      value += "\\n";
    } else if (c == '\\' || c == ',' || c == ';') {
      value += '\\';
      value += c;
    } else if ((byte >= 0x20 && byte != 0x7F) || c == '\t') {
      value += c;
    }
  }
  return value;
}

}  // namespace varnok
