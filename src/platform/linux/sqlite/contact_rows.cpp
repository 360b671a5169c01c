#include "platform/linux/sqlite/contact_rows.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace varnok {
namespace {

// A window ends early when its texts reach so many bytes.
constexpr std::size_t kWindowBytes = 1U << 20U;

// Room for the texts of a usual window, photos apart. Taken from the system when
// it is written to.
constexpr std::size_t kUsualWindowBytes = kWindowBytes / 4;

constexpr std::string_view kPersonScan =
    "SELECT id, first_name, last_name, middle_name, prefix, suffix, nickname, first_name_phonetic, "
    "last_name_phonetic, organization, department, job_title, note, birthday, kind, image "
    "FROM person WHERE id >= ?1 ORDER BY id LIMIT ?2";

constexpr std::string_view kEntryScan =
    "SELECT person, property, label, value FROM entry WHERE person BETWEEN ?1 AND ?2 "
    "ORDER BY person, property, position";

std::int64_t decimal(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

EntryValue entryValue(const EntryView& entry, PropertyType listType) {
  if (listType == PropertyType::multiDateTime) return entry.instant;
  if (listType == PropertyType::multiDictionary) return decodeDictionary(entry.text);
  return std::string(entry.text);
}

}  // namespace

ContactRows::ContactRows(Database& database)
    : personScan_(database.prepare(kPersonScan)),
      entryScan_(database.prepare(kEntryScan)),
      firstTexts_(std::make_unique_for_overwrite<std::byte[]>(kUsualWindowBytes)),
      texts_(firstTexts_.get(), kUsualWindowBytes) {}

void ContactRows::clear() {
  persons_.clear();
  forgetEntries();
  texts_.release();
  textBytes_ = 0;
  lastFound_ = 0;
  first_ = 0;
  last_ = -1;
}

Status ContactRows::load(RecordID first, int count) {
  clear();
  if (Status status = loadPersons(first, count); !status.ok()) {
    clear();
    return status;
  }
  // Also says that nobody has an identifier between `first` and the first found.
  first_ = first;
  last_ = persons_.empty() ? first : persons_.back().id;
  return {};
}

Status ContactRows::loadPersons(RecordID first, int count) {
  personScan_.bind(first).bind(count);
  while (personScan_.step()) {
    Person& person = persons_.emplace_back();
    person.id = static_cast<RecordID>(personScan_.integer(0));
    for (int i = 0; i < kTextColumns; ++i)
      person.texts[static_cast<std::size_t>(i)] = keep(personScan_.text(i + 1));
    if (!personScan_.isNull(kBirthdayColumn)) person.birthday = personScan_.integer(kBirthdayColumn);
    if (!personScan_.isNull(kKindColumn)) person.kind = personScan_.integer(kKindColumn);
    person.hasImage = !personScan_.isNull(kImageColumn);
    if (textBytes_ > kWindowBytes) break;
  }
  personScan_.reset();
  return personScan_.status();
}

Status ContactRows::loadEntries(RecordID id) {
  if (id >= firstWithEntries_) return {};
  forgetEntries();
  if (Status status = scanEntries(indexOf(id)); !status.ok()) {
    forgetEntries();
    return status;
  }
  firstWithEntries_ = id;
  last_ = persons_.back().id;
  return {};
}

void ContactRows::forgetEntries() {
  entries_.clear();
  properties_.clear();
  for (Person& person : persons_)
    person.firstEntry = person.endEntry = 0;
  firstWithEntries_ = std::numeric_limits<RecordID>::max();
}

Status ContactRows::scanEntries(std::size_t index) {
  entryScan_.bind(persons_[index].id).bind(persons_.back().id);
  while (entryScan_.step()) {
    const auto id = static_cast<RecordID>(entryScan_.integer(0));
    const auto property = propertyWithNumber(entryScan_.integer(1));
    // A person whose entries make the window too large is read whole; later
    // ones are left for the next window.
    const bool next = persons_[index].id != id;
    if (next && textBytes_ > 2 * kWindowBytes) {
      persons_.resize(index + 1);
      break;
    }
    while (index < persons_.size() && persons_[index].id < id) {
      if (++index == persons_.size()) break;
      persons_[index].firstEntry = persons_[index].endEntry = static_cast<std::uint32_t>(entries_.size());
    }
    if (index == persons_.size()) break;
    if (persons_[index].id != id || !property) continue;
    addEntry(*property, entryScan_.text(2), entryScan_.text(3).value_or(std::string_view()));
    persons_[index].endEntry = static_cast<std::uint32_t>(entries_.size());
  }
  entryScan_.reset();
  return entryScan_.status();
}

void ContactRows::addEntry(PropertyID property, Text label, std::string_view value) {
  EntryView& entry = entries_.emplace_back();
  properties_.push_back(property);
  entry.label = keep(label);
  entry.text = *keep(value);
  const PropertyType type = propertyOf(property).type;
  if (type == PropertyType::multiDateTime) entry.instant = Instant(std::chrono::seconds(decimal(entry.text)));
  if (type == PropertyType::multiDictionary) entry.dictionary = DictionaryView(entry.text);
}

ContactRows::Text ContactRows::keep(Text text) {
  if (!text || text->empty()) return text ? Text("") : std::nullopt;
  auto* bytes = static_cast<char*>(texts_.allocate(text->size(), /*alignment=*/1));
  std::memcpy(bytes, text->data(), text->size());
  textBytes_ += text->size();
  return std::string_view(bytes, text->size());
}

// A pass goes from one person to the next.
const ContactRows::Person* ContactRows::find(RecordID id) const {
  for (std::size_t guess = lastFound_; guess < persons_.size() && guess <= lastFound_ + 1; ++guess) {
    if (persons_[guess].id != id) continue;
    lastFound_ = guess;
    return &persons_[guess];
  }
  const std::size_t index = indexOf(id);
  if (index == persons_.size() || persons_[index].id != id) return nullptr;
  lastFound_ = index;
  return &persons_[index];
}

std::size_t ContactRows::indexOf(RecordID id) const {
  return static_cast<std::size_t>(std::ranges::lower_bound(persons_, id, {}, &Person::id) - persons_.begin());
}

bool ContactRows::hasImage(RecordID id) const {
  const Person* person = find(id);
  return person != nullptr && person->hasImage;
}

std::optional<PropertyValue> ContactRows::value(RecordID id, PropertyID property) const {
  const Person* person = find(id);
  if (person == nullptr) return std::nullopt;
  if (property == kABPersonBirthdayProperty) {
    if (!person->birthday) return std::nullopt;
    return Instant(std::chrono::seconds(*person->birthday));
  }
  if (property == kABPersonKindProperty) return person->kind;
  const Property& known = propertyOf(property);
  if (isMultiValued(known.type)) return listOf(*person, known);
  const Text text = this->text(id, property);
  return text ? std::optional<PropertyValue>(std::string(*text)) : std::nullopt;
}

std::optional<std::string_view> ContactRows::text(RecordID id, PropertyID property) const {
  const Person* person = find(id);
  const auto index = static_cast<std::size_t>(property) - 1;
  return person == nullptr || index >= person->texts.size() ? std::nullopt : person->texts[index];
}

std::optional<PropertyValue> ContactRows::listOf(const Person& person, const Property& property) const {
  const std::span<const EntryView> entries = entriesOf(person, property.id);
  if (entries.empty()) return std::nullopt;
  MultiValue list{property.type, {}};
  list.entries.reserve(entries.size());
  for (const EntryView& entry : entries) {
    list.entries.push_back(
        {entry.label ? std::optional<std::string>(*entry.label) : std::nullopt, entryValue(entry, property.type)});
  }
  return list;
}

std::span<const EntryView> ContactRows::entries(RecordID id, PropertyID property) const {
  const Person* person = find(id);
  return person == nullptr ? std::span<const EntryView>() : entriesOf(*person, property);
}

std::span<const EntryView> ContactRows::entriesOf(const Person& person, PropertyID property) const {
  std::size_t first = person.firstEntry;
  while (first < person.endEntry && properties_[first] != property)
    ++first;
  std::size_t end = first;
  while (end < person.endEntry && properties_[end] == property)
    ++end;
  return std::span(entries_).subspan(first, end - first);
}

}  // namespace varnok
