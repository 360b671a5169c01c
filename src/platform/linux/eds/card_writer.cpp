#include "platform/linux/eds/card_writer.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>

#include "contacts/address_book.h"
#include "platform/linux/eds/card_entry.h"
#include "platform/linux/eds/card_lines.h"
#include "platform/linux/eds/card_photo.h"
#include "platform/linux/eds/exact_value.h"

namespace varnok {
namespace {

constexpr std::string_view kFileAsName = "X-EVOLUTION-FILE-AS";

std::string valueOf(const PersonRef& person, PropertyID property) {
  return cardValue(copyText(person, property).value_or(""));
}

// Takes the lines for which `goes` answers true away; where the first stood, or
// the end.
template <typename Predicate>
std::size_t eraseLines(Card& card, Predicate goes) {
  std::size_t first = card.size();
  for (std::size_t i = card.size(); i-- > 0;) {
    const auto line = splitVCardLine(card.lines()[i]);
    if (!line || !goes(*line)) continue;
    card.erase(i);
    first = i;
  }
  return std::min(first, card.size());
}

std::size_t eraseNamed(Card& card, std::string_view name) {
  return eraseLines(card, [&](const VCardLine& line) { return equalsIgnoringCase(line.name, name); });
}

std::size_t erasePart(Card& card, PropertyID part) {
  return eraseLines(card, [&](const VCardLine& line) { return partOfLine(line.name) == part; });
}

// "N" and what is made of it. The formatted name must be there, even empty.
void writeNames(Card& card, const PersonRef& person) {
  const std::size_t at = erasePart(card, kABPersonLastNameProperty);
  const std::string first = valueOf(person, kABPersonFirstNameProperty);
  const std::string last = valueOf(person, kABPersonLastNameProperty);
  const std::string whole = cardValue(ABRecordCopyCompositeName(person).value_or(""));
  card.insert(at, fmt::format("N:{};{};{};{};{}", last, first, valueOf(person, kABPersonMiddleNameProperty),
                              valueOf(person, kABPersonPrefixProperty), valueOf(person, kABPersonSuffixProperty)));
  card.insert(at, "FN:" + whole);
  // The name by which the desktop sorts, in its usual form.
  eraseNamed(card, kFileAsName);
  const std::string sorted = last.empty() || first.empty() ? whole : last + "\\, " + first;
  if (!sorted.empty()) card.append(fmt::format("{}:{}", kFileAsName, sorted));
}

void writeOrganization(Card& card, const PersonRef& person) {
  const std::size_t at = erasePart(card, kABPersonOrganizationProperty);
  const std::string company = valueOf(person, kABPersonOrganizationProperty);
  const std::string department = valueOf(person, kABPersonDepartmentProperty);
  if (company.empty() && department.empty()) return;
  card.insert(at, "ORG:" + company + (department.empty() ? "" : ";" + department));
}

void writeText(Card& card, const PersonRef& person, PropertyID property, std::string_view name) {
  const std::string value = valueOf(person, property);
  // A role stands in for a title that is not there, so it goes with the title only.
  const std::size_t at = value.empty() ? erasePart(card, property) : eraseNamed(card, name);
  if (!value.empty()) card.insert(at, fmt::format("{}:{}", name, value));
}

void writeBirthday(Card& card, const PersonRef& person, const Clock& clock) {
  const std::size_t at = erasePart(card, kABPersonBirthdayProperty);
  const auto value = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  const auto date = value ? cardDate(std::get<Instant>(*value), clock) : std::nullopt;
  if (date) card.insert(at, "BDAY" + *date);
}

void writeKind(Card& card, const PersonRef& person) {
  const std::size_t at = erasePart(card, kABPersonKindProperty);
  const auto kind = ABRecordCopyValue(person, kABPersonKindProperty);
  if (kind && std::get<std::int64_t>(*kind) != kABPersonKindPerson) card.insert(at, "X-ABShowAs:COMPANY");
}

// The labels of groups that have no other line go with their entries.
void eraseOrphanedLabels(Card& card, const std::set<std::string>& groups) {
  for (const std::string& group : groups) {
    const auto isOfGroup = [&](const std::string& text) {
      const auto line = splitVCardLine(text);
      return line && equalsIgnoringCase(line->group, group) && !equalsIgnoringCase(line->name, kGroupLabelName);
    };
    if (std::ranges::any_of(card.lines(), isOfGroup)) continue;
    eraseLines(card, [&](const VCardLine& line) {
      return equalsIgnoringCase(line.group, group) && equalsIgnoringCase(line.name, kGroupLabelName);
    });
  }
}

// Entries that stay as they are keep their lines, with whatever parameters
// other programs have put there.
void writeList(Card& card, const PersonRef& person, PropertyID property, CardReader& reader) {
  struct OldLine {
    std::string text;
    std::optional<MultiValueEntry> entry;
  };
  std::vector<OldLine> old;
  std::set<std::string> groups;
  for (std::size_t i = 0; i < card.size(); ++i) {
    const auto line = splitVCardLine(card.lines()[i]);
    if (!line || partOfLine(line->name) != property) continue;
    old.push_back({card.lines()[i], reader.readEntry(card, i, property)});
    if (!line->group.empty()) groups.emplace(line->group);
  }
  std::size_t at = erasePart(card, property);
  // Addresses as one text each, made from the entries that go.
  if (property == kABPersonAddressProperty) at = std::min(at, eraseNamed(card, "LABEL"));
  EntryWriter writer(property, reader.clock());
  for (const MultiValueEntry& entry : copyList(person, property).entries) {
    const auto same = std::ranges::find_if(old, [&](const OldLine& line) { return line.entry == entry; });
    if (same != old.end()) {
      writer.noteUse(same->text);
      card.insert(at++, std::move(same->text));
      old.erase(same);
      continue;
    }
    for (std::string& line : writer.linesOf(entry, card))
      card.insert(at++, std::move(line));
  }
  eraseOrphanedLabels(card, groups);
}

void writePart(Card& card, const PersonRef& person, PropertyID part, CardReader& reader) {
  switch (part) {
    case kABPersonLastNameProperty: return writeNames(card, person);
    case kABPersonOrganizationProperty: return writeOrganization(card, person);
    case kABPersonNicknameProperty: return writeText(card, person, part, "NICKNAME");
    case kABPersonFirstNamePhoneticProperty: return writeText(card, person, part, "X-PHONETIC-FIRST-NAME");
    case kABPersonLastNamePhoneticProperty: return writeText(card, person, part, "X-PHONETIC-LAST-NAME");
    case kABPersonJobTitleProperty: return writeText(card, person, part, "TITLE");
    case kABPersonNoteProperty: return writeText(card, person, part, "NOTE");
    case kABPersonBirthdayProperty: return writeBirthday(card, person, reader.clock());
    case kABPersonKindProperty: return writeKind(card, person);
    default: return writeList(card, person, part, reader);
  }
}

// Says exactly what the lines do not.
void writeExactValues(Card& card, const PersonRef& wanted, CardReader& reader) {
  eraseNamed(card, kExactName);
  const PersonRef read = reader.readLines(card);
  for (const Property& property : allProperties()) {
    std::optional<PropertyValue> value = ABRecordCopyValue(wanted, property.id);
    if (value == ABRecordCopyValue(read, property.id)) continue;
    card.append(exactLine({property.id, fingerprintOf(card, partOf(property.id)), std::move(value)}));
  }
}

}  // namespace

void applyChanges(Card& card, const PersonChanges& changes, CardReader& reader) {
  const PersonRef wanted = reader.read(card);
  std::set<PropertyID> parts;
  for (const auto& [property, value] : changes.properties) {
    parts.insert(partOf(property));
    const Status status = value ? wanted->setValue(property, *value) : wanted->removeValue(property);
    status.ignore("changes hold what has been set on a person before");
  }
  // The company stands for the name of who has none.
  if (parts.contains(kABPersonOrganizationProperty)) parts.insert(kABPersonLastNameProperty);
  if (!card.valueOf("FN")) parts.insert(kABPersonLastNameProperty);
  for (const PropertyID part : parts)
    writePart(card, wanted, part, reader);
  writeExactValues(card, wanted, reader);
  if (changes.image) setPhoto(card, *changes.image);
}

}  // namespace varnok
