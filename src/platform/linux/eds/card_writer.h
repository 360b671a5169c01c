// Changes of a person, written into a card: the lines of what changes are
// replaced, each by one that other programs of the desktop understand where
// there is one, and every other line stays. What is written reads back as
// exactly the value that was given, see ExactValue. docs/formats/eds-cards.md
// lists which property becomes which line.

#pragma once

#include "contacts/contact_record.h"
#include "platform/linux/eds/card.h"
#include "platform/linux/eds/card_reader.h"

namespace varnok {

void applyChanges(Card& card, const PersonChanges& changes, CardReader& reader);

}  // namespace varnok
