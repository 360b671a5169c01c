// CardReader: a card of the address book as a person.
//
// What a line means is what it means to our vCard reader, so that a card reads
// the same here and in an import; exact values stand over it. Pictures are not
// read here, see card_photo.h.
//
// Threads. Any one. What it was given must outlive it.

#pragma once

#include "contacts/contact_record.h"
#include "import/vcard_person_builder.h"
#include "import/vcard_text.h"
#include "platform/clock.h"
#include "platform/linux/eds/card.h"
#include "platform/text_codec.h"

namespace varnok {

class CardReader {
 public:
  CardReader(const TextCodec& codec, const Clock& clock)
      : decoder_(codec, {}), clock_(clock), builder_(decoder_, clock) {}
  CardReader(const CardReader&) = delete;
  CardReader& operator=(const CardReader&) = delete;
  ~CardReader() = default;

  // A person outside any store; never null.
  PersonRef read(const Card& card);

  // The same without the exact values.
  PersonRef readLines(const Card& card);

  // The only entry that one line of a multi-valued property says; nothing when
  // it says none.
  std::optional<MultiValueEntry> readEntry(const Card& card, std::size_t line, PropertyID property);

  const Clock& clock() const { return clock_; }

 private:
  VCardTextDecoder decoder_;
  const Clock& clock_;
  VCardPersonBuilder builder_;
};

// Whether the card is a person's: not a list of people.
bool isPersonCard(const Card& card);

}  // namespace varnok
