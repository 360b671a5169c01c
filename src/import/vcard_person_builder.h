// VCardPersonBuilder: the lines of one card, one after the other, into a person.
//
// Which property becomes what is one table in the source file. A property that
// can stand only once in a person is taken from its first line that says
// something; notes are joined. Labels come from a line's TYPE or, first, from
// the X-ABLabel line of its group, which may stand before or after it.

#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_record.h"
#include "import/vcard_line.h"
#include "import/vcard_text.h"
#include "platform/clock.h"

namespace varnok {

class VCardPersonBuilder {
 public:
  VCardPersonBuilder(const VCardTextDecoder& decoder, const Clock& clock) : decoder_(decoder), clock_(clock) {}

  void add(const VCardLine& line);

  // Whether the card names a group of people and not a person.
  bool isGroup() const { return card_.isGroup; }

  // The person of the lines so far, outside any store; null when they hold
  // nothing that a person has. Starts the next card.
  PersonRef build();

  // Forgets the lines so far, and gives back their memory.
  void reset() { card_ = {}; }

 private:
  struct Rule;
  struct Rules;

  struct Content {
    const VCardLine& line;
    const Rule& rule;
    VCardParameters parameters;
  };

  // An entry of a multi-valued property, whose group may yet get a label.
  struct Entry {
    PropertyID property;
    EntryValue value;
    std::optional<std::string> label;
    std::string group;           // In upper case; empty without one.
    bool onlyWithLabel = false;  // Dropped when the group gets no label.
  };

  static const Rule* ruleOf(std::string_view name);

  void addName(const Content& content);
  void addFormattedName(const Content& content);
  void addText(const Content& content);
  void addRole(const Content& content);
  void addOrganization(const Content& content);
  void addNote(const Content& content);
  void addBirthday(const Content& content);
  void addKind(const Content& content);
  void addListText(const Content& content);
  void addAddress(const Content& content);
  void addRelated(const Content& content);
  void addDate(const Content& content);
  void addMessageAddress(const Content& content);
  void addMessage(const Content& content);
  void addProfile(const Content& content);
  void addPhoto(const Content& content);
  void addGroupLabel(const Content& content);
  void leaveOut(const Content& content);

  void addOwnMessage(const VCardLine& line);
  void addEntry(const Content& content, EntryValue value);
  std::string text(const Content& content) const { return decoder_.text(content.line.value, content.parameters); }
  std::string& single(PropertyID property);
  void setSingle(PropertyID property, std::string text);
  void resolveFormattedName();
  void resolveLabels();
  bool isUsable() const;
  void fill(ContactRecord& person);
  void setList(ContactRecord& person, const Property& property);
  void startCard();

  static constexpr std::size_t kPropertyCount = 23;  // PropertyID counts from 1.

  const VCardTextDecoder& decoder_;
  const Clock& clock_;
  std::vector<std::string> components_;

  struct Card {
    std::array<std::string, kPropertyCount> texts;  // By PropertyID; empty is absent.
    std::string formattedName;
    std::string role;
    std::optional<Instant> birthday;
    bool isOrganization = false;
    bool isGroup = false;
    std::vector<Entry> entries;
    std::map<std::string, std::string, std::less<>> labels;  // By group, in upper case.
    std::optional<std::string> image;
  };
  Card card_;
};

}  // namespace varnok
