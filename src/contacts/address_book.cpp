#include "contacts/address_book.h"

#include <array>

namespace varnok {
namespace {

Status noAccess() {
  return {Status::Code::accessDenied, "the address book is not open"};
}
Status noPerson() {
  return {Status::Code::invalidArgument, "there is no such person"};
}

bool has(const MultiValue& list, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < list.entries.size();
}

}  // namespace

AuthorizationStatus ABAddressBookGetAuthorizationStatus(ContactStoreProvider& provider) {
  return provider.authorizationStatus();
}

void ABAddressBookRequestAccessWithCompletion(ContactStoreProvider& provider,
                                              std::function<void(bool granted, const Status& error)> completion) {
  provider.requestAccess(std::move(completion));
}

std::unique_ptr<ContactStore> ABAddressBookCreateWithOptions(ContactStoreProvider& provider, Status* error) {
  Status status;
  auto addressBook = provider.open(status);
  if (error != nullptr) *error = status;
  return addressBook;
}

int ABAddressBookGetPersonCount(ContactStore* addressBook) {
  return addressBook == nullptr ? 0 : addressBook->personCount();
}

PersonArray ABAddressBookCopyArrayOfAllPeople(ContactStore* addressBook) {
  return addressBook == nullptr ? PersonArray() : addressBook->allPeople();
}

PersonRef ABAddressBookGetPersonWithRecordID(ContactStore* addressBook, RecordID id) {
  return addressBook == nullptr ? nullptr : addressBook->personWithRecordID(id);
}

Status ABAddressBookAddRecord(ContactStore* addressBook, const PersonRef& person) {
  return addressBook == nullptr ? noAccess() : addressBook->addRecord(person);
}

Status ABAddressBookRemoveRecord(ContactStore* addressBook, const PersonRef& person) {
  return addressBook == nullptr ? noAccess() : addressBook->removeRecord(person);
}

Status ABAddressBookSave(ContactStore* addressBook) {
  return addressBook == nullptr ? noAccess() : addressBook->save();
}

PersonRef ABPersonCreate() {
  return std::make_shared<ContactRecord>();
}

RecordID ABRecordGetRecordID(const PersonRef& person) {
  return person == nullptr ? kInvalidRecordID : person->recordID();
}

std::optional<PropertyValue> ABRecordCopyValue(const PersonRef& person, PropertyID property) {
  return person == nullptr ? std::nullopt : person->value(property);
}

Status ABRecordSetValue(const PersonRef& person, PropertyID property, PropertyValue value) {
  return person == nullptr ? noPerson() : person->setValue(property, std::move(value));
}

Status ABRecordRemoveValue(const PersonRef& person, PropertyID property) {
  return person == nullptr ? noPerson() : person->removeValue(property);
}

std::optional<std::string> ABRecordCopyCompositeName(const PersonRef& person) {
  constexpr std::array kGivenFirst{kABPersonPrefixProperty, kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                   kABPersonLastNameProperty, kABPersonSuffixProperty};
  constexpr std::array kFamilyFirst{kABPersonPrefixProperty, kABPersonLastNameProperty, kABPersonFirstNameProperty,
                                    kABPersonMiddleNameProperty, kABPersonSuffixProperty};
  if (person == nullptr) return std::nullopt;
  const ContactStore* store = person->store();
  const bool familyFirst = store != nullptr && store->sortOrdering() == SortOrdering::byLastName;
  std::string name;
  for (const PropertyID part : familyFirst ? kFamilyFirst : kGivenFirst) {
    const std::optional<std::string_view> text = person->text(part);
    if (!text || text->empty()) continue;
    if (!name.empty()) name += ' ';
    name += *text;
  }
  if (name.empty()) name = copyText(person, kABPersonOrganizationProperty).value_or("");
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

bool ABPersonHasImageData(const PersonRef& person) {
  return person != nullptr && person->hasImage();
}

std::optional<std::string> ABPersonCopyImageData(const PersonRef& person) {
  return person == nullptr ? std::nullopt : person->image();
}

SortOrdering ABPersonGetSortOrdering(const ContactStoreProvider& provider) {
  return provider.sortOrdering();
}

PropertyType ABPersonGetTypeOfProperty(PropertyID property) {
  return propertyOf(property).type;
}

int ABMultiValueGetCount(const MultiValue& list) {
  return static_cast<int>(list.entries.size());
}

std::optional<std::string> ABMultiValueCopyLabelAtIndex(const MultiValue& list, int index) {
  return has(list, index) ? list.entries[static_cast<std::size_t>(index)].label : std::nullopt;
}

std::optional<EntryValue> ABMultiValueCopyValueAtIndex(const MultiValue& list, int index) {
  if (!has(list, index)) return std::nullopt;
  return list.entries[static_cast<std::size_t>(index)].value;
}

PropertyType ABMultiValueGetPropertyType(const MultiValue& list) {
  return list.type;
}

std::optional<MultiValue> ABMultiValueCreateMutable(int typeCode) {
  for (const auto type : {PropertyType::multiText, PropertyType::multiDateTime, PropertyType::multiDictionary}) {
    if (static_cast<int>(type) == typeCode) return MultiValue{type, {}};
  }
  return std::nullopt;
}

MultiValue ABMultiValueCreateMutableCopy(const MultiValue& list) {
  return list;
}

bool ABMultiValueAddValueAndLabel(MultiValue& list, EntryValue value, std::optional<std::string> label) {
  if (!fits(value, list.type)) return false;
  list.entries.push_back({std::move(label), std::move(value)});
  return true;
}

bool ABMultiValueReplaceValueAtIndex(MultiValue& list, EntryValue value, int index) {
  if (!has(list, index) || !fits(value, list.type)) return false;
  list.entries[static_cast<std::size_t>(index)].value = std::move(value);
  return true;
}

bool ABMultiValueRemoveValueAndLabelAtIndex(MultiValue& list, int index) {
  if (!has(list, index)) return false;
  list.entries.erase(list.entries.begin() + index);
  return true;
}

std::optional<std::string> copyText(const PersonRef& person, PropertyID property) {
  const auto text = viewText(person, property);
  return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::optional<std::string_view> viewText(const PersonRef& person, PropertyID property) {
  return person == nullptr ? std::nullopt : person->text(property);
}

std::span<const EntryView> viewEntries(const PersonRef& person, PropertyID property) {
  return person == nullptr ? std::span<const EntryView>() : person->entries(property);
}

MultiValue copyList(const PersonRef& person, PropertyID property) {
  std::optional<PropertyValue> value = ABRecordCopyValue(person, property);
  if (value) {
    if (auto* list = std::get_if<MultiValue>(&*value)) return std::move(*list);
  }
  return {propertyOf(property).type, {}};
}

}  // namespace varnok
