// A random walk: the same steps done to several address books, which then must
// be equal.

#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "contacts/address_book.h"

namespace varnok {

using Random = std::mt19937;

inline int pick(Random& random, int below) {
  return static_cast<int>(random() % static_cast<unsigned>(below));
}

inline std::string anyOf(Random& random, const std::vector<std::string>& texts) {
  return texts[static_cast<std::size_t>(pick(random, static_cast<int>(texts.size())))];
}

inline std::string anyText(Random& random) {
  static const std::vector<std::string> kTexts{
      "",         "a",   "Zoë",      "\n",         "12:34",          std::string(2000, 'x'),
      "\xc3\x28", " b ", "c;d,e\\f", "\r\n\t\x01", "+1 212 555 1234"};
  return anyOf(random, kTexts);
}

inline std::optional<std::string> anyLabel(Random& random) {
  static const std::vector<std::string> kLabels{
      "_$!<Home>!$_",    "_$!<Work>!$_",    "_$!<Mobile>!$_",      "_$!<Main>!$_", "_$!<Pager>!$_",
      "_$!<HomeFAX>!$_", "_$!<WorkFAX>!$_", "_$!<Other>!$_",       "iPhone",       "_$!<HomePage>!$_",
      "_$!<Spouse>!$_",  "_$!<Manager>!$_", "_$!<Anniversary>!$_", "(null)",       "my \"own\": x"};
  const int dice = pick(random, 4);
  if (dice == 0) return std::nullopt;
  return dice == 1 ? anyText(random) : anyOf(random, kLabels);
}

// Seconds since 1970; whole days' noons among them.
inline Instant anyInstant(Random& random) {
  const int dice = pick(random, 4);
  if (dice == 0) return Instant(std::chrono::seconds(pick(random, 1000) - 500));
  if (dice == 1)
    return Instant(std::chrono::seconds(-70'000'000'000 + 1'000'000'000 * std::int64_t{pick(random, 400)}));
  return Instant(std::chrono::days(pick(random, 40'000) - 20'000) + std::chrono::hours(dice == 2 ? 12 : 0));
}

inline EntryValue anyEntry(Random& random, PropertyType type) {
  static const std::vector<std::string> kKeys{"Street", "City", "State", "ZIP", "Country", "service", "username", "0"};
  static const std::vector<std::string> kServices{"Skype", "Jabber", "AIM", "Foo", "HOME", "a b", ""};
  if (type == PropertyType::multiDateTime) return anyInstant(random);
  if (type == PropertyType::multiText) return anyText(random);
  Dictionary dictionary;
  if (pick(random, 2) == 0) dictionary = {{"service", anyOf(random, kServices)}, {"username", anyText(random)}};
  for (int i = pick(random, 4); i > 0; --i)
    dictionary.put(anyOf(random, kKeys), anyText(random));
  return dictionary;
}

inline PropertyValue anyValue(Random& random, PropertyType type) {
  if (type == PropertyType::text) return anyText(random);
  if (type == PropertyType::integer) return std::int64_t{pick(random, 2)};
  if (type == PropertyType::dateTime) return anyInstant(random);
  MultiValue list{type, {}};
  for (int i = pick(random, 4); i > 0; --i) {
    list.entries.push_back({anyLabel(random), anyEntry(random, type)});
  }
  return list;
}

struct Step {
  enum class Kind { add, change, clear, image, remove, save, reopen };
  Kind kind;
  std::size_t who;  // Modulo the number of persons.
  PropertyID property;
  PropertyValue value;
};

inline Step anyStep(Random& random) {
  const int dice = pick(random, 20);
  const auto kind = dice < 5    ? Step::Kind::add
                    : dice < 11 ? Step::Kind::change
                    : dice < 13 ? Step::Kind::clear
                    : dice < 14 ? Step::Kind::image
                    : dice < 16 ? Step::Kind::remove
                    : dice < 19 ? Step::Kind::save
                                : Step::Kind::reopen;
  const auto& property = allProperties()[static_cast<std::size_t>(pick(random, 22))];
  return {kind, random(), property.id, anyValue(random, property.type)};
}

inline void apply(const Step& step, ContactStoreProvider& provider, std::unique_ptr<ContactStore>& store) {
  const PersonArray people = store->allPeople();
  const PersonRef person = people.empty() ? nullptr : people[step.who % people.size()];
  Status status;
  switch (step.kind) {
    case Step::Kind::add: {
      const PersonRef added = ABPersonCreate();
      ASSERT_TRUE(added->setValue(step.property, step.value).ok());
      ASSERT_TRUE(store->addRecord(added).ok());
      return;
    }
    case Step::Kind::change: ABRecordSetValue(person, step.property, step.value).ignore("nobody there yet"); return;
    case Step::Kind::clear: ABRecordRemoveValue(person, step.property).ignore("nobody there yet"); return;
    case Step::Kind::image:
      if (person != nullptr) person->setImage(step.who % 3 == 0 ? std::nullopt : std::optional<std::string>("bytes"));
      return;
    case Step::Kind::remove: store->removeRecord(person).ignore("nobody there yet"); return;
    case Step::Kind::save: ASSERT_TRUE(store->save().ok()); return;
    case Step::Kind::reopen:
      store.reset();
      store = provider.open(status);
      ASSERT_NE(store, nullptr);
      return;
  }
}

inline std::string written(ContactStore& store) {
  std::string text;
  const PersonArray people = store.allPeople();
  for (std::size_t i = 0; i < people.size(); ++i) {
    const PersonRef person = people[i];
    text += "person " + std::to_string(person->recordID()) + (person->hasImage() ? " image " : " ") +
            person->image().value_or("") + "\n";
    for (const Property& property : allProperties()) {
      const auto value = person->value(property.id);
      if (value) text += std::string(property.name) + " " + testing::PrintToString(value->index()) + "\n";
    }
  }
  return text;
}

inline void expectEqualBooks(ContactStore& one, ContactStore& two) {
  ASSERT_EQ(written(one), written(two));
  const PersonArray people = one.allPeople();
  const PersonArray others = two.allPeople();
  for (std::size_t i = 0; i < people.size(); ++i) {
    for (const Property& property : allProperties()) {
      ASSERT_EQ(people[i]->value(property.id), others[i]->value(property.id)) << property.name;
    }
  }
}

struct WalkedBook {
  ContactStoreProvider& provider;
  std::unique_ptr<ContactStore> store = {};
};

// Compares after every so many steps.
inline void walk(std::vector<WalkedBook> books, int steps, int stepsBetweenLooks) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  Status status;
  for (WalkedBook& book : books) {
    book.store = book.provider.open(status);
    ASSERT_NE(book.store, nullptr) << status.message();
  }
  for (int step = 0; step <= steps; ++step) {
    const Step next = anyStep(random);
    for (WalkedBook& book : books) {
      ASSERT_NO_FATAL_FAILURE(apply(next, book.provider, book.store)) << "step " << step;
      if (step == steps) {
        ASSERT_TRUE(book.store->save().ok());
      }
    }
    if (step % stepsBetweenLooks != 0 && step != steps) continue;
    for (std::size_t i = 1; i < books.size(); ++i)
      ASSERT_NO_FATAL_FAILURE(expectEqualBooks(*books[0].store, *books[i].store)) << "step " << step;
  }
}

}  // namespace varnok
