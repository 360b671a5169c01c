#include "platform/linux/eds/card_lines.h"

#include <algorithm>

namespace varnok {
namespace {

struct OwnedLine {
  std::string_view name;
  PropertyID part;
};

constexpr OwnedLine kOwnedLines[] = {
    {"N", kABPersonLastNameProperty},
    {"FN", kABPersonLastNameProperty},
    {"NICKNAME", kABPersonNicknameProperty},
    {"X-PHONETIC-FIRST-NAME", kABPersonFirstNamePhoneticProperty},
    {"X-PHONETIC-LAST-NAME", kABPersonLastNamePhoneticProperty},
    {"ORG", kABPersonOrganizationProperty},
    {"TITLE", kABPersonJobTitleProperty},
    {"ROLE", kABPersonJobTitleProperty},
    {"NOTE", kABPersonNoteProperty},
    {"BDAY", kABPersonBirthdayProperty},
    {"KIND", kABPersonKindProperty},
    {"X-ABSHOWAS", kABPersonKindProperty},
    {"X-ADDRESSBOOKSERVER-KIND", kABPersonKindProperty},
    {"TEL", kABPersonPhoneProperty},
    {"EMAIL", kABPersonEmailProperty},
    {"URL", kABPersonURLProperty},
    {"X-EVOLUTION-BLOG-URL", kABPersonURLProperty},
    {"X-EVOLUTION-VIDEO-URL", kABPersonURLProperty},
    {"RELATED", kABPersonRelatedNamesProperty},
    {"X-ABRELATEDNAMES", kABPersonRelatedNamesProperty},
    {"X-SPOUSE", kABPersonRelatedNamesProperty},
    {"X-MANAGER", kABPersonRelatedNamesProperty},
    {"X-ASSISTANT", kABPersonRelatedNamesProperty},
    {"X-EVOLUTION-SPOUSE", kABPersonRelatedNamesProperty},
    {"X-EVOLUTION-MANAGER", kABPersonRelatedNamesProperty},
    {"X-EVOLUTION-ASSISTANT", kABPersonRelatedNamesProperty},
    {"X-ABDATE", kABPersonDateProperty},
    {"X-ABDATES", kABPersonDateProperty},
    {"ANNIVERSARY", kABPersonDateProperty},
    {"X-ANNIVERSARY", kABPersonDateProperty},
    {"X-EVOLUTION-ANNIVERSARY", kABPersonDateProperty},
    {"ADR", kABPersonAddressProperty},
    {"IMPP", kABPersonInstantMessageProperty},
    {"X-AIM", kABPersonInstantMessageProperty},
    {"X-FACEBOOK", kABPersonInstantMessageProperty},
    {"X-GADUGADU", kABPersonInstantMessageProperty},
    {"X-GOOGLE-TALK", kABPersonInstantMessageProperty},
    {"X-GROUPWISE", kABPersonInstantMessageProperty},
    {"X-ICQ", kABPersonInstantMessageProperty},
    {"X-JABBER", kABPersonInstantMessageProperty},
    {"X-MSN", kABPersonInstantMessageProperty},
    {"X-QQ", kABPersonInstantMessageProperty},
    {"X-SKYPE", kABPersonInstantMessageProperty},
    {"X-SKYPE-USERNAME", kABPersonInstantMessageProperty},
    {"X-TWITTER", kABPersonInstantMessageProperty},
    {"X-XMPP", kABPersonInstantMessageProperty},
    {"X-YAHOO", kABPersonInstantMessageProperty},
    {"X-SOCIALPROFILE", kABPersonSocialProfileProperty},
};

constexpr MessageLine kMessageLines[] = {
    {"X-AIM", "AIM"},
    {"X-FACEBOOK", "Facebook"},
    {"X-GADUGADU", "GaduGadu"},
    {"X-GOOGLE-TALK", "GoogleTalk"},
    {"X-GROUPWISE", "GroupWise"},
    {"X-ICQ", "ICQ"},
    {"X-JABBER", "Jabber"},
    {"X-MSN", "MSN"},
    {"X-SKYPE", "Skype"},
    {"X-TWITTER", "Twitter"},
    {"X-YAHOO", "Yahoo"},
};

constexpr RelationLine kRelationLines[] = {
    {"X-EVOLUTION-SPOUSE", "_$!<Spouse>!$_"},
    {"X-EVOLUTION-MANAGER", "_$!<Manager>!$_"},
    {"X-EVOLUTION-ASSISTANT", "_$!<Assistant>!$_"},
};

}  // namespace

std::optional<PropertyID> partOfLine(std::string_view name) {
  const auto* found =
      std::ranges::find_if(kOwnedLines, [&](const OwnedLine& line) { return equalsIgnoringCase(name, line.name); });
  return found == std::end(kOwnedLines) ? std::nullopt : std::optional(found->part);
}

VCardLine asKnownLine(const VCardLine& line) {
  VCardLine known = line;
  const bool isAddress = startsIgnoringCase(line.name, "X-EVOLUTION-") && partOfLine(line.name) == kABPersonURLProperty;
  if (isAddress) known.name = "URL";
  return known;
}

const MessageLine* messageLineOf(std::string_view service) {
  const auto* found = std::ranges::find(kMessageLines, service, &MessageLine::service);
  return found == std::end(kMessageLines) ? nullptr : found;
}

const RelationLine* relationLineOf(std::string_view label) {
  const auto* found = std::ranges::find(kRelationLines, label, &RelationLine::label);
  return found == std::end(kRelationLines) ? nullptr : found;
}

}  // namespace varnok
