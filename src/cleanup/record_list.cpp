#include "cleanup/record_list.h"

#include <algorithm>

#include "cleanup/white_space.h"
#include "contacts/address_book.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

struct Named {
  RecordID id = kInvalidRecordID;
  const std::string* title = nullptr;  // A key of the list's sections.
  std::string sortKey;
};

// The bytes of the first character of a text that is valid UTF-8.
std::string_view firstCharacter(std::string_view text) {
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; };
  const auto end = std::find_if_not(text.begin() + (text.empty() ? 0 : 1), text.end(), isContinuation);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// Sorts people as ABPersonComparePeopleByName does: by the sorting name, then by
// the other one, then by the organisation.
class PersonSorter {
 public:
  PersonSorter(SortOrdering ordering, const TextCollation& collation) : ordering_(ordering), collation_(collation) {}

  void read(const PersonRef& person) {
    const bool byFirstName = ordering_ == SortOrdering::byFirstName;
    name_ = nameOr(person, byFirstName ? kABPersonFirstNameProperty : kABPersonLastNameProperty);
    other_ = nameOr(person, byFirstName ? kABPersonLastNameProperty : kABPersonFirstNameProperty);
    if (name_.empty()) std::swap(name_, other_);
    organization_ = nameOr(person, kABPersonOrganizationProperty);
  }

  std::string sortKey() const {
    return collation_.sortKey(name_) + collation_.sortKey(other_) + collation_.sortKey(organization_);
  }

  std::string title() const {
    std::string copy;
    return collation_.upperCase(firstCharacter(validUTF8(name_, copy)));
  }

 private:
  // Empty when it is missing or blank.
  static std::string nameOr(const PersonRef& person, PropertyID property) {
    const std::string_view name = viewText(person, property).value_or("");
    return std::string(trimmed(name).empty() ? std::string_view() : name);
  }

  SortOrdering ordering_;
  const TextCollation& collation_;
  std::string name_;
  std::string other_;
  std::string organization_;
};

void sortIndexes(std::vector<std::string>& indexes, const TextCollation& collation) {
  std::ranges::stable_sort(indexes, {}, [&](const std::string& title) { return collation.sortKey(title); });
}

}  // namespace

RecordList loadRecordList(ContactStoreProvider& contacts, const TextCollation& collation) {
  RecordList list;
  list.addressBook = ABAddressBookCreateWithOptions(contacts);
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(list.addressBook.get());
  std::vector<Named> sorted;
  sorted.reserve(people.size());
  PersonSorter sorter(ABPersonGetSortOrdering(contacts), collation);
  for (std::size_t i = 0; i < people.size(); ++i) {
    sorter.read(people[i]);
    const auto section = list.records.try_emplace(sorter.title()).first;
    sorted.push_back({people.ids()[i], &section->first, sorter.sortKey()});
  }
  std::ranges::stable_sort(sorted, {}, &Named::sortKey);
  list.people.reserve(sorted.size());
  for (const Named& person : sorted) {
    std::vector<RecordID>& section = list.records.find(*person.title)->second;
    if (section.empty()) list.indexes.push_back(*person.title);
    section.push_back(person.id);
    list.people.push_back(person.id);
  }
  sortIndexes(list.indexes, collation);
  return list;
}

}  // namespace varnok
