// One entry of a multi-valued property as lines of a card.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/property_value.h"
#include "platform/clock.h"
#include "platform/linux/eds/card.h"

namespace varnok {

// Parameters and value of a date, from the separator on: a day where the moment
// is that day's noon in the device's time zone, else the moment with its offset
// from UTC, so that the day in it is the device's. Nothing outside the years 1
// to 9999.
std::optional<std::string> cardDate(Instant instant, const Clock& clock);

class EntryWriter {
 public:
  EntryWriter(PropertyID property, const Clock& clock) : property_(property), clock_(clock) {}

  // A line that stays takes the place of a new one of its name, where there can
  // only be one.
  void noteUse(std::string_view line);

  // The entry's line and, for a label that no TYPE says, a second one that names
  // it. None for an entry that no line can say anything of. The group they make
  // is new to `card`.
  std::vector<std::string> linesOf(const MultiValueEntry& entry, const Card& card);

 private:
  struct Line {
    std::string name;
    std::string parameters;  // Each with the semicolon before it.
    std::string value;
    bool saysLabel = false;  // The name does.
  };

  std::optional<Line> lineOf(const MultiValueEntry& entry);
  std::optional<Line> addressLine(const Dictionary& address) const;
  std::optional<Line> messageLine(const Dictionary& message) const;
  std::optional<Line> profileLine(const Dictionary& profile) const;
  std::optional<Line> relationLine(const MultiValueEntry& entry);
  std::optional<Line> dateLine(const MultiValueEntry& entry);
  bool takeOnce(std::string_view name);

  PropertyID property_;
  const Clock& clock_;
  std::vector<std::string> usedOnce_;  // Names of lines that stand once in a card.
};

}  // namespace varnok
