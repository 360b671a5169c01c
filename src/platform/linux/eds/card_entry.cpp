#include "platform/linux/eds/card_entry.h"

#include <algorithm>
#include <cstdlib>

#include <fmt/format.h>

#include "import/vcard_date.h"
#include "import/vcard_line.h"
#include "platform/linux/eds/card_lines.h"

namespace varnok {
namespace {

constexpr std::string_view kAnniversaryName = "X-EVOLUTION-ANNIVERSARY";

struct LabelTypes {
  std::string_view label;
  std::string_view phone;
  std::string_view other;  // Of other properties; empty where the label is a phone's.
};

constexpr LabelTypes kLabelTypes[] = {
    {label::kHome, "HOME,VOICE", "HOME"}, {label::kWork, "WORK,VOICE", "WORK"}, {label::kMobile, "CELL", ""},
    {label::kMain, "MAIN,VOICE", ""},     {label::kPager, "PAGER", ""},         {label::kHomeFAX, "HOME,FAX", ""},
    {label::kWorkFAX, "WORK,FAX", ""},    {label::kIPhone, "IPHONE,CELL", ""},  {label::kOther, "OTHER,VOICE", "OTHER"},
    {label::kHomePage, "", "HOMEPAGE"},
};

bool hasTypes(PropertyID property) {
  return property != kABPersonRelatedNamesProperty && property != kABPersonDateProperty;
}

// What TYPE says of the label; empty when none does.
std::string_view typesOf(const std::optional<std::string>& label, PropertyID property) {
  if (!label || !hasTypes(property)) return {};
  const auto* found = std::ranges::find(kLabelTypes, *label, &LabelTypes::label);
  if (found == std::end(kLabelTypes)) return {};
  return property == kABPersonPhoneProperty ? found->phone : found->other;
}

// For programs that do not know labels of the user's own.
std::string_view typeBesideLabel(PropertyID property) {
  if (property == kABPersonPhoneProperty) return "VOICE";
  return property == kABPersonEmailProperty ? "OTHER" : "";
}

// Whether a parameter can hold the text without any marks around it.
bool isWord(std::string_view text) {
  constexpr std::string_view kMarks = "-_.";
  const auto fitsIn = [&](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           kMarks.find(c) != std::string_view::npos;
  };
  return !text.empty() && std::ranges::all_of(text, fitsIn);
}

std::string percentEncoded(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (isWord({&c, 1}) || c == '@') {
      result += c;
    } else {
      result += fmt::format("%{:02X}", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  return result;
}

std::string freeGroup(const Card& card) {
  for (std::size_t number = 1;; ++number) {
    std::string group = fmt::format("item{}", number);
    const auto isOfGroup = [&](const std::string& text) { return startsIgnoringCase(text, group + "."); };
    if (std::ranges::none_of(card.lines(), isOfGroup)) return group;
  }
}

bool holdsOnly(const Dictionary& dictionary, std::string_view first, std::string_view second) {
  return std::ranges::all_of(dictionary.entries(),
                             [&](const auto& entry) { return entry.first == first || entry.first == second; });
}

// Seconds that the local reading is ahead of UTC.
std::chrono::seconds offsetOf(Instant instant, const LocalTime& local) {
  using namespace std::chrono;
  const year_month_day day(year(local.year), month(static_cast<unsigned>(local.month)),
                           std::chrono::day(static_cast<unsigned>(local.day)));
  const Instant read = sys_days(day) + hours(local.hour) + minutes(local.minute) + seconds(local.second);
  return read - instant;
}

}  // namespace

std::optional<std::string> cardDate(Instant instant, const Clock& clock) {
  using namespace std::chrono_literals;
  constexpr Instant kFirst = std::chrono::sys_days(std::chrono::year(1) / 1 / 2);
  constexpr Instant kLast = std::chrono::sys_days(std::chrono::year(9999) / 12 / 31);
  if (instant < kFirst || instant >= kLast) return std::nullopt;
  const LocalTime local = clock.localTime(instant);
  const std::string day = fmt::format("{:04}-{:02}-{:02}", local.year, local.month, local.day);
  if (local.hour == 12 && local.minute == 0 && local.second == 0) {
    return (local.year == kNoYear ? fmt::format(";X-APPLE-OMIT-YEAR={}:", kNoYear) : ":") + day;
  }
  const std::chrono::seconds offset = offsetOf(instant, local);
  const auto minutes = std::abs(offset.count()) / 60;
  return fmt::format(":{}T{:02}:{:02}:{:02}{}{:02}:{:02}", day, local.hour, local.minute, local.second,
                     offset < 0s ? '-' : '+', minutes / 60, minutes % 60);
}

void EntryWriter::noteUse(std::string_view line) {
  if (const auto parts = splitVCardLine(line)) usedOnce_.emplace_back(parts->name);
}

bool EntryWriter::takeOnce(std::string_view name) {
  const auto isSame = [&](const std::string& used) { return equalsIgnoringCase(used, name); };
  if (std::ranges::any_of(usedOnce_, isSame)) return false;
  usedOnce_.emplace_back(name);
  return true;
}

std::vector<std::string> EntryWriter::linesOf(const MultiValueEntry& entry, const Card& card) {
  const std::optional<Line> line = lineOf(entry);
  if (!line || line->value.empty()) return {};
  std::string_view types = typesOf(entry.label, property_);
  const std::string label = entry.label && types.empty() && !line->saysLabel ? cardValue(*entry.label) : "";
  if (!label.empty()) types = typeBesideLabel(property_);
  const std::string type = types.empty() ? "" : fmt::format(";TYPE={}", types);
  const std::string text = fmt::format("{}{}{}:{}", line->name, type, line->parameters, line->value);
  if (label.empty()) return {text};
  const std::string group = freeGroup(card);
  return {group + "." + text, fmt::format("{}.{}:{}", group, kGroupLabelName, label)};
}

std::optional<EntryWriter::Line> EntryWriter::lineOf(const MultiValueEntry& entry) {
  const auto* text = std::get_if<std::string>(&entry.value);
  const auto* dictionary = std::get_if<Dictionary>(&entry.value);
  switch (property_) {
    case kABPersonPhoneProperty: return Line{"TEL", "", cardValue(*text)};
    case kABPersonEmailProperty: return Line{"EMAIL", "", cardValue(*text)};
    case kABPersonURLProperty: return Line{"URL", "", cardValue(*text)};
    case kABPersonRelatedNamesProperty: return relationLine(entry);
    case kABPersonDateProperty: return dateLine(entry);
    case kABPersonAddressProperty: return addressLine(*dictionary);
    case kABPersonInstantMessageProperty: return messageLine(*dictionary);
    case kABPersonSocialProfileProperty: return profileLine(*dictionary);
    default: return std::nullopt;
  }
}

std::optional<EntryWriter::Line> EntryWriter::relationLine(const MultiValueEntry& entry) {
  Line line{"X-ABRELATEDNAMES", "", cardValue(std::get<std::string>(entry.value))};
  const RelationLine* known = entry.label ? relationLineOf(*entry.label) : nullptr;
  if (known == nullptr || line.value.empty() || !takeOnce(known->name)) return line;
  line.name = known->name;
  line.saysLabel = true;
  return line;
}

std::optional<EntryWriter::Line> EntryWriter::dateLine(const MultiValueEntry& entry) {
  const std::optional<std::string> date = cardDate(std::get<Instant>(entry.value), clock_);
  if (!date) return std::nullopt;
  const std::size_t colon = date->find(':');
  Line line{"X-ABDATE", date->substr(0, colon), date->substr(colon + 1)};
  if (entry.label != label::kAnniversary || !takeOnce(kAnniversaryName)) return line;
  line.name = kAnniversaryName;
  line.saysLabel = true;
  return line;
}

std::optional<EntryWriter::Line> EntryWriter::addressLine(const Dictionary& address) const {
  constexpr std::string_view kOrder[] = {kAddressStreetKey, kABPersonAddressCityKey, kABPersonAddressStateKey,
                                         kABPersonAddressZIPKey, kABPersonAddressCountryKey};
  Line line{"ADR", "", ";"};  // The post box and the second line are part of the street.
  bool isThere = false;
  for (const std::string_view key : kOrder) {
    const std::string part = cardValue(address.textOr(key));
    isThere = isThere || !part.empty();
    line.value += ";" + part;
  }
  return isThere ? std::optional(line) : std::nullopt;
}

std::optional<EntryWriter::Line> EntryWriter::messageLine(const Dictionary& message) const {
  if (!holdsOnly(message, kABPersonInstantMessageServiceKey, kABPersonInstantMessageUsernameKey)) return std::nullopt;
  const std::string_view service = message.textOr(kABPersonInstantMessageServiceKey);
  const std::string_view user = message.textOr(kABPersonInstantMessageUsernameKey);
  if (user.empty()) return std::nullopt;
  if (const MessageLine* known = messageLineOf(service)) return Line{std::string(known->name), "", cardValue(user)};
  const std::string parameter = isWord(service) ? fmt::format(";X-SERVICE-TYPE={}", service) : "";
  return Line{"IMPP", parameter, "x-apple:" + percentEncoded(user)};
}

std::optional<EntryWriter::Line> EntryWriter::profileLine(const Dictionary& profile) const {
  if (!holdsOnly(profile, kSocialProfileServiceKey, kSocialProfileUsernameKey)) return std::nullopt;
  const std::string_view service = profile.textOr(kSocialProfileServiceKey);
  const std::string parameter = isWord(service) ? fmt::format(";TYPE={}", service) : "";
  return Line{"X-SOCIALPROFILE", parameter, cardValue(profile.textOr(kSocialProfileUsernameKey))};
}

}  // namespace varnok
