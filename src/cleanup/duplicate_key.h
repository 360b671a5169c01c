// DuplicateKey: what makes two persons duplicates of each other.
//
//   key  := firstName lastName middleName prefix suffix nickname organization
//           jobTitle department birthday emails phones
//
// A name is the text as stored, a birthday the local day ("2024-03-05"); emails
// and phones are lists of entries with label and value, in stored order. What is
// absent is the null marker, which is not the empty text; a list is never absent.
// Nothing is trimmed or folded. Addresses, notes, photos and the other
// properties take no part.
//
// Quirk: nor does the kind of person: a person and an organisation with the same
// entries are duplicates. Which of the two a contact was saved as is often chance.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "contacts/address_book.h"
#include "platform/clock.h"

namespace varnok {

struct KeyListEntry;
using KeyList = std::vector<KeyListEntry>;

// A rendered value. The null marker is std::monostate. Numbers are equal by
// value, whatever their type.
struct KeyValue : std::variant<std::monostate, std::string, std::int64_t, double, KeyList> {
  using variant::variant;
  friend bool operator==(const KeyValue& a, const KeyValue& b);
};

struct KeyListEntry {
  KeyValue label;  // Text, or the null marker.
  KeyValue value;

  bool operator==(const KeyListEntry&) const = default;
};

class DuplicateKey {
 public:
  static constexpr std::array<std::string_view, 12> kNames{"firstName",  "lastName", "middleName",   "prefix",
                                                           "suffix",     "nickname", "organization", "jobTitle",
                                                           "department", "birthday", "emails",       "phones"};

  // Makes it the key of `person`; the memory is used again.
  void assign(const PersonRef& person, const Clock& clock);

  // The entry of that name; the null marker when there is none.
  KeyValue operator[](std::string_view name) const;

  // Equal keys have equal bytes, other keys other bytes.
  std::string_view bytes() const { return bytes_; }
  bool operator==(const DuplicateKey&) const = default;

 private:
  std::string bytes_;  // The entries in order; see the top of the implementation.
};

// Date-times become the day in the time zone of `clock`, what a key cannot hold
// the null marker.
KeyValue jsonForPropertyValue(const std::optional<PropertyValue>& value, PropertyType type, const Clock& clock);
KeyValue jsonForProperty(PropertyID property, const PersonRef& person, const Clock& clock);
DuplicateKey jsonForPerson(const PersonRef& person, const Clock& clock);

}  // namespace varnok
