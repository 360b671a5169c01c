#include "platform/linux/curl/dropbox_json.h"

#include <boost/json.hpp>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace varnok {
namespace {

const boost::json::value kNull;

const boost::json::value& find(const boost::json::value& value, std::string_view path) {
  const boost::json::value* found = &value;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    const auto* object = found->if_object();
    found = object == nullptr ? nullptr : object->if_contains({name.data(), name.size()});
    if (found == nullptr) return kNull;
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
  }
  return *found;
}

// One character of valid UTF-8 at `i`, which is moved behind it.
char32_t takeCharacter(std::string_view text, std::size_t& i) {
  const auto lead = static_cast<unsigned char>(text[i++]);
  if (lead < 0x80) return lead;
  char32_t character = lead & (lead < 0xE0 ? 0x1FU : lead < 0xF0 ? 0x0FU : 0x07U);
  while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80)
    character = (character << 6U) | (static_cast<unsigned char>(text[i++]) & 0x3FU);
  return character;
}

}  // namespace

boost::json::value parsedJson(std::string_view text) {
  boost::json::error_code error;
  boost::json::value value = boost::json::parse({text.data(), text.size()}, error);
  return error ? boost::json::value() : value;
}

boost::json::value memberAt(const boost::json::value& value, std::string_view path) {
  return find(value, path);
}

std::string textAt(const boost::json::value& value, std::string_view path) {
  const auto* text = find(value, path).if_string();
  return text == nullptr ? std::string() : std::string(text->data(), text->size());
}

std::int64_t numberAt(const boost::json::value& value, std::string_view path) {
  const auto* number = find(value, path).if_int64();
  return number == nullptr ? 0 : *number;
}

bool flagAt(const boost::json::value& value, std::string_view path) {
  const auto* flag = find(value, path).if_bool();
  return flag != nullptr && *flag;
}

std::string asciiJson(const boost::json::value& value) {
  const std::string text = repairedUTF8(boost::json::serialize(value));
  std::string ascii;
  for (std::size_t i = 0; i < text.size();) {
    const char32_t character = takeCharacter(text, i);
    const auto unit = static_cast<unsigned>(character);
    if (unit < 0x7F) {
      ascii += static_cast<char>(unit);
    } else if (unit < 0x10000) {
      ascii += fmt::format("\\u{:04x}", unit);
    } else {
      ascii += fmt::format("\\u{:04x}\\u{:04x}", 0xD800 + ((unit - 0x10000) >> 10U), 0xDC00 + (unit & 0x3FFU));
    }
  }
  return ascii;
}

}  // namespace varnok
