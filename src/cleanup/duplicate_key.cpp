#include "cleanup/duplicate_key.h"

#include <cstring>

#include "export/date_text.h"

namespace varnok {
namespace {

// Bytes of a key: a text is its length and its bytes, the null marker a byte that
// no length begins with; a list is the number of its entries, then the label and
// the value of each. A number is one byte, or kLong and four.
constexpr char kNull = '\xff';
constexpr char kLong = '\xfe';

constexpr std::array kProperties{
    kABPersonFirstNameProperty,  kABPersonLastNameProperty, kABPersonMiddleNameProperty,   kABPersonPrefixProperty,
    kABPersonSuffixProperty,     kABPersonNicknameProperty, kABPersonOrganizationProperty, kABPersonJobTitleProperty,
    kABPersonDepartmentProperty, kABPersonBirthdayProperty, kABPersonEmailProperty,        kABPersonPhoneProperty,
};
static_assert(kProperties.size() == DuplicateKey::kNames.size());

void appendNumber(std::string& bytes, std::size_t number) {
  if (number < static_cast<unsigned char>(kLong)) {
    bytes += static_cast<char>(number);
    return;
  }
  const auto narrow = static_cast<std::uint32_t>(number);
  char raw[sizeof narrow];
  std::memcpy(raw, &narrow, sizeof narrow);
  bytes += kLong;
  bytes.append(raw, sizeof narrow);
}

void appendText(std::string& bytes, std::optional<std::string_view> text) {
  if (text) {
    appendNumber(bytes, text->size());
    bytes += *text;
  } else {
    bytes += kNull;
  }
}

void appendBirthday(std::string& bytes, const PersonRef& person, const Clock& clock) {
  const std::optional<PropertyValue> birthday = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  const auto* instant = birthday ? std::get_if<Instant>(&*birthday) : nullptr;
  appendText(bytes, instant == nullptr ? std::nullopt : std::optional<std::string>(localDateText(*instant, clock)));
}

void appendList(std::string& bytes, const PersonRef& person, PropertyID property) {
  const std::span<const EntryView> entries = viewEntries(person, property);
  appendNumber(bytes, entries.size());
  for (const EntryView& entry : entries) {
    appendText(bytes, entry.label);
    appendText(bytes, entry.text);
  }
}

// Takes one piece after another off the bytes of a key.
class KeyReader {
 public:
  explicit KeyReader(std::string_view bytes) : rest_(bytes) {}

  KeyValue text() {
    if (rest_.front() == kNull) {
      rest_.remove_prefix(1);
      return {};
    }
    const std::uint32_t length = number();
    const std::string_view text = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return std::string(text);
  }

  KeyValue list() {
    KeyList list(number());
    for (KeyListEntry& entry : list) {
      entry.label = text();
      entry.value = text();
    }
    return list;
  }

 private:
  std::uint32_t number() {
    const char first = rest_.front();
    rest_.remove_prefix(1);
    if (first != kLong) return static_cast<unsigned char>(first);
    std::uint32_t number = 0;
    std::memcpy(&number, rest_.data(), sizeof number);
    rest_.remove_prefix(sizeof number);
    return number;
  }

  std::string_view rest_;
};

KeyValue listValue(const MultiValue& list, const Clock& clock) {
  const auto elementType = static_cast<PropertyType>(static_cast<int>(ABMultiValueGetPropertyType(list)) & 0xff);
  KeyList rendered;
  for (const MultiValueEntry& entry : list.entries) {
    KeyListEntry& added = rendered.emplace_back();
    if (entry.label) added.label = *entry.label;
    const PropertyValue value = std::visit([](const auto& held) { return PropertyValue(held); }, entry.value);
    added.value = jsonForPropertyValue(value, elementType, clock);
  }
  return rendered;
}

// As far as a double can tell them apart.
std::optional<double> numberIn(const KeyValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  const auto* real = std::get_if<double>(&value);
  return real == nullptr ? std::nullopt : std::optional(*real);
}

}  // namespace

bool operator==(const KeyValue& a, const KeyValue& b) {
  using Held = std::variant<std::monostate, std::string, std::int64_t, double, KeyList>;
  if (a.index() == b.index()) return static_cast<const Held&>(a) == static_cast<const Held&>(b);
  const std::optional<double> number = numberIn(a);
  return number && number == numberIn(b);
}

KeyValue DuplicateKey::operator[](std::string_view name) const {
  KeyReader reader(bytes_);
  if (bytes_.empty()) return {};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    KeyValue value = isMultiValued(ABPersonGetTypeOfProperty(kProperties[i])) ? reader.list() : reader.text();
    if (kNames[i] == name) return value;
  }
  return {};
}

void DuplicateKey::assign(const PersonRef& person, const Clock& clock) {
  bytes_.clear();
  for (const PropertyID property : kProperties) {
    const PropertyType type = ABPersonGetTypeOfProperty(property);
    if (isMultiValued(type)) {
      appendList(bytes_, person, property);
    } else if (type == PropertyType::dateTime) {
      appendBirthday(bytes_, person, clock);
    } else {
      appendText(bytes_, viewText(person, property));
    }
  }
}

KeyValue jsonForPropertyValue(const std::optional<PropertyValue>& value, PropertyType type, const Clock& clock) {
  if (isMultiValued(type)) {
    const auto* list = value ? std::get_if<MultiValue>(&*value) : nullptr;
    return list == nullptr ? KeyValue(KeyList()) : listValue(*list, clock);
  }
  if (!value) return {};
  if (const auto* text = std::get_if<std::string>(&*value)) return *text;
  if (const auto* integer = std::get_if<std::int64_t>(&*value)) return *integer;
  if (const auto* real = std::get_if<double>(&*value)) return *real;
  if (const auto* instant = std::get_if<Instant>(&*value)) return localDateText(*instant, clock);
  return {};
}

KeyValue jsonForProperty(PropertyID property, const PersonRef& person, const Clock& clock) {
  return jsonForPropertyValue(ABRecordCopyValue(person, property), ABPersonGetTypeOfProperty(property), clock);
}

DuplicateKey jsonForPerson(const PersonRef& person, const Clock& clock) {
  DuplicateKey key;
  key.assign(person, clock);
  return key;
}

}  // namespace varnok
