#include "bench/address_book_generator.h"

#include <array>
#include <string>

#include "contacts/address_book.h"

namespace varnok {
namespace {

constexpr std::array<const char*, 16> kFirst{"Ada",  "Jürgen", "Zeynep", "Ελένη",    "Наталья", "דנה",
                                             "ليلى", "प्रिया",  "สมชาย",  "美咲",     "지우",    "Łukasz",
                                             "Þóra", "José",   "Nguyễn", "Oluwaseun"};
constexpr std::array<const char*, 16> kLast{"Lovelace",   "Müller", "Yıldız", "Παπαδοπούλου", "Смирнова", "כהן",
                                            "حداد",       "शर्मा",   "ใจดี",    "佐藤",         "김",       "Wiśniewski",
                                            "Jónsdóttir", "Peña",   "Văn An", "Adébáyọ̀"};
constexpr std::array<const char*, 8> kCities{"London", "Köln", "İzmir", "Αθήνα", "Казань", "חיפה", "大阪", "São Paulo"};
constexpr std::array kPhoneLabels{label::kMobile, label::kHome, label::kWork, label::kMain, label::kHomeFAX};

template <typename Choices>
std::string pick(const Choices& choices, std::uint32_t number) {
  return std::string(choices[number % choices.size()]);
}

// A small multiplicative hash: neighbours get unlike numbers.
std::uint32_t mixed(std::uint32_t number) {
  number = (number ^ (number >> 16U)) * 0x45d9f3bU;
  return number ^ (number >> 15U);
}

void set(const PersonRef& person, PropertyID property, PropertyValue value) {
  person->setValue(property, std::move(value)).ignore("the generator's values fit");
}

}  // namespace

PersonRef AddressBookGenerator::person(std::uint32_t index) {
  const bool repeats = index % 20 < 3 && index >= 20;
  const std::uint32_t n = mixed(repeats ? index - 20 : index);
  std::uint32_t entry = repeats ? 0 : entries_;
  const auto labelOf = [&](std::string_view usual) {
    return ++entry % 3 == 0 ? std::string("own label ") + std::to_string(entry % 50) : std::string(usual);
  };
  PersonRef person = ABPersonCreate();
  set(person, kABPersonFirstNameProperty, pick(kFirst, n));
  set(person, kABPersonLastNameProperty, pick(kLast, n >> 4U) + std::to_string(n % 1000));
  if (n % 4 == 0) set(person, kABPersonMiddleNameProperty, "M.");
  if (n % 3 == 0) set(person, kABPersonOrganizationProperty, "Firma " + std::to_string(n % 500) + " GmbH");
  if (n % 6 == 0) set(person, kABPersonJobTitleProperty, "Engineer");
  if (n % 2 == 0) {
    set(person, kABPersonNoteProperty,
        "Met at the fair in " + pick(kCities, n >> 8U) + ";\ncalls on Mondays, likes \"long\" notes. " +
            std::to_string(n));
  }
  if (n % 5 < 2) set(person, kABPersonBirthdayProperty, Instant(std::chrono::seconds(std::int64_t{n % 1'500'000'000})));
  MultiValue phones{PropertyType::multiText, {}};
  for (std::uint32_t i = 0; i <= n % 3; ++i) {
    phones.entries.push_back(
        {labelOf(kPhoneLabels[(n + i) % kPhoneLabels.size()]), "+1 202 555 0" + std::to_string(100 + (n + i) % 100)});
  }
  set(person, kABPersonPhoneProperty, phones);
  MultiValue emails{PropertyType::multiText, {}};
  for (std::uint32_t i = 0; i <= n % 2; ++i) {
    emails.entries.push_back({labelOf(i == 0 ? label::kHome : label::kWork),
                              "person" + std::to_string(n % 100000) + "." + std::to_string(i) + "@example.org"});
  }
  set(person, kABPersonEmailProperty, emails);
  if (n % 5 == 0) {
    set(person, kABPersonURLProperty,
        MultiValue{PropertyType::multiText, {{labelOf(label::kHomePage), "https://example.org/" + std::to_string(n)}}});
  }
  if (n % 2 == 1) {
    Dictionary address{{"Street", std::to_string(n % 200) + " High Street\nFlat " + std::to_string(n % 9)},
                       {"City", pick(kCities, n >> 8U)},
                       {"ZIP", std::to_string(10000 + n % 90000)},
                       {"Country", "Neverland"}};
    set(person, kABPersonAddressProperty,
        MultiValue{PropertyType::multiDictionary, {{labelOf(label::kHome), std::move(address)}}});
  }
  if (!repeats) entries_ = entry;
  return person;
}

}  // namespace varnok
