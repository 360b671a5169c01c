#include "contacts/property_value.h"

#include <algorithm>

#include "platform/check.h"

namespace varnok {

const std::string* Dictionary::find(std::string_view key) const {
  const auto found = std::ranges::find(entries_, key, &Entry::first);
  return found == entries_.end() ? nullptr : &found->second;
}

std::string_view Dictionary::textOr(std::string_view key) const {
  const std::string* text = find(key);
  return text == nullptr ? std::string_view() : std::string_view(*text);
}

void Dictionary::put(std::string_view key, std::string_view value) {
  const auto found = std::ranges::find(entries_, key, &Entry::first);
  if (found == entries_.end()) {
    entries_.emplace_back(key, value);
  } else {
    found->second = value;
  }
}

bool Dictionary::operator==(const Dictionary& other) const {
  return entries_.size() == other.entries_.size() && std::ranges::all_of(entries_, [&](const Entry& entry) {
           const std::string* text = other.find(entry.first);
           return text != nullptr && *text == entry.second;
         });
}

bool fits(const EntryValue& value, PropertyType listType) {
  switch (listType) {
    case PropertyType::multiText: return std::holds_alternative<std::string>(value);
    case PropertyType::multiDateTime: return std::holds_alternative<Instant>(value);
    case PropertyType::multiDictionary: return std::holds_alternative<Dictionary>(value);
    case PropertyType::text:
    case PropertyType::integer:
    case PropertyType::real:
    case PropertyType::dateTime:
    case PropertyType::dictionary: return false;
  }
  VARNOK_UNREACHABLE();
}

bool fits(const PropertyValue& value, PropertyType type) {
  switch (type) {
    case PropertyType::text: return std::holds_alternative<std::string>(value);
    case PropertyType::integer: return std::holds_alternative<std::int64_t>(value);
    case PropertyType::real: return std::holds_alternative<double>(value);
    case PropertyType::dateTime: return std::holds_alternative<Instant>(value);
    case PropertyType::dictionary: return std::holds_alternative<Dictionary>(value);
    case PropertyType::multiText:
    case PropertyType::multiDateTime:
    case PropertyType::multiDictionary: {
      const auto* list = std::get_if<MultiValue>(&value);
      return list != nullptr && list->type == type &&
             std::ranges::all_of(list->entries, [&](const auto& entry) { return fits(entry.value, type); });
    }
  }
  VARNOK_UNREACHABLE();
}

}  // namespace varnok
