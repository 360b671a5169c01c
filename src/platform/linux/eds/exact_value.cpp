#include "platform/linux/eds/exact_value.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "backup/files/vnk_util.h"
#include "contacts/entry_view.h"
#include "import/vcard_line.h"
#include "import/vcard_text.h"
#include "platform/linux/eds/card_lines.h"

namespace varnok {
namespace {

// FNV-1a: the same on every machine and in every version.
class Hash {
 public:
  void add(std::string_view text) {
    for (const char c : text)
      addByte(static_cast<unsigned char>(c));
    addByte(0x1F);
  }
  std::uint64_t value() const { return value_; }

 private:
  void addByte(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3U; }
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

std::string numberText(std::int64_t number) {
  return std::to_string(number);
}

std::optional<std::int64_t> parsedNumber(std::string_view text) {
  std::int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string encoded(const EntryValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* instant = std::get_if<Instant>(&value)) return numberText(instant->time_since_epoch().count());
  return encodeDictionary(std::get<Dictionary>(value));
}

std::optional<EntryValue> decodedEntry(std::string_view text, PropertyType type) {
  if (type == PropertyType::multiText) return EntryValue(std::string(text));
  if (type == PropertyType::multiDictionary) return EntryValue(decodeDictionary(text));
  const auto seconds = parsedNumber(text);
  return seconds ? std::optional<EntryValue>(Instant(std::chrono::seconds(*seconds))) : std::nullopt;
}

// A list is a dictionary of its entries by number, each a dictionary in turn.
std::string encoded(const MultiValue& list) {
  Dictionary entries;
  for (std::size_t i = 0; i < list.entries.size(); ++i) {
    Dictionary pieces{{"value", encoded(list.entries[i].value)}};
    if (list.entries[i].label) pieces.put("label", *list.entries[i].label);
    entries.put(std::to_string(i), encodeDictionary(pieces));
  }
  return encodeDictionary(entries);
}

std::optional<PropertyValue> decodedList(std::string_view text, PropertyType type) {
  MultiValue list{type, {}};
  const Dictionary entries = decodeDictionary(text);
  for (const auto& [number, entry] : entries.entries()) {
    const Dictionary pieces = decodeDictionary(entry);
    const std::string* label = pieces.find("label");
    auto value = decodedEntry(pieces.textOr("value"), type);
    if (!value) return std::nullopt;
    list.entries.push_back({label == nullptr ? std::nullopt : std::optional(*label), *std::move(value)});
  }
  return list.entries.empty() ? std::nullopt : std::optional<PropertyValue>(std::move(list));
}

std::string encoded(const PropertyValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* instant = std::get_if<Instant>(&value)) return numberText(instant->time_since_epoch().count());
  if (const auto* number = std::get_if<std::int64_t>(&value)) return numberText(*number);
  return encoded(std::get<MultiValue>(value));
}

std::optional<PropertyValue> decodedValue(std::string_view text, PropertyType type) {
  if (type == PropertyType::text) return PropertyValue(std::string(text));
  if (isMultiValued(type)) return decodedList(text, type);
  const auto number = parsedNumber(text);
  if (!number) return std::nullopt;
  if (type == PropertyType::integer) return PropertyValue(*number);
  return PropertyValue(Instant(std::chrono::seconds(*number)));
}

// Takes the text up to the next semicolon off the front.
std::string_view takePiece(std::string_view& text) {
  const std::size_t end = text.find(';');
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return piece;
}

std::string_view labelOfGroup(const Card& card, std::string_view group) {
  for (const std::string& text : card.lines()) {
    if (!startsIgnoringCase(text, group)) continue;
    const auto line = splitVCardLine(text);
    if (line && equalsIgnoringCase(line->group, group) && equalsIgnoringCase(line->name, kGroupLabelName)) {
      return line->value;
    }
  }
  return {};
}

// Where the property is absent.
constexpr std::string_view kAbsent = "-";

}  // namespace

std::uint64_t fingerprintOf(const Card& card, PropertyID part) {
  Hash hash;
  for (const std::string& text : card.lines()) {
    const auto line = splitVCardLine(text);
    if (!line || partOfLine(line->name) != part) continue;
    std::string name(line->name);
    std::ranges::transform(name, name.begin(), upperCase);
    const VCardParameters parameters = parseVCardParameters(line->parameters);
    hash.add(name);
    hash.add(numberText(parameters.types));
    for (const std::string_view word : {parameters.otherType, parameters.serviceType, parameters.user})
      hash.add(word);
    hash.add(unescaped(line->value));
    if (!line->group.empty()) hash.add(unescaped(labelOfGroup(card, line->group)));
  }
  return hash.value();
}

std::string exactLine(const ExactValue& exact) {
  std::string line = fmt::format("{}:{};{:016x};", kExactName, propertyOf(exact.property).name, exact.fingerprint);
  if (!exact.value) return line.append(kAbsent);
  VNKUtil::appendBASE64(line, encoded(*exact.value));
  return line;
}

std::optional<ExactValue> parseExactValue(std::string_view value) {
  const std::string_view name = takePiece(value);
  const std::string_view fingerprint = takePiece(value);
  const auto properties = allProperties();
  const auto property = std::ranges::find(properties, name, &Property::name);
  ExactValue exact;
  const auto read = std::from_chars(fingerprint.data(), fingerprint.data() + fingerprint.size(), exact.fingerprint, 16);
  if (property == properties.end() || read.ec != std::errc()) return std::nullopt;
  exact.property = property->id;
  if (value == kAbsent) return exact;
  const auto bytes = decodedBase64(value);
  if (bytes) exact.value = decodedValue(*bytes, property->type);
  return exact.value ? std::optional(std::move(exact)) : std::nullopt;
}

}  // namespace varnok
