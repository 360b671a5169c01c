#include "contacts/property_table.h"

#include <array>

#include "platform/check.h"

namespace varnok {
namespace {

#define VARNOK_PROPERTY(id, type)           \
  Property {                                \
    PropertyID::id, PropertyType::type, #id \
  }

constexpr std::array kProperties{
    VARNOK_PROPERTY(kABPersonFirstNameProperty, text),
    VARNOK_PROPERTY(kABPersonLastNameProperty, text),
    VARNOK_PROPERTY(kABPersonMiddleNameProperty, text),
    VARNOK_PROPERTY(kABPersonPrefixProperty, text),
    VARNOK_PROPERTY(kABPersonSuffixProperty, text),
    VARNOK_PROPERTY(kABPersonNicknameProperty, text),
    VARNOK_PROPERTY(kABPersonFirstNamePhoneticProperty, text),
    VARNOK_PROPERTY(kABPersonLastNamePhoneticProperty, text),
    VARNOK_PROPERTY(kABPersonOrganizationProperty, text),
    VARNOK_PROPERTY(kABPersonDepartmentProperty, text),
    VARNOK_PROPERTY(kABPersonJobTitleProperty, text),
    VARNOK_PROPERTY(kABPersonNoteProperty, text),
    VARNOK_PROPERTY(kABPersonBirthdayProperty, dateTime),
    VARNOK_PROPERTY(kABPersonKindProperty, integer),
    VARNOK_PROPERTY(kABPersonPhoneProperty, multiText),
    VARNOK_PROPERTY(kABPersonEmailProperty, multiText),
    VARNOK_PROPERTY(kABPersonURLProperty, multiText),
    VARNOK_PROPERTY(kABPersonRelatedNamesProperty, multiText),
    VARNOK_PROPERTY(kABPersonDateProperty, multiDateTime),
    VARNOK_PROPERTY(kABPersonAddressProperty, multiDictionary),
    VARNOK_PROPERTY(kABPersonInstantMessageProperty, multiDictionary),
    VARNOK_PROPERTY(kABPersonSocialProfileProperty, multiDictionary),
};

#undef VARNOK_PROPERTY

constexpr bool numberedFromOne() {
  for (std::size_t i = 0; i < kProperties.size(); ++i) {
    if (static_cast<std::size_t>(kProperties[i].id) != i + 1) return false;
  }
  return true;
}
static_assert(numberedFromOne(), "propertyOf() finds a property at its number minus one");

}  // namespace

std::span<const Property> allProperties() {
  return kProperties;
}

std::optional<PropertyID> propertyWithNumber(long long number) {
  if (number < 1 || number > static_cast<long long>(kProperties.size())) return std::nullopt;
  return static_cast<PropertyID>(number);
}

const Property& propertyOf(PropertyID id) {
  const auto index = static_cast<std::size_t>(id) - 1;
  VARNOK_CHECK(index < kProperties.size());
  return kProperties[index];
}

}  // namespace varnok
