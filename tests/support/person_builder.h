// Persons for tests, put together in one expression:
//
//   person().text(kABPersonFirstNameProperty, "Ada").phone("_$!<Mobile>!$_", "555")

#pragma once

#include <optional>
#include <string>
#include <utility>

#include "contacts/address_book.h"
#include "platform/check.h"

namespace varnok {

class PersonBuilder {
 public:
  using Label = std::optional<std::string>;

  PersonBuilder& text(PropertyID property, const std::string& value) { return set(property, value); }
  PersonBuilder& firstName(const std::string& name) { return text(kABPersonFirstNameProperty, name); }
  PersonBuilder& lastName(const std::string& name) { return text(kABPersonLastNameProperty, name); }
  PersonBuilder& note(const std::string& note) { return text(kABPersonNoteProperty, note); }
  PersonBuilder& birthday(std::int64_t seconds) { return set(kABPersonBirthdayProperty, instant(seconds)); }
  PersonBuilder& phone(Label label, const std::string& number) {
    return entry(kABPersonPhoneProperty, std::move(label), number);
  }
  PersonBuilder& email(Label label, const std::string& address) {
    return entry(kABPersonEmailProperty, std::move(label), address);
  }
  PersonBuilder& date(Label label, std::int64_t seconds) {
    return entry(kABPersonDateProperty, std::move(label), instant(seconds));
  }
  PersonBuilder& address(Label label, const Dictionary& parts) {
    return entry(kABPersonAddressProperty, std::move(label), parts);
  }
  PersonBuilder& entry(PropertyID property, Label label, EntryValue value) {
    MultiValue list = copyList(person_, property);
    list.entries.push_back({std::move(label), std::move(value)});
    return set(property, std::move(list));
  }
  PersonBuilder& image(const std::string& bytes) {
    person_->setImage(bytes);
    return *this;
  }

  operator PersonRef() const { return person_; }  // NOLINT(google-explicit-constructor)

 private:
  static Instant instant(std::int64_t seconds) { return Instant(std::chrono::seconds(seconds)); }
  PersonBuilder& set(PropertyID property, PropertyValue value) {
    VARNOK_CHECK(person_->setValue(property, std::move(value)).ok());
    return *this;
  }

  PersonRef person_ = ABPersonCreate();
};

inline PersonBuilder person() {
  return {};
}

// Puts `people` into the address book of `provider`, in order.
inline void putPeople(ContactStoreProvider& provider, const std::vector<PersonRef>& people) {
  Status status;
  const auto store = provider.open(status);
  VARNOK_CHECK(store != nullptr);
  for (const PersonRef& added : people)
    VARNOK_CHECK(store->addRecord(added).ok());
  VARNOK_CHECK(store->save().ok());
}

}  // namespace varnok
