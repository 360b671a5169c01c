// The operations on the address book, under the names the system gives them.
//
// A null handle (no access, or a store that cannot be opened) reads as an empty
// book and refuses every change; a null person reads as one without anything.
// That rule stands here and nowhere else. What is called Copy or Create gives
// the caller a value of its own.

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "contacts/contact_store.h"

namespace varnok {

AuthorizationStatus ABAddressBookGetAuthorizationStatus(ContactStoreProvider& provider);

// `completion` runs later on any thread.
void ABAddressBookRequestAccessWithCompletion(ContactStoreProvider& provider,
                                              std::function<void(bool granted, const Status& error)> completion);

// Null when the store cannot be opened; `error`, where given, then says why.
std::unique_ptr<ContactStore> ABAddressBookCreateWithOptions(ContactStoreProvider& provider, Status* error = nullptr);

int ABAddressBookGetPersonCount(ContactStore* addressBook);
PersonArray ABAddressBookCopyArrayOfAllPeople(ContactStore* addressBook);
PersonRef ABAddressBookGetPersonWithRecordID(ContactStore* addressBook, RecordID id);
Status ABAddressBookAddRecord(ContactStore* addressBook, const PersonRef& person);
Status ABAddressBookRemoveRecord(ContactStore* addressBook, const PersonRef& person);
Status ABAddressBookSave(ContactStore* addressBook);

PersonRef ABPersonCreate();
RecordID ABRecordGetRecordID(const PersonRef& person);
std::optional<PropertyValue> ABRecordCopyValue(const PersonRef& person, PropertyID property);
Status ABRecordSetValue(const PersonRef& person, PropertyID property, PropertyValue value);
Status ABRecordRemoveValue(const PersonRef& person, PropertyID property);

// Prefix, given, middle and family name and suffix, or family name first where
// the store sorts so; the organisation when there is no name; else nothing.
std::optional<std::string> ABRecordCopyCompositeName(const PersonRef& person);

bool ABPersonHasImageData(const PersonRef& person);
std::optional<std::string> ABPersonCopyImageData(const PersonRef& person);
SortOrdering ABPersonGetSortOrdering(const ContactStoreProvider& provider);
PropertyType ABPersonGetTypeOfProperty(PropertyID property);

int ABMultiValueGetCount(const MultiValue& list);

// Nothing for an entry without a label, and for an index outside the list.
std::optional<std::string> ABMultiValueCopyLabelAtIndex(const MultiValue& list, int index);
std::optional<EntryValue> ABMultiValueCopyValueAtIndex(const MultiValue& list, int index);
PropertyType ABMultiValueGetPropertyType(const MultiValue& list);

// Nothing when the code is not that of a multi-valued type.
std::optional<MultiValue> ABMultiValueCreateMutable(int typeCode);
MultiValue ABMultiValueCreateMutableCopy(const MultiValue& list);

// False, and the list as it was, when the value is not of the list's type or
// the index is outside the list.
bool ABMultiValueAddValueAndLabel(MultiValue& list, EntryValue value, std::optional<std::string> label);
bool ABMultiValueReplaceValueAtIndex(MultiValue& list, EntryValue value, int index);
bool ABMultiValueRemoveValueAndLabelAtIndex(MultiValue& list, int index);

// The text of a text property; nothing when it is absent.
std::optional<std::string> copyText(const PersonRef& person, PropertyID property);

// The same without a copy, and the entries of a multi-valued property: valid
// until the next read through the store and the next change of the person.
std::optional<std::string_view> viewText(const PersonRef& person, PropertyID property);
std::span<const EntryView> viewEntries(const PersonRef& person, PropertyID property);

// The entries of a multi-valued property; an empty list when it is absent.
MultiValue copyList(const PersonRef& person, PropertyID property);

}  // namespace varnok
