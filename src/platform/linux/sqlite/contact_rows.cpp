#include "platform/linux/sqlite/contact_rows.h"

#include <algorithm>
#include <charconv>

namespace varnok {
namespace {

// A window ends early when its texts reach so many bytes.
constexpr std::size_t kWindowBytes = 1U << 20U;

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

}  // namespace

ContactRows::ContactRows(Database& database)
    : personScan_(database.prepare(kPersonScan)), entryScan_(database.prepare(kEntryScan)) {}

void ContactRows::clear() {
  persons_.clear();
  entries_.clear();
  bytes_.clear();
  lastFound_ = 0;
  first_ = 0;
  last_ = -1;
}

Status ContactRows::load(RecordID first, int count) {
  clear();
  if (Status status = loadPersons(first, count); !status.ok()) return status;
  Status status = persons_.empty() ? Status() : loadEntries();
  if (!status.ok()) {
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
    if (bytes_.size() > kWindowBytes) break;
  }
  personScan_.reset();
  return personScan_.status();
}

Status ContactRows::loadEntries() {
  std::size_t index = 0;
  entryScan_.bind(persons_.front().id).bind(persons_.back().id);
  while (entryScan_.step()) {
    const auto id = static_cast<RecordID>(entryScan_.integer(0));
    const auto property = propertyWithNumber(entryScan_.integer(1));
    // A person whose entries make the window too large is read whole; later
    // ones are left for the next window.
    const bool next = persons_[index].id != id;
    if (next && bytes_.size() > 2 * kWindowBytes) {
      persons_.resize(index + 1);
      break;
    }
    while (index < persons_.size() && persons_[index].id < id) {
      if (++index == persons_.size()) break;
      persons_[index].firstEntry = persons_[index].endEntry = static_cast<std::uint32_t>(entries_.size());
    }
    if (index == persons_.size()) break;
    if (persons_[index].id != id || !property) continue;
    entries_.push_back({*property, keep(entryScan_.text(2)), keep(entryScan_.text(3))});
    persons_[index].endEntry = static_cast<std::uint32_t>(entries_.size());
  }
  entryScan_.reset();
  return entryScan_.status();
}

ContactRows::Text ContactRows::keep(std::optional<std::string_view> text) {
  if (!text) return {};
  const Text kept{static_cast<std::uint32_t>(bytes_.size()), static_cast<std::uint32_t>(text->size())};
  bytes_ += *text;
  return kept;
}

std::optional<std::string> ContactRows::textOf(Text text) const {
  if (text.length == Text::kAbsent) return std::nullopt;
  return std::string(viewOf(text));
}

const ContactRows::Person* ContactRows::find(RecordID id) const {
  if (lastFound_ < persons_.size() && persons_[lastFound_].id == id) return &persons_[lastFound_];
  const auto found = std::ranges::lower_bound(persons_, id, {}, &Person::id);
  if (found == persons_.end() || found->id != id) return nullptr;
  lastFound_ = static_cast<std::size_t>(found - persons_.begin());
  return &*found;
}

bool ContactRows::hasImage(RecordID id) const {
  const Person* person = find(id);
  return person != nullptr && person->hasImage;
}

std::optional<PropertyValue> ContactRows::value(RecordID id, PropertyID property) const {
  const Person* person = find(id);
  if (person == nullptr) return std::nullopt;
  const int number = static_cast<int>(property);
  if (number <= kTextColumns) return textOf(person->texts[static_cast<std::size_t>(number - 1)]);
  if (property == kABPersonBirthdayProperty) {
    if (!person->birthday) return std::nullopt;
    return Instant(std::chrono::seconds(*person->birthday));
  }
  if (property == kABPersonKindProperty) return person->kind;
  return listOf(*person, propertyOf(property));
}

std::optional<std::string_view> ContactRows::text(RecordID id, PropertyID property) const {
  const Person* person = find(id);
  const auto index = static_cast<std::size_t>(property) - 1;
  if (person == nullptr || index >= person->texts.size()) return std::nullopt;
  const Text text = person->texts[index];
  return text.length == Text::kAbsent ? std::nullopt : std::optional(viewOf(text));
}

std::optional<PropertyValue> ContactRows::listOf(const Person& person, const Property& property) const {
  const std::span<const Entry> entries = entriesOf(person, property.id);
  if (entries.empty()) return std::nullopt;
  MultiValue list{property.type, {}};
  list.entries.reserve(entries.size());
  for (const Entry& entry : entries) {
    list.entries.push_back({textOf(entry.label), entryValue(entry.value, property.type)});
  }
  return list;
}

void ContactRows::views(RecordID id, PropertyID property, std::vector<EntryView>& views) const {
  const Person* person = find(id);
  if (person == nullptr) return;
  const PropertyType type = propertyOf(property).type;
  for (const Entry& entry : entriesOf(*person, property)) {
    EntryView& view = views.emplace_back();
    if (entry.label.length != Text::kAbsent) view.label = viewOf(entry.label);
    view.text = viewOf(entry.value);
    if (type == PropertyType::multiDateTime) view.instant = Instant(std::chrono::seconds(decimal(view.text)));
    if (type == PropertyType::multiDictionary) view.dictionary = DictionaryView(view.text);
  }
}

std::span<const ContactRows::Entry> ContactRows::entriesOf(const Person& person, PropertyID property) const {
  const auto begin = entries_.begin() + person.firstEntry;
  const auto end = entries_.begin() + person.endEntry;
  const auto first = std::find_if(begin, end, [&](const Entry& entry) { return entry.property == property; });
  const auto last = std::find_if(first, end, [&](const Entry& entry) { return entry.property != property; });
  return {first, last};
}

EntryValue ContactRows::entryValue(Text text, PropertyType listType) const {
  const std::string_view bytes = viewOf(text);
  if (listType == PropertyType::multiDateTime) return Instant(std::chrono::seconds(decimal(bytes)));
  if (listType == PropertyType::multiDictionary) return decodeDictionary(bytes);
  return std::string(bytes);
}

}  // namespace varnok
