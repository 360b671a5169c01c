// ExactValue: what a vCard cannot say of a property, in a line of our own:
//
//   X-VARNOK-EXACT:kABPersonPhoneProperty;<fingerprint>;<base64 of the value>
//
// It is there only where the property's usual lines do not read back as the
// value that was stored: an empty text, a control character, a label that is
// empty, a moment that no time zone puts on a whole minute. The fingerprint is
// that of those usual lines. Once another program has changed them the line no
// longer counts, so an edit made elsewhere always wins.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "contacts/property_value.h"
#include "platform/linux/eds/card.h"

namespace varnok {

struct ExactValue {
  PropertyID property = kABPersonNoteProperty;
  std::uint64_t fingerprint = 0;
  std::optional<PropertyValue> value;  // Nothing where the property is absent.
};

// Of the lines of a property's part, whatever their escapes and folds.
std::uint64_t fingerprintOf(const Card& card, PropertyID part);

std::string exactLine(const ExactValue& exact);

// Nothing when `value`, that of such a line, is not well formed.
std::optional<ExactValue> parseExactValue(std::string_view value);

}  // namespace varnok
