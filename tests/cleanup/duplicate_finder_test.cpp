#include "cleanup/duplicate_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "cleanup/cleanup_surroundings.h"

namespace varnok {
namespace {

using Key = std::array<KeyValue, 12>;

Key plainKey(const PersonRef& person, const Clock& clock) {
  Key key;
  std::size_t i = 0;
  for (const PropertyID property :
       {kABPersonFirstNameProperty, kABPersonLastNameProperty, kABPersonMiddleNameProperty, kABPersonPrefixProperty,
        kABPersonSuffixProperty, kABPersonNicknameProperty, kABPersonOrganizationProperty, kABPersonJobTitleProperty,
        kABPersonDepartmentProperty, kABPersonBirthdayProperty, kABPersonEmailProperty, kABPersonPhoneProperty})
    key[i++] = jsonForProperty(property, person, clock);
  return key;
}

// Counters by first duplicate, kept persons and duplicates, as text.
std::string shownResult(const std::vector<RecordID>& duplicates, const std::vector<std::string>& counters,
                        const std::vector<RecordID>& kept) {
  std::string text = "duplicates";
  for (const RecordID id : duplicates)
    text += " " + std::to_string(id);
  for (std::size_t i = 0; i < counters.size(); ++i)
    text += "\n" + std::to_string(kept[i]) + " is kept, " + counters[i];
  return text;
}

// Compares everybody with everybody before, as the rule is told to people.
std::string quadraticSearch(ContactStore& addressBook, const Clock& clock) {
  std::vector<Key> seen;
  std::vector<RecordID> seenIDs;
  std::vector<Key> groups;
  std::vector<RecordID> kept;
  std::vector<RecordID> duplicates;
  std::vector<std::string> counters;
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(&addressBook);
  for (std::size_t i = 0; i < people.size(); ++i) {
    const Key key = plainKey(people[i], clock);
    const auto earlier = std::ranges::find(seen, key);
    if (earlier == seen.end()) {
      seen.push_back(key);
      seenIDs.push_back(people.ids()[i]);
      continue;
    }
    duplicates.push_back(people.ids()[i]);
    const auto group = std::ranges::find(groups, key);
    const auto place = static_cast<std::size_t>(group - groups.begin());
    if (group == groups.end()) {
      groups.push_back(key);
      counters.emplace_back("0");
      kept.push_back(seenIDs[static_cast<std::size_t>(earlier - seen.begin())]);
    }
    counters[place] = std::to_string(std::stoi(counters[place]) + 1);
  }
  return shownResult(duplicates, counters, kept);
}

std::string search(ContactStore& addressBook, const Clock& clock, KeyHash hash) {
  const DuplicateRecords found = findDuplicates(&addressBook, clock, hash);
  EXPECT_EQ(found.groups.size(), found.duplicateRecords.size());
  for (std::size_t i = 0; i < found.groups.size(); ++i) {
    const auto& key = found.duplicateRecordsAsDictionary.at(found.groups[i]);
    EXPECT_EQ(key, jsonForPerson(addressBook.personWithRecordID(found.duplicateRecords[i]), clock));
  }
  return shownResult(found.duplicateRecords, found.duplicateRecordsCounter, found.keptRecords);
}

// Few values, so that many people are the same in everything. `large` makes
// keys that are too large to be kept.
PersonRef randomPerson(std::mt19937& chance, bool large) {
  const auto pick = [&](std::size_t count) { return chance() % count; };
  const auto label = [&] { return pick(2) == 0 ? std::nullopt : std::optional<std::string>("own"); };
  constexpr std::array kNames{"Ada", "Bob", "ada", "Ada "};
  PersonBuilder builder = person();
  if (pick(4) != 0) builder.firstName(std::string(large ? 2000 : 0, '-') + kNames[pick(kNames.size())]);
  if (pick(2) == 0) builder.lastName(pick(2) == 0 ? "" : "King");
  if (pick(3) == 0) builder.birthday(static_cast<std::int64_t>(pick(3)) * 43200);
  for (std::size_t i = pick(3); i > 0; --i)
    builder.phone(label(), pick(2) == 0 ? "1" : "2");
  if (pick(4) == 0) builder.email("own", "a@b");
  if (pick(2) == 0) builder.note(std::to_string(chance()));
  return builder;
}

TEST(DuplicateFinder, FindsWhatAQuadraticSearchFinds) {
  const KeyHash hashes[] = {&hashOf, [](std::string_view bytes) { return hashOf(bytes) % 64; },
                            [](std::string_view /*bytes*/) { return std::uint64_t{0}; }};
  for (const unsigned seed : {1U, 2U, std::random_device()()}) {
    for (const bool large : {false, true}) {
      SCOPED_TRACE("seed " + std::to_string(seed) + (large ? " large" : ""));
      std::mt19937 chance(seed);
      CleanupSurroundings around;
      std::vector<PersonRef> people;
      people.reserve(2000);
      for (int i = 0; i < 2000; ++i)
        people.push_back(randomPerson(chance, large));
      putPeople(around.contacts, people);
      const auto addressBook = ABAddressBookCreateWithOptions(around.contacts);
      const std::string expected = quadraticSearch(*addressBook, around.clock);
      ASSERT_GT(expected.size(), 1000U);
      for (const KeyHash hash : hashes)
        EXPECT_EQ(search(*addressBook, around.clock, hash), expected);
    }
  }
}

TEST(DuplicateFinder, KeepsTheFirstAndCountsTheOthersInTheOrderOfTheBook) {
  CleanupSurroundings around;
  const auto ada = [] { return person().firstName("Ada"); };
  const auto bob = [] { return person().firstName("Bob"); };
  putPeople(around.contacts, {ada(), bob(), person().firstName("Eve"), bob(), ada(), bob(), person().note("x")});
  const auto addressBook = ABAddressBookCreateWithOptions(around.contacts);
  EXPECT_EQ(search(*addressBook, around.clock, &hashOf), "duplicates 4 5 6\n2 is kept, 2\n1 is kept, 1");
}

TEST(DuplicateFinder, FindsNobodyWithoutABookOrWhenItCannotBeReadToItsEnd) {
  CleanupSurroundings around;
  EXPECT_TRUE(findDuplicates(nullptr, around.clock).duplicateRecords.empty());
  putPeople(around.contacts, {person().firstName("Ada"), person().firstName("Bob")});
  around.contacts.failReads({Status::Code::corrupt, "the file is damaged"});
  const auto addressBook = ABAddressBookCreateWithOptions(around.contacts);
  const DuplicateRecords found = findDuplicates(addressBook.get(), around.clock);
  EXPECT_TRUE(found.duplicateRecords.empty());
  EXPECT_TRUE(found.duplicateRecordsAsDictionary.empty());
}

}  // namespace
}  // namespace varnok
