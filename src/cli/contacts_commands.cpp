#include <boost/json.hpp>

#include <fmt/format.h>

#include "cli/commands.h"
#include "contacts/address_book.h"

namespace varnok {
namespace {

namespace json = boost::json;

json::value jsonOf(const std::string& text) {
  return json::value(jsonText(text));
}
json::value jsonOf(Instant instant) {
  return json::value(utcText(instant));
}
json::value jsonOf(std::int64_t number) {
  return number;
}
json::value jsonOf(double number) {
  return number;
}

json::value jsonOf(const Dictionary& dictionary) {
  json::object object;
  for (const auto& [key, value] : dictionary.entries())
    object[jsonText(key)] = jsonText(value);
  return object;
}

json::value jsonOf(const MultiValue& list) {
  json::array entries;
  for (const MultiValueEntry& entry : list.entries) {
    json::value label;
    if (entry.label) label = jsonText(*entry.label);
    entries.push_back({{"label", label}, {"value", std::visit([](const auto& v) { return jsonOf(v); }, entry.value)}});
  }
  return entries;
}

std::string textOf(const json::value& value) {
  return value.is_string() ? shown(std::string_view(value.get_string())) : shown(json::serialize(value));
}

json::value imageOf(const PersonRef& person, std::string& text) {
  const std::optional<std::string> image = ABPersonCopyImageData(person);
  if (!image) return nullptr;
  const char* type = imageTypeOf(*image) == ImageType::png ? "png" : "jpeg";
  text += fmt::format("image: {}, {} bytes\n", type, image->size());
  return {{"type", type}, {"bytes", image->size()}};
}

}  // namespace

int contactsCommand(CommandContext& context) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(context.platform.services().contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(addressBook.get());
  json::array list;
  std::string text;
  for (std::size_t i = 0; i < people.size(); ++i) {
    const PersonRef person = people[i];
    const std::string name = copyText(person, kABPersonFirstNameProperty).value_or("");
    const std::string lastName = copyText(person, kABPersonLastNameProperty).value_or("");
    const RecordID id = ABRecordGetRecordID(person);
    if (context.report.json) {
      list.push_back({{"id", id}, {"name", jsonText(name)}, {"lastName", jsonText(lastName)}});
    } else {
      text += fmt::format("{}\t{}\t{}\n", id, shown(name), shown(lastName));
    }
  }
  if (!addressBook->readStatus().ok()) return context.report.failure(addressBook->readStatus());
  context.report.result(list, text);
  return kDone;
}

int contactsShowCommand(CommandContext& context, RecordID id) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(context.platform.services().contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  const PersonRef person = ABAddressBookGetPersonWithRecordID(addressBook.get(), id);
  if (person == nullptr) return context.report.failure(fmt::format("there is no contact {}", id));
  json::object properties;
  std::string text = fmt::format("id: {}\n", id);
  for (const Property& property : allProperties()) {
    const auto value = ABRecordCopyValue(person, property.id);
    if (!value) continue;
    const json::value written = std::visit([](const auto& v) { return jsonOf(v); }, *value);
    properties[std::string(property.name)] = written;
    if (!written.is_array()) text += fmt::format("{}: {}\n", property.name, textOf(written));
    for (const json::value& entry : written.is_array() ? written.get_array() : json::array()) {
      text += fmt::format("{} [{}]: {}\n", property.name, textOf(entry.at("label")), textOf(entry.at("value")));
    }
  }
  const json::value image = imageOf(person, text);
  if (!addressBook->readStatus().ok()) return context.report.failure(addressBook->readStatus());
  context.report.result({{"id", id}, {"properties", properties}, {"image", image}}, text);
  return kDone;
}

}  // namespace varnok
