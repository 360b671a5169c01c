#include "web/access/address_book_editor.h"

#include <algorithm>
#include <boost/json.hpp>
#include <cmath>
#include <limits>
#include <vector>

#include "export/html_exporter.h"

namespace varnok {
namespace {

namespace json = boost::json;

constexpr std::size_t kDeepest = 128;  // Levels of a request.

std::int32_t truncated(double number) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(number)) return 0;
  return static_cast<std::int32_t>(std::clamp<double>(std::trunc(number), Limits::min(), Limits::max()));
}

// A number, or the text of one; 0 for anything else.
std::int32_t integerOf(const json::value* value) {
  if (value == nullptr) return 0;
  if (const json::string* text = value->if_string()) return leadingInteger({text->data(), text->size()});
  if (value->is_number()) return truncated(value->to_number<double>());
  return 0;
}

std::optional<std::string> textOf(const json::value* value) {
  const json::string* text = value == nullptr ? nullptr : value->if_string();
  return text == nullptr ? std::nullopt : std::optional<std::string>(std::in_place, text->data(), text->size());
}

struct EditItem {
  PropertyID property;
  std::string value;                  // Empty: none.
  std::optional<std::int32_t> index;  // Of an entry; nothing for a text of the person.
  std::optional<std::string> label;
};

// Nothing when the item names no property or has a member of a kind that it
// cannot have.
std::optional<EditItem> itemOf(const json::value& value) {
  const json::object* object = value.if_object();
  if (object == nullptr) return std::nullopt;
  const auto property = propertyWithNumber(integerOf(object->if_contains("name")));
  const json::value* text = object->if_contains("value");
  const json::value* index = object->if_contains("type");
  if (!property || (text != nullptr && !text->is_string() && !text->is_null())) return std::nullopt;
  if (index != nullptr && !index->is_string() && !index->is_number()) return std::nullopt;
  return EditItem{*property, textOf(text).value_or(""),
                  index == nullptr ? std::nullopt : std::optional(integerOf(index)),
                  textOf(object->if_contains("identifier"))};
}

struct SaveRequest {
  RecordID id = 0;
  std::vector<EditItem> items;
};

SaveRequest parsed(std::string_view text) {
  json::monotonic_resource memory;
  json::parse_options options;
  options.max_depth = kDeepest;
  json::error_code error;
  const json::value document = json::parse(json::string_view(text.data(), text.size()), error, &memory, options);
  SaveRequest request;
  const json::object* object = error ? nullptr : document.if_object();
  if (object == nullptr) return request;
  request.id = integerOf(object->if_contains("id"));
  const json::value* records = object->if_contains("records");
  const json::array* items = records == nullptr ? nullptr : records->if_array();
  if (items == nullptr) return request;
  for (const json::value& value : *items) {
    if (std::optional<EditItem> item = itemOf(value)) request.items.push_back(std::move(*item));
  }
  return request;
}

void editField(const PersonRef& person, const EditItem& item) {
  const Status status = item.value.empty() ? ABRecordRemoveValue(person, item.property)
                                           : ABRecordSetValue(person, item.property, item.value);
  status.ignore("a value that does not fit its property is passed over");
}

void setEntries(const PersonRef& person, PropertyID property, MultiValue list) {
  ABRecordSetValue(person, property, std::move(list)).ignore("the list was read from this property");
}

// An entry is added or replaced; one that became empty is left for later.
void editEntry(const PersonRef& person, const EditItem& item) {
  MultiValue list = copyList(person, item.property);
  const bool changed = *item.index == -1 ? ABMultiValueAddValueAndLabel(list, item.value, item.label)
                                         : ABMultiValueReplaceValueAtIndex(list, item.value, *item.index);
  if (changed) setEntries(person, item.property, std::move(list));
}

void removeEntry(const PersonRef& person, const EditItem& item) {
  MultiValue list = copyList(person, item.property);
  if (ABMultiValueRemoveValueAndLabelAtIndex(list, *item.index)) setEntries(person, item.property, std::move(list));
}

void applyItems(const std::vector<EditItem>& items, const PersonRef& person) {
  std::vector<const EditItem*> removals;
  for (const EditItem& item : items) {
    if (!item.index) {
      editField(person, item);
    } else if (!isMultiValued(propertyOf(item.property).type)) {
      continue;  // A property without entries.
    } else if (!item.value.empty()) {
      editEntry(person, item);
    } else if (*item.index != -1) {
      removals.push_back(&item);
    }
  }
  // From the end on, so that no removal moves an entry that is still to go.
  std::ranges::stable_sort(removals, std::greater(), [](const EditItem* item) { return *item->index; });
  for (const EditItem* item : removals)
    removeEntry(person, *item);
}

}  // namespace

AddressBookEditor::Outcome AddressBookEditor::edit(std::string_view text) {
  const SaveRequest request = parsed(text);
  const std::scoped_lock lock(mutex_);
  Outcome outcome;
  const auto addressBook = ABAddressBookCreateWithOptions(contacts_, &outcome.status);
  PersonRef person = ABAddressBookGetPersonWithRecordID(addressBook.get(), request.id);
  const bool isNew = request.id == kNewPerson;
  if (person == nullptr && isNew) person = ABPersonCreate();
  if (person != nullptr) applyItems(request.items, person);
  if (isNew) ABAddressBookAddRecord(addressBook.get(), person).ignore("the save reports it");
  if (addressBook != nullptr) outcome.status = ABAddressBookSave(addressBook.get());
  if (isNew) outcome.recordID = ABRecordGetRecordID(person);
  return outcome;
}

bool AddressBookEditor::remove(std::string_view id) {
  const std::scoped_lock lock(mutex_);
  const auto addressBook = ABAddressBookCreateWithOptions(contacts_);
  const PersonRef person = ABAddressBookGetPersonWithRecordID(addressBook.get(), leadingInteger(id));
  if (!ABAddressBookRemoveRecord(addressBook.get(), person).ok()) return false;
  // Quirk: the answer speaks of the removal alone.
  ABAddressBookSave(addressBook.get()).ignore("the pages show the person again when they read the list anew");
  return true;
}

}  // namespace varnok
