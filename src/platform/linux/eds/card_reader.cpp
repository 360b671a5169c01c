#include "platform/linux/eds/card_reader.h"

#include "contacts/address_book.h"
#include "platform/linux/eds/card_lines.h"
#include "platform/linux/eds/exact_value.h"

namespace varnok {

PersonRef CardReader::readLines(const Card& card) {
  for (const std::string& text : card.lines()) {
    const auto line = splitVCardLine(text);
    if (!line) continue;
    if (partOfLine(line->name) || equalsIgnoringCase(line->name, kGroupLabelName)) builder_.add(asKnownLine(*line));
  }
  PersonRef person = builder_.build();
  return person == nullptr ? ABPersonCreate() : person;
}

PersonRef CardReader::read(const Card& card) {
  PersonRef person = readLines(card);
  for (const std::string& text : card.lines()) {
    if (!startsIgnoringCase(text, kExactName)) continue;
    const auto line = splitVCardLine(text);
    auto exact = line && equalsIgnoringCase(line->name, kExactName) ? parseExactValue(line->value) : std::nullopt;
    if (!exact || exact->fingerprint != fingerprintOf(card, partOf(exact->property))) continue;
    const Status status = exact->value ? person->setValue(exact->property, *std::move(exact->value))
                                       : person->removeValue(exact->property);
    status.ignore("an exact value is made of its property's type");
  }
  return person;
}

std::optional<MultiValueEntry> CardReader::readEntry(const Card& card, std::size_t line, PropertyID property) {
  const auto parts = splitVCardLine(card.lines()[line]);
  if (!parts || partOfLine(parts->name) != partOf(property)) return std::nullopt;
  builder_.add(asKnownLine(*parts));
  for (const std::string& text : card.lines()) {
    if (parts->group.empty() || !startsIgnoringCase(text, parts->group)) continue;
    const auto other = splitVCardLine(text);
    if (other && equalsIgnoringCase(other->name, kGroupLabelName)) builder_.add(*other);
  }
  MultiValue list = copyList(builder_.build(), property);
  return list.entries.size() == 1 ? std::optional(std::move(list.entries.front())) : std::nullopt;
}

bool isPersonCard(const Card& card) {
  constexpr std::string_view kListName = "X-EVOLUTION-LIST";
  const auto isList = card.valueOf(kListName);
  const auto kind = card.valueOf("KIND");
  return !(isList && equalsIgnoringCase(trimmedBlanks(*isList), "TRUE")) &&
         !(kind && equalsIgnoringCase(trimmedBlanks(*kind), "group"));
}

}  // namespace varnok
