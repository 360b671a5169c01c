// Which lines of a card say what about a person: the one table that reading and
// writing share. Lines that are not in it are nobody's business here and are
// never touched.

#pragma once

#include <optional>
#include <string_view>

#include "contacts/property_table.h"
#include "import/vcard_line.h"

namespace varnok {

// Properties that share their lines are one part, named after one of them: the
// parts of the name, and the company with its department.
constexpr PropertyID partOf(PropertyID property) {
  switch (property) {
    case kABPersonFirstNameProperty:
    case kABPersonLastNameProperty:
    case kABPersonMiddleNameProperty:
    case kABPersonPrefixProperty:
    case kABPersonSuffixProperty: return kABPersonLastNameProperty;
    case kABPersonOrganizationProperty:
    case kABPersonDepartmentProperty: return kABPersonOrganizationProperty;
    default: return property;
  }
}

inline constexpr std::string_view kGroupLabelName = "X-ABLabel";
// What the lines above cannot say of a property; see ExactValue.
inline constexpr std::string_view kExactName = "X-VARNOK-EXACT";

// The part that a line of this name belongs to.
std::optional<PropertyID> partOfLine(std::string_view name);

// The line as our vCard reader knows it: some programs have names of their own.
VCardLine asKnownLine(const VCardLine& line);

// The service of which "X-JABBER" and its like hold user names, by the name that
// our vCard reader gives it.
struct MessageLine {
  std::string_view name;
  std::string_view service;
};
// Null for a service that has no line of its own.
const MessageLine* messageLineOf(std::string_view service);

// The relations that Evolution keeps in lines of their own.
struct RelationLine {
  std::string_view name;
  std::string_view label;
};
const RelationLine* relationLineOf(std::string_view label);

}  // namespace varnok
