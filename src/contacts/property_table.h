// The person properties that the system knows.
//
// The numbers of PropertyID are part of the database and of the protocol with
// the browser pages: a number is never changed and never used again.

#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace varnok {

// The bit 0x100 marks a multi-valued type; the rest is the type of an entry.
enum class PropertyType : int {
  text = 1,
  integer = 2,
  real = 3,
  dateTime = 4,
  dictionary = 5,
  multiText = 0x101,
  multiDateTime = 0x104,
  multiDictionary = 0x105,
};

constexpr bool isMultiValued(PropertyType type) {
  return (static_cast<int>(type) & 0x100) != 0;
}

enum class PropertyID : int {
  kABPersonFirstNameProperty = 1,
  kABPersonLastNameProperty = 2,
  kABPersonMiddleNameProperty = 3,
  kABPersonPrefixProperty = 4,
  kABPersonSuffixProperty = 5,
  kABPersonNicknameProperty = 6,
  kABPersonFirstNamePhoneticProperty = 7,
  kABPersonLastNamePhoneticProperty = 8,
  kABPersonOrganizationProperty = 9,
  kABPersonDepartmentProperty = 10,
  kABPersonJobTitleProperty = 11,
  kABPersonNoteProperty = 12,
  kABPersonBirthdayProperty = 13,
  kABPersonKindProperty = 14,
  kABPersonPhoneProperty = 15,
  kABPersonEmailProperty = 16,
  kABPersonURLProperty = 17,
  kABPersonRelatedNamesProperty = 18,
  kABPersonDateProperty = 19,
  kABPersonAddressProperty = 20,
  kABPersonInstantMessageProperty = 21,
  kABPersonSocialProfileProperty = 22,
};
using enum PropertyID;

struct Property {
  PropertyID id;
  PropertyType type;
  std::string_view name;  // "kABPersonPhoneProperty".
};

// Every property, ordered by its number.
std::span<const Property> allProperties();

// Nothing when no property has this number.
std::optional<PropertyID> propertyWithNumber(long long number);

const Property& propertyOf(PropertyID id);

// The kinds of kABPersonKindProperty. Another number counts as an organisation.
inline constexpr int kABPersonKindPerson = 0;
inline constexpr int kABPersonKindOrganization = 1;

// Keys of the dictionaries of addresses, and of messages and profiles.
inline constexpr std::string_view kAddressStreetKey = "Street";
inline constexpr std::string_view kABPersonAddressCityKey = "City";
inline constexpr std::string_view kABPersonAddressStateKey = "State";
inline constexpr std::string_view kABPersonAddressZIPKey = "ZIP";
inline constexpr std::string_view kABPersonAddressCountryKey = "Country";
inline constexpr std::string_view kABPersonInstantMessageServiceKey = "service";
inline constexpr std::string_view kABPersonInstantMessageUsernameKey = "username";
inline constexpr std::string_view kSocialProfileServiceKey = "service";
inline constexpr std::string_view kSocialProfileUsernameKey = "username";

// Labels as stored. A label may also be any text of the user's own, or absent.
namespace label {
inline constexpr std::string_view kHome = "_$!<Home>!$_";
inline constexpr std::string_view kWork = "_$!<Work>!$_";
inline constexpr std::string_view kMobile = "_$!<Mobile>!$_";
inline constexpr std::string_view kMain = "_$!<Main>!$_";
inline constexpr std::string_view kPager = "_$!<Pager>!$_";
inline constexpr std::string_view kHomeFAX = "_$!<HomeFAX>!$_";
inline constexpr std::string_view kWorkFAX = "_$!<WorkFAX>!$_";
inline constexpr std::string_view kOther = "_$!<Other>!$_";
inline constexpr std::string_view kHomePage = "_$!<HomePage>!$_";
inline constexpr std::string_view kAnniversary = "_$!<Anniversary>!$_";
inline constexpr std::string_view kIPhone = "iPhone";
}  // namespace label

}  // namespace varnok
