// What a property of a person can hold. Values: copied freely, compared whole.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "contacts/property_table.h"
#include "platform/value.h"

namespace varnok {

// Text by key, in the order in which it was put in. A key occurs once.
class Dictionary {
 public:
  using Entry = std::pair<std::string, std::string>;

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries) {
    for (const Entry& entry : entries)
      put(entry.first, entry.second);
  }

  // Null when the key is missing.
  const std::string* find(std::string_view key) const;
  // The text under `key`, empty when missing.
  std::string_view textOr(std::string_view key) const;
  void put(std::string_view key, std::string_view value);

  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }

  // The order of the keys carries no meaning.
  bool operator==(const Dictionary& other) const;

 private:
  std::vector<Entry> entries_;
};

using EntryValue = std::variant<std::string, Instant, Dictionary>;

struct MultiValueEntry {
  // As stored: a wrapped platform label such as "_$!<Home>!$_", or whatever the
  // user typed. Absent when the entry has no label.
  std::optional<std::string> label;
  EntryValue value;

  bool operator==(const MultiValueEntry&) const = default;
};

struct MultiValue {
  PropertyType type = PropertyType::multiText;
  std::vector<MultiValueEntry> entries;  // Every value is of the list's element type.

  bool operator==(const MultiValue&) const = default;
};

using PropertyValue = std::variant<std::string, std::int64_t, double, Instant, Dictionary, MultiValue>;

// Whether `value` is what a property of this type holds, entries included.
bool fits(const PropertyValue& value, PropertyType type);
bool fits(const EntryValue& value, PropertyType listType);

}  // namespace varnok
