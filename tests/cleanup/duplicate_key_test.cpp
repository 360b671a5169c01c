#include "cleanup/duplicate_key.h"

#include <gtest/gtest.h>

#include "platform/testing/fake_clock.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

struct Pair {
  const char* name;
  PersonRef first;
  PersonRef second;
};

DuplicateKey keyOf(const PersonRef& person) {
  FakeClock clock;
  clock.offset = -5h;
  return jsonForPerson(person, clock);
}

TEST(DuplicateKey, IsTheSame) {
  const Dictionary street{{"Street", "Hauptstr. 1"}};
  const Pair pairs[] = {
      {"nobody", person(), person()},
      {"other properties", person().firstName("Ada"),
       person()
           .firstName("Ada")
           .note("n")
           .address("a", street)
           .image("jpeg")
           .text(kABPersonFirstNamePhoneticProperty, "eida")},
      {"nothing but other properties", person().address("a", street), person().note("n")},
      {"birthdays of one local day", person().birthday(10 * kDay + 5 * kHour),
       person().birthday(11 * kDay + 5 * kHour - 1)},
      {"entries", person().phone("a", "1").phone(std::nullopt, "2").email("b", "x@y"),
       person().email("b", "x@y").phone("a", "1").phone(std::nullopt, "2")},
  };
  for (const Pair& pair : pairs)
    EXPECT_EQ(keyOf(pair.first), keyOf(pair.second)) << pair.name;
}

TEST(DuplicateKey, Differs) {
  const std::string large(300, 'x');
  const Pair pairs[] = {
      {"letter case", person().firstName("Ada"), person().firstName("ada")},
      {"trailing blank", person().firstName("Ada"), person().firstName("Ada ")},
      {"absent and empty", person(), person().firstName("")},
      {"one name in two fields", person().firstName("Ada"), person().lastName("Ada")},
      {"a name across two fields", person().firstName("Ad").lastName("a"), person().firstName("A").lastName("da")},
      {"a large name", person().firstName(large), person().firstName(large + "y")},
      {"order of phones", person().phone("a", "1").phone("a", "2"), person().phone("a", "2").phone("a", "1")},
      {"label", person().phone("a", "1"), person().phone("b", "1")},
      {"absent and empty label", person().phone(std::nullopt, "1"), person().phone("", "1")},
      {"phone and e-mail", person().phone("a", "1"), person().email("a", "1")},
      {"next local day", person().birthday(10 * kDay + 5 * kHour), person().birthday(10 * kDay + 5 * kHour - 1)},
      {"birthday and none", person().birthday(0), person()},
  };
  for (const Pair& pair : pairs) {
    EXPECT_FALSE(keyOf(pair.first) == keyOf(pair.second)) << pair.name;
    EXPECT_FALSE(keyOf(pair.second) == keyOf(pair.first)) << pair.name;
  }
}

TEST(DuplicateKey, QuirkAPersonAndAnOrganizationAreTheSame) {
  const PersonRef organization = person().text(kABPersonOrganizationProperty, "Acme");
  const PersonRef named = person().text(kABPersonOrganizationProperty, "Acme");
  ASSERT_TRUE(organization->setValue(kABPersonKindProperty, std::int64_t{kABPersonKindOrganization}).ok());
  ASSERT_TRUE(named->setValue(kABPersonKindProperty, std::int64_t{kABPersonKindPerson}).ok());
  EXPECT_EQ(keyOf(organization), keyOf(named));
}

TEST(DuplicateKey, HasTheTwelveEntriesAsTheyAreRendered) {
  const std::string large(70000, 'l');
  const PersonRef ada = person()
                            .firstName("Ada")
                            .lastName(large)
                            .text(kABPersonMiddleNameProperty, "")
                            .text(kABPersonPrefixProperty, "p")
                            .text(kABPersonSuffixProperty, "s")
                            .text(kABPersonNicknameProperty, std::string(254, 'n'))
                            .text(kABPersonOrganizationProperty, "o")
                            .text(kABPersonJobTitleProperty, "j")
                            .birthday(0)
                            .phone(std::nullopt, "1")
                            .phone("own", large)
                            .email("_$!<Home>!$_", "");
  const std::pair<std::string_view, PropertyID> entries[] = {
      {"firstName", kABPersonFirstNameProperty},
      {"lastName", kABPersonLastNameProperty},
      {"middleName", kABPersonMiddleNameProperty},
      {"prefix", kABPersonPrefixProperty},
      {"suffix", kABPersonSuffixProperty},
      {"nickname", kABPersonNicknameProperty},
      {"organization", kABPersonOrganizationProperty},
      {"jobTitle", kABPersonJobTitleProperty},
      {"department", kABPersonDepartmentProperty},
      {"birthday", kABPersonBirthdayProperty},
      {"emails", kABPersonEmailProperty},
      {"phones", kABPersonPhoneProperty},
  };
  const FakeClock clock;
  const DuplicateKey key = jsonForPerson(ada, clock);
  for (const auto& [name, property] : entries)
    EXPECT_EQ(key[name], jsonForProperty(property, ada, clock)) << name;
  EXPECT_EQ(key["department"], KeyValue());
  EXPECT_EQ(key["birthday"], KeyValue("1970-01-01"));
  EXPECT_EQ(key["phones"], KeyValue(KeyList{{{}, "1"}, {"own", large}}));
  EXPECT_EQ(key["note"], KeyValue());
}

TEST(DuplicateKey, ValuesAreRenderedByTheirType) {
  const FakeClock clock;
  struct Row {
    const char* name;
    std::optional<PropertyValue> value;
    PropertyType type;
    KeyValue rendered;
  };
  const MultiValue dates{PropertyType::multiDateTime, {{std::nullopt, Instant(24h)}}};
  const MultiValue addresses{PropertyType::multiDictionary, {{"a", Dictionary{{"City", "Oslo"}}}}};
  const Row rows[] = {
      {"text", "x", PropertyType::text, "x"},
      {"integer", std::int64_t{7}, PropertyType::integer, std::int64_t{7}},
      {"real", 0.5, PropertyType::real, 0.5},
      {"date", Instant(25h), PropertyType::dateTime, "1970-01-02"},
      {"dictionary", Dictionary{{"City", "Oslo"}}, PropertyType::dictionary, {}},
      {"absent", std::nullopt, PropertyType::text, {}},
      {"absent list", std::nullopt, PropertyType::multiText, KeyList()},
      {"empty list", MultiValue(), PropertyType::multiText, KeyList()},
      {"dates", dates, PropertyType::multiDateTime, KeyList{{{}, "1970-01-02"}}},
      {"dictionaries", addresses, PropertyType::multiDictionary, KeyList{{"a", {}}}},
  };
  for (const Row& row : rows)
    EXPECT_EQ(jsonForPropertyValue(row.value, row.type, clock), row.rendered) << row.name;
}

TEST(DuplicateKey, NumbersAreComparedByValueAndTheNullMarkerWithNothingElse) {
  EXPECT_EQ(KeyValue(std::int64_t{2}), KeyValue(2.0));
  EXPECT_FALSE(KeyValue(std::int64_t{2}) == KeyValue(2.5));
  EXPECT_FALSE(KeyValue(std::int64_t{2}) == KeyValue("2"));
  EXPECT_FALSE(KeyValue() == KeyValue(""));
  EXPECT_FALSE(KeyValue() == KeyValue(KeyList()));
}

}  // namespace
}  // namespace varnok
