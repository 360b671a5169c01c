// What every address book promises. A test program that includes this runs the
// suite over the backends that it instantiates it with:
//
//   INSTANTIATE_TEST_SUITE_P(, ContactStoreContract, testing::Values(kSQLite), nameOfBackend);

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "contacts/address_book.h"

namespace varnok {
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "varnok-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// `make` gives an empty book.
struct Backend {
  std::string name;
  std::function<std::unique_ptr<ContactStoreProvider>(const TemporaryDirectory&)> make;
};

inline std::string nameOfBackend(const testing::TestParamInfo<Backend>& tested) {
  return tested.param.name;
}

inline MultiValue list(PropertyType type, std::vector<MultiValueEntry> entries) {
  return {type, std::move(entries)};
}

inline MultiValue phones(std::vector<MultiValueEntry> entries) {
  return list(PropertyType::multiText, std::move(entries));
}

class ContactStoreContract : public testing::TestWithParam<Backend> {
 protected:
  std::unique_ptr<ContactStore> open() {
    Status status;
    auto store = provider_->open(status);
    EXPECT_TRUE(status.ok()) << status.message();
    return store;
  }

  RecordID addSaved(const std::string& firstName) {
    auto store = open();
    const PersonRef person = ABPersonCreate();
    person->setValue(kABPersonFirstNameProperty, firstName).ignore("text fits");
    EXPECT_TRUE(store->addRecord(person).ok());
    EXPECT_EQ(person->recordID(), kInvalidRecordID);
    EXPECT_TRUE(store->save().ok());
    return person->recordID();
  }

  std::optional<std::string> firstName(RecordID id) {
    auto store = open();
    return copyText(store->personWithRecordID(id), kABPersonFirstNameProperty);
  }

  TemporaryDirectory directory_;
  std::unique_ptr<ContactStoreProvider> provider_ = GetParam().make(directory_);
};

TEST_P(ContactStoreContract, KeepsEveryKindOfValue) {
  const std::string image("\x89PNG\0\r\n", 7);
  const std::map<PropertyID, PropertyValue> values{
      {kABPersonFirstNameProperty, std::string("Ada \0 \xff <ü>", 11)},
      {kABPersonLastNameProperty, std::string()},
      {kABPersonBirthdayProperty, Instant(std::chrono::seconds(-4'000'000'000))},
      {kABPersonKindProperty, std::int64_t{1}},
      {kABPersonPhoneProperty,
       phones({{std::string(label::kMobile), "1"}, {std::nullopt, "2"}, {"", ""}, {"my \"own\"", "3"}})},
      {kABPersonDateProperty, list(PropertyType::multiDateTime, {{std::nullopt, Instant(std::chrono::seconds(7))}})},
      {kABPersonAddressProperty,
       list(PropertyType::multiDictionary,
            {{"x", Dictionary{{"Street", "1:2\n3"}, {"City", ""}}}, {std::nullopt, Dictionary()}})},
  };
  const PersonRef person = ABPersonCreate();
  for (const auto& [property, value] : values)
    ASSERT_TRUE(person->setValue(property, value).ok());
  person->setImage(image);
  auto writing = open();
  ASSERT_TRUE(writing->addRecord(person).ok());
  ASSERT_TRUE(writing->save().ok());

  auto reading = open();
  const PersonRef read = reading->personWithRecordID(person->recordID());
  ASSERT_NE(read, nullptr);
  for (const Property& property : allProperties()) {
    const auto expected = values.find(property.id);
    EXPECT_EQ(read->value(property.id), expected == values.end() ? std::nullopt : std::optional(expected->second))
        << property.name;
  }
  EXPECT_EQ(read->text(kABPersonFirstNameProperty), std::string("Ada \0 \xff <ü>", 11));
  EXPECT_EQ(read->text(kABPersonMiddleNameProperty), std::nullopt);
  const auto views = read->entries(kABPersonPhoneProperty);
  ASSERT_EQ(views.size(), 4U);
  EXPECT_EQ(views[1].label, std::nullopt);
  EXPECT_EQ(views[3].label, "my \"own\"");
  EXPECT_EQ(views[3].text, "3");
  EXPECT_EQ(read->entries(kABPersonDateProperty)[0].instant, Instant(std::chrono::seconds(7)));
  EXPECT_EQ(read->entries(kABPersonAddressProperty)[0].dictionary.textOr("Street"), "1:2\n3");
  EXPECT_EQ(read->entries(kABPersonAddressProperty)[1].dictionary.textOr("Street"), "");
  EXPECT_TRUE(read->entries(kABPersonURLProperty).empty());
  EXPECT_EQ(read->image(), image);
  EXPECT_TRUE(reading->readStatus().ok());
}

TEST_P(ContactStoreContract, RefusesAValueOfAnotherType) {
  const PersonRef person = ABPersonCreate();
  EXPECT_FALSE(person->setValue(kABPersonPhoneProperty, "555").ok());
  EXPECT_FALSE(person->setValue(kABPersonFirstNameProperty, phones({{std::nullopt, "1"}})).ok());
  EXPECT_FALSE(person->setValue(kABPersonDateProperty, phones({{std::nullopt, "1"}})).ok());
  EXPECT_EQ(person->value(kABPersonPhoneProperty), std::nullopt);
}

TEST_P(ContactStoreContract, AListWithoutEntriesIsAbsent) {
  const RecordID id = addSaved("Ada");
  auto store = open();
  const PersonRef ada = store->personWithRecordID(id);
  ASSERT_TRUE(ada->setValue(kABPersonPhoneProperty, phones({{std::nullopt, "1"}})).ok());
  ASSERT_TRUE(store->save().ok());
  ASSERT_TRUE(ada->setValue(kABPersonPhoneProperty, phones({})).ok());
  EXPECT_EQ(ada->value(kABPersonPhoneProperty), std::nullopt);
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(open()->personWithRecordID(id)->value(kABPersonPhoneProperty), std::nullopt);
}

TEST_P(ContactStoreContract, FindsThoseWithAPictureWithoutDisturbingAPass) {
  auto store = open();
  for (int i = 0; i < 600; ++i) {
    const PersonRef person = ABPersonCreate();
    ASSERT_TRUE(person->setValue(kABPersonFirstNameProperty, std::to_string(i)).ok());
    if (i % 300 == 299) person->setImage("picture " + std::to_string(i));
    ASSERT_TRUE(store->addRecord(person).ok());
  }
  ASSERT_TRUE(store->save().ok());
  const PersonArray people = store->allPeople();
  const PersonArray pictured = store->peopleWithImages();
  ASSERT_EQ(pictured.ids(), (std::vector<RecordID>{people.ids()[299], people.ids()[599]}));
  EXPECT_EQ(copyText(people[0], kABPersonFirstNameProperty), "0");
  EXPECT_EQ(pictured[1]->image(), "picture 599");
  EXPECT_EQ(people[1]->image(), std::nullopt);
  EXPECT_EQ(copyText(people[1], kABPersonFirstNameProperty), "1");
  pictured[0]->setImage(std::nullopt);
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(store->peopleWithImages().size(), 1U);
}

TEST_P(ContactStoreContract, DropsWhatWasNotSaved) {
  const RecordID id = addSaved("Ada");
  {
    auto store = open();
    ASSERT_TRUE(store->addRecord(ABPersonCreate()).ok());
    ASSERT_TRUE(store->personWithRecordID(id)->setValue(kABPersonFirstNameProperty, "Bob").ok());
    ASSERT_TRUE(store->removeRecord(store->personWithRecordID(id)).ok());
    EXPECT_EQ(store->personCount(), 1);
  }
  EXPECT_EQ(open()->personCount(), 1);
  EXPECT_EQ(firstName(id), "Ada");
}

TEST_P(ContactStoreContract, ManyAdditionsStayPendingAndOutOfSight) {
  addSaved("Ada");
  auto store = open();
  for (int i = 0; i < 1000; ++i)
    ASSERT_TRUE(store->addRecord(ABPersonCreate()).ok());
  EXPECT_EQ(store->personCount(), 1);
  EXPECT_EQ(store->allPeople().size(), 1U);
  EXPECT_EQ(open()->personCount(), 1);
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(store->personCount(), 1001);
  {
    auto dropped = open();
    for (int i = 0; i < 1000; ++i)
      ASSERT_TRUE(dropped->addRecord(ABPersonCreate()).ok());
  }
  EXPECT_EQ(open()->personCount(), 1001);
}

TEST_P(ContactStoreContract, APersonStillHeldMayChangeUntilTheSave) {
  auto store = open();
  std::vector<PersonRef> held;
  for (int i = 0; i < 600; ++i) {
    held.push_back(ABPersonCreate());
    ASSERT_TRUE(store->addRecord(held.back()).ok());
    EXPECT_FALSE(store->addRecord(held.back()).ok());
  }
  ASSERT_TRUE(held[0]->setValue(kABPersonFirstNameProperty, "late").ok());
  ASSERT_TRUE(store->removeRecord(held[1]).ok());
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(firstName(held[0]->recordID()), "late");
  EXPECT_EQ(held[1]->recordID(), kInvalidRecordID);
  EXPECT_EQ(open()->personCount(), 599);
}

TEST_P(ContactStoreContract, IdentifiersAreNeverUsedAgain) {
  const RecordID first = addSaved("Ada");
  auto store = open();
  ASSERT_TRUE(store->removeRecord(store->personWithRecordID(first)).ok());
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(store->personWithRecordID(first), nullptr);
  EXPECT_GT(addSaved("Bob"), first);
}

TEST_P(ContactStoreContract, ChangesOfDifferentPropertiesBothWin) {
  const RecordID id = addSaved("Ada");
  auto one = open();
  auto two = open();
  const PersonRef inOne = one->personWithRecordID(id);
  const PersonRef inTwo = two->personWithRecordID(id);
  ASSERT_TRUE(inOne->setValue(kABPersonLastNameProperty, "One").ok());
  ASSERT_TRUE(inTwo->setValue(kABPersonNicknameProperty, "Two").ok());
  ASSERT_TRUE(inTwo->setValue(kABPersonPhoneProperty, phones({{std::nullopt, "2"}})).ok());
  ASSERT_TRUE(one->save().ok());
  ASSERT_TRUE(two->save().ok());
  auto reading = open();
  const PersonRef read = reading->personWithRecordID(id);
  EXPECT_EQ(copyText(read, kABPersonFirstNameProperty), "Ada");
  EXPECT_EQ(copyText(read, kABPersonLastNameProperty), "One");
  EXPECT_EQ(copyText(read, kABPersonNicknameProperty), "Two");
  EXPECT_EQ(copyList(read, kABPersonPhoneProperty).entries.size(), 1U);
}

TEST_P(ContactStoreContract, AHandleSeesOneStateOfTheBookUntilItsSave) {
  const RecordID id = addSaved("Ada");
  auto early = open();
  EXPECT_EQ(early->personCount(), 1);
  addSaved("Bob");
  {
    auto other = open();
    ASSERT_TRUE(other->removeRecord(other->personWithRecordID(id)).ok());
    ASSERT_TRUE(other->save().ok());
  }
  EXPECT_EQ(early->personCount(), 1);
  EXPECT_EQ(copyText(early->personWithRecordID(id), kABPersonFirstNameProperty), "Ada");
  // Changing a person whom another handle has removed does not bring it back.
  ASSERT_TRUE(early->personWithRecordID(id)->setValue(kABPersonFirstNameProperty, "Eve").ok());
  ASSERT_TRUE(early->save().ok());
  EXPECT_EQ(early->personCount(), 1);
  EXPECT_EQ(early->personWithRecordID(id), nullptr);
}

TEST_P(ContactStoreContract, EveryHandleOfAPersonSeesItsPendingChange) {
  const RecordID id = addSaved("Ada");
  auto store = open();
  const PersonRef before = store->personWithRecordID(id);
  ASSERT_TRUE(store->allPeople()[0]->setValue(kABPersonFirstNameProperty, "Bob").ok());
  EXPECT_EQ(copyText(before, kABPersonFirstNameProperty), "Bob");
  ASSERT_TRUE(before->removeValue(kABPersonFirstNameProperty).ok());
  EXPECT_EQ(copyText(store->personWithRecordID(id), kABPersonFirstNameProperty), std::nullopt);
}

TEST_P(ContactStoreContract, ManyThreadsSaveAndNothingIsLost) {
  constexpr int kThreads = 4;
  constexpr int kSaves = 10;
  std::vector<std::jthread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kSaves; ++i)
        addSaved("x");
    });
  }
  threads.clear();
  EXPECT_EQ(open()->personCount(), kThreads * kSaves);
}

}  // namespace varnok
