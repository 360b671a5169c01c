// A person as text that can be compared and read.
//
//   FirstName: Ada
//   Phone: [_$!<Mobile>!$_] 555 | [null] 556
//   Date: [_$!<Anniversary>!$_] 2024-03-05 13:07:09
//   Address: [_$!<Home>!$_] {City=London, Street=1 Main St\nFlat 2}
//   image: 4 bytes, jpeg
//
// One line for each property that is there, in the order of their numbers.
// Line breaks are written out, the keys of a dictionary are in order, instants
// are in UTC.

#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>
#include <variant>

#include "contacts/contact_record.h"
#include "platform/image_codec.h"

namespace varnok {
namespace person_text {

inline std::string plain(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n' || c == '\r') {
      result += c == '\n' ? "\\n" : "\\r";
    } else {
      result += c;
    }
  }
  return result;
}

inline std::string plain(std::int64_t number) {
  return std::to_string(number);
}
inline std::string plain(double number) {
  return std::to_string(number);
}

inline std::string plain(Instant instant) {
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text;
}

inline std::string plain(const Dictionary& dictionary) {
  auto entries = dictionary.entries();
  std::ranges::sort(entries);
  std::string result;
  for (const auto& [key, value] : entries)
    result += (result.empty() ? "" : ", ") + key + "=" + plain(value);
  return "{" + result + "}";
}

inline std::string plain(const MultiValue& list) {
  std::string result;
  for (const MultiValueEntry& entry : list.entries) {
    if (!result.empty()) result += " | ";
    result += "[" + plain(entry.label.value_or("null")) + "] ";
    result += std::visit([](const auto& value) { return plain(value); }, entry.value);
  }
  return result;
}

// "FirstName" of "kABPersonFirstNameProperty".
inline std::string_view shortName(const Property& property) {
  constexpr std::string_view kStart = "kABPerson";
  constexpr std::string_view kEnd = "Property";
  return property.name.substr(kStart.size(), property.name.size() - kStart.size() - kEnd.size());
}

}  // namespace person_text

inline std::string describe(const ContactRecord& person) {
  std::string result;
  for (const Property& property : allProperties()) {
    const auto value = person.value(property.id);
    if (!value) continue;
    result += person_text::shortName(property);
    result += ": " + std::visit([](const auto& held) { return person_text::plain(held); }, *value) + "\n";
  }
  if (const auto image = person.image()) {
    constexpr std::string_view kTypes[] = {"jpeg", "png", "other"};
    result += "image: " + std::to_string(image->size()) + " bytes, ";
    result += kTypes[static_cast<std::size_t>(imageTypeOf(*image))];
    result += "\n";
  }
  return result;
}

}  // namespace varnok
