#include "platform/text_catalog.h"

namespace varnok {
namespace {

struct Placeholder {
  std::size_t length = 0;  // 0: no placeholder here.
  std::size_t number = 0;  // Counting from 1; 0: the next one in order.
};

// What stands at the "%" that `text` begins with.
Placeholder placeholderAt(std::string_view text) {
  if (text.starts_with("%@")) return {2, 0};
  std::size_t end = 1;
  std::size_t number = 0;
  while (end < text.size() && end < 3 && text[end] >= '0' && text[end] <= '9') {
    number = number * 10 + static_cast<std::size_t>(text[end++] - '0');
  }
  if (end > 1 && number > 0 && text.substr(end).starts_with("$@")) return {end + 2, number};
  return {};
}

std::string trimmed(const std::string& text) {
  const std::size_t start = text.find_first_not_of(" \t\n\r");
  if (start == std::string::npos) return {};
  return text.substr(start, text.find_last_not_of(" \t\n\r") - start + 1);
}

std::string filled(std::string_view text, std::initializer_list<std::string_view> arguments) {
  std::string result;
  std::size_t next = 0;
  bool missing = false;
  while (!text.empty()) {
    const std::size_t percent = text.find('%');
    result += text.substr(0, percent);
    if (percent == std::string_view::npos) break;
    text.remove_prefix(percent);
    if (text.starts_with("%%")) {
      result += '%';
      text.remove_prefix(2);
      continue;
    }
    const Placeholder placeholder = placeholderAt(text);
    if (placeholder.length == 0) {
      result += '%';
      text.remove_prefix(1);
      continue;
    }
    const std::size_t index = placeholder.number > 0 ? placeholder.number - 1 : next++;
    if (index < arguments.size()) {
      result += arguments.begin()[index];
    } else {
      missing = true;
    }
    text.remove_prefix(placeholder.length);
  }
  return missing ? trimmed(result) : result;
}

}  // namespace

std::string TextCatalog::text(std::string_view key) const {
  return lookup(key, std::nullopt).value_or(std::string(key));
}

std::string TextCatalog::format(std::string_view key, std::initializer_list<std::string_view> arguments) const {
  return filled(text(key), arguments);
}

std::string TextCatalog::formatCount(std::string_view key, std::int64_t count) const {
  return filled(lookup(key, count).value_or(std::string(key)), {std::to_string(count)});
}

}  // namespace varnok
