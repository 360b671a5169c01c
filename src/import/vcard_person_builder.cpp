#include "import/vcard_person_builder.h"

#include <algorithm>
#include <utility>

#include "contacts/address_book.h"
#include "import/vcard_date.h"
#include "import/vcard_message.h"
#include "platform/check.h"
#include "platform/image_codec.h"

namespace varnok {
namespace {

constexpr unsigned bits(std::initializer_list<VCardType> types) {
  unsigned result = 0;
  for (const VCardType type : types)
    result |= static_cast<unsigned>(type);
  return result;
}

struct TypeLabel {
  unsigned types;  // All of them.
  std::string_view label;
};

// The first that fits. A number that is only said to be a fax is an office's.
constexpr TypeLabel kTypeLabels[] = {
    {bits({VCardType::iPhone}), label::kIPhone},     {bits({VCardType::fax, VCardType::home}), label::kHomeFAX},
    {bits({VCardType::fax}), label::kWorkFAX},       {bits({VCardType::pager}), label::kPager},
    {bits({VCardType::cell}), label::kMobile},       {bits({VCardType::main}), label::kMain},
    {bits({VCardType::home}), label::kHome},         {bits({VCardType::work}), label::kWork},
    {bits({VCardType::homePage}), label::kHomePage}, {bits({VCardType::other}), label::kOther},
};

std::optional<std::string> labelOfTypes(unsigned types, PropertyID property) {
  if (property != kABPersonPhoneProperty) types &= ~bits({VCardType::fax});
  const auto* found =
      std::ranges::find_if(kTypeLabels, [&](const TypeLabel& entry) { return (types & entry.types) == entry.types; });
  return found == std::end(kTypeLabels) ? std::nullopt : std::optional<std::string>(found->label);
}

// "_$!<Spouse>!$_" for the relation "spouse". Nothing for one that has no label.
std::optional<std::string> labelOfRelation(std::string_view relation) {
  constexpr std::string_view kRelations[] = {"Assistant", "Brother", "Child",   "Father", "Friend", "Manager",
                                             "Mother",    "Parent",  "Partner", "Sister", "Spouse"};
  const auto* found =
      std::ranges::find_if(kRelations, [&](std::string_view known) { return equalsIgnoringCase(relation, known); });
  if (found == std::end(kRelations)) return std::nullopt;
  return "_$!<" + std::string(*found) + ">!$_";
}

std::string inUpperCase(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return result;
}

std::string_view componentAt(const std::vector<std::string>& components, std::size_t index) {
  return index < components.size() ? std::string_view(components[index]) : std::string_view();
}

// Those of the texts that are not empty, in their order.
std::string joined(std::initializer_list<std::string_view> texts, std::string_view separator) {
  std::string result;
  for (const std::string_view text : texts) {
    if (!result.empty() && !text.empty()) result += separator;
    result += text;
  }
  return result;
}

void removePrefix(std::string& text, std::string_view prefix) {
  if (startsIgnoringCase(text, prefix)) text.erase(0, prefix.size());
}

// The bytes of "data:image/jpeg;base64,..."; some writers escape the separators.
std::optional<std::string> bytesOfDataURI(std::string_view uri) {
  const std::size_t comma = uri.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  std::string_view head = uri.substr(0, comma);
  if (head.ends_with('\\')) head.remove_suffix(1);
  constexpr std::string_view kBase64 = "base64";
  const bool isBase64 =
      head.size() > kBase64.size() && equalsIgnoringCase(head.substr(head.size() - kBase64.size()), kBase64);
  return isBase64 ? decodedBase64(uri.substr(comma + 1)) : std::nullopt;
}

bool isPicture(std::string_view bytes) {
  return imageTypeOf(bytes) != ImageType::other;
}

}  // namespace

struct VCardPersonBuilder::Rule {
  std::string_view name;  // In upper case.
  void (VCardPersonBuilder::*add)(const Content&);
  PropertyID property = kABPersonNoteProperty;
  std::string_view word = {};  // The label of a date or relation, the service of a message, a scheme.
};

// Ordered by the length of the name, which is looked at first.
struct VCardPersonBuilder::Rules {
  using Self = VCardPersonBuilder;
  static constexpr Rule kAll[] = {
      {"N", &Self::addName},
      {"FN", &Self::addFormattedName},
      {"TEL", &Self::addListText, kABPersonPhoneProperty, "tel:"},
      {"ADR", &Self::addAddress, kABPersonAddressProperty},
      {"ORG", &Self::addOrganization},
      {"URL", &Self::addListText, kABPersonURLProperty},
      {"BDAY", &Self::addBirthday},
      {"NOTE", &Self::addNote},
      {"IMPP", &Self::addMessageAddress, kABPersonInstantMessageProperty},
      {"KIND", &Self::addKind},
      {"ROLE", &Self::addRole},
      {"X-QQ", &Self::addMessage, kABPersonInstantMessageProperty, "QQ"},
      {"EMAIL", &Self::addListText, kABPersonEmailProperty, "mailto:"},
      {"TITLE", &Self::addText, kABPersonJobTitleProperty},
      {"PHOTO", &Self::addPhoto},
      {"X-AIM", &Self::addMessage, kABPersonInstantMessageProperty, "AIM"},
      {"X-ICQ", &Self::addMessage, kABPersonInstantMessageProperty, "ICQ"},
      {"X-MSN", &Self::addMessage, kABPersonInstantMessageProperty, "MSN"},
      {"X-XMPP", &Self::addMessage, kABPersonInstantMessageProperty, "Jabber"},
      {"X-YAHOO", &Self::addMessage, kABPersonInstantMessageProperty, "Yahoo"},
      {"X-SKYPE", &Self::addMessage, kABPersonInstantMessageProperty, "Skype"},
      {"X-CLASS", &Self::leaveOut},
      {"X-ABADR", &Self::leaveOut},
      {"X-ABUID", &Self::leaveOut},
      {"RELATED", &Self::addRelated, kABPersonRelatedNamesProperty},
      {"NICKNAME", &Self::addText, kABPersonNicknameProperty},
      {"X-JABBER", &Self::addMessage, kABPersonInstantMessageProperty, "Jabber"},
      {"X-ABDATE", &Self::addDate, kABPersonDateProperty},
      {"X-SPOUSE", &Self::addRelated, kABPersonRelatedNamesProperty, "Spouse"},
      {"X-GENDER", &Self::leaveOut},
      {"X-ABDATES", &Self::addDate, kABPersonDateProperty},
      {"X-ABLABEL", &Self::addGroupLabel},
      {"X-TWITTER", &Self::addMessage, kABPersonInstantMessageProperty, "Twitter"},
      {"X-MANAGER", &Self::addRelated, kABPersonRelatedNamesProperty, "Manager"},
      {"X-FACEBOOK", &Self::addMessage, kABPersonInstantMessageProperty, "Facebook"},
      {"X-GADUGADU", &Self::addMessage, kABPersonInstantMessageProperty, "GaduGadu"},
      {"X-ABSHOWAS", &Self::addKind},
      {"ANNIVERSARY", &Self::addDate, kABPersonDateProperty, label::kAnniversary},
      {"X-ASSISTANT", &Self::addRelated, kABPersonRelatedNamesProperty, "Assistant"},
      {"X-GROUPWISE", &Self::addMessage, kABPersonInstantMessageProperty, "GroupWise"},
      {"X-MAIDENNAME", &Self::leaveOut},
      {"X-GOOGLE-TALK", &Self::addMessage, kABPersonInstantMessageProperty, "GoogleTalk"},
      {"X-ANNIVERSARY", &Self::addDate, kABPersonDateProperty, label::kAnniversary},
      {"X-PHONETIC-ORG", &Self::leaveOut},
      {"X-SOCIALPROFILE", &Self::addProfile, kABPersonSocialProfileProperty},
      {"X-ABRELATEDNAMES", &Self::addRelated, kABPersonRelatedNamesProperty},
      {"X-SKYPE-USERNAME", &Self::addMessage, kABPersonInstantMessageProperty, "Skype"},
      {"X-EVOLUTION-SPOUSE", &Self::addRelated, kABPersonRelatedNamesProperty, "Spouse"},
      {"X-EVOLUTION-MANAGER", &Self::addRelated, kABPersonRelatedNamesProperty, "Manager"},
      {"X-PHONETIC-LAST-NAME", &Self::addText, kABPersonLastNamePhoneticProperty},
      {"X-PHONETIC-FIRST-NAME", &Self::addText, kABPersonFirstNamePhoneticProperty},
      {"X-EVOLUTION-ASSISTANT", &Self::addRelated, kABPersonRelatedNamesProperty, "Assistant"},
      {"X-PHONETIC-MIDDLE-NAME", &Self::leaveOut},
      {"X-EVOLUTION-ANNIVERSARY", &Self::addDate, kABPersonDateProperty, label::kAnniversary},
      {"X-ADDRESSBOOKSERVER-KIND", &Self::addKind},
  };
  static constexpr std::size_t kLongest = 24;
  static_assert(std::ranges::is_sorted(kAll, {}, [](const Rule& rule) { return rule.name.size(); }));
  static_assert(std::end(kAll)[-1].name.size() == kLongest);

  // Where the names of each length begin.
  static constexpr auto kStarts = [] {
    std::array<std::size_t, kLongest + 2> starts{};
    for (const Rule& rule : kAll)
      ++starts[rule.name.size() + 1];
    for (std::size_t i = 1; i < starts.size(); ++i)
      starts[i] += starts[i - 1];
    return starts;
  }();
};

const VCardPersonBuilder::Rule* VCardPersonBuilder::ruleOf(std::string_view name) {
  if (name.size() > Rules::kLongest) return nullptr;
  for (std::size_t i = Rules::kStarts[name.size()]; i < Rules::kStarts[name.size() + 1]; ++i) {
    if (equalsIgnoringCase(name, Rules::kAll[i].name)) return &Rules::kAll[i];
  }
  return nullptr;
}

void VCardPersonBuilder::add(const VCardLine& line) {
  if (const Rule* rule = ruleOf(trimmedBlanks(line.name))) {
    (this->*rule->add)({line, *rule, parseVCardParameters(line.parameters)});
  } else {
    addOwnMessage(line);
  }
}

void VCardPersonBuilder::addName(const Content& content) {
  constexpr PropertyID kOrder[] = {kABPersonLastNameProperty, kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                   kABPersonPrefixProperty, kABPersonSuffixProperty};
  if (std::ranges::any_of(kOrder, [&](PropertyID property) { return !single(property).empty(); })) return;
  decoder_.split(content.line.value, content.parameters, components_);
  for (std::size_t i = 0; i < std::size(kOrder) && i < components_.size(); ++i) {
    single(kOrder[i]) = std::move(components_[i]);
  }
}

void VCardPersonBuilder::addFormattedName(const Content& content) {
  if (card_.formattedName.empty()) card_.formattedName = text(content);
}

void VCardPersonBuilder::addText(const Content& content) {
  setSingle(content.rule.property, text(content));
}

void VCardPersonBuilder::addRole(const Content& content) {
  if (card_.role.empty()) card_.role = text(content);
}

void VCardPersonBuilder::addOrganization(const Content& content) {
  if (!single(kABPersonOrganizationProperty).empty() || !single(kABPersonDepartmentProperty).empty()) return;
  decoder_.split(content.line.value, content.parameters, components_);
  single(kABPersonOrganizationProperty) = std::move(components_.front());
  std::string& department = single(kABPersonDepartmentProperty);
  for (std::size_t i = 1; i < components_.size(); ++i)
    department = joined({department, components_[i]}, ", ");
}

void VCardPersonBuilder::addNote(const Content& content) {
  std::string& note = single(kABPersonNoteProperty);
  note = joined({note, text(content)}, "\n");
}

void VCardPersonBuilder::addBirthday(const Content& content) {
  if (!card_.birthday) card_.birthday = parseVCardDate(text(content), VCardDateMeaning::day, clock_);
}

void VCardPersonBuilder::addKind(const Content& content) {
  const std::string value = text(content);
  const std::string_view kind = trimmedBlanks(value);
  constexpr std::string_view kOrganizations[] = {"ORG", "ORGANIZATION", "ORGANISATION", "COMPANY"};
  const auto isKind = [&](std::string_view name) { return equalsIgnoringCase(kind, name); };
  card_.isOrganization = card_.isOrganization || std::ranges::any_of(kOrganizations, isKind);
  card_.isGroup = card_.isGroup || isKind("GROUP");
}

void VCardPersonBuilder::addListText(const Content& content) {
  std::string value = text(content);
  if (content.parameters.isURI) removePrefix(value, content.rule.word);
  if (!value.empty()) addEntry(content, std::move(value));
}

void VCardPersonBuilder::addAddress(const Content& content) {
  decoder_.split(content.line.value, content.parameters, components_);
  const auto at = [&](std::size_t index) { return componentAt(components_, index); };
  const std::string street = joined({at(2), at(1), at(0)}, "\n");
  Dictionary address;
  const auto put = [&](std::string_view key, std::string_view value) {
    if (!value.empty()) address.put(key, value);
  };
  put(kAddressStreetKey, street);
  put(kABPersonAddressCityKey, at(3));
  put(kABPersonAddressStateKey, at(4));
  put(kABPersonAddressZIPKey, at(5));
  put(kABPersonAddressCountryKey, at(6));
  if (!address.empty()) addEntry(content, std::move(address));
}

void VCardPersonBuilder::addRelated(const Content& content) {
  std::string name = text(content);
  // A link to another card names nobody.
  if (name.empty() || content.parameters.isURI || startsIgnoringCase(name, "urn:uuid:")) return;
  addEntry(content, std::move(name));
  std::optional<std::string>& label = card_.entries.back().label;
  if (!content.rule.word.empty()) label = labelOfRelation(content.rule.word);
  if (!label) label = labelOfRelation(content.parameters.otherType);
}

void VCardPersonBuilder::addDate(const Content& content) {
  const bool isDay = !content.rule.word.empty();
  const auto date = parseVCardDate(text(content), isDay ? VCardDateMeaning::day : VCardDateMeaning::instant, clock_);
  if (!date) return;
  addEntry(content, *date);
  if (isDay) card_.entries.back().label = content.rule.word;
}

void VCardPersonBuilder::addMessageAddress(const Content& content) {
  MessageAddress address = parseMessageAddress(text(content));
  if (!content.parameters.serviceType.empty()) address.service = decodedParameter(content.parameters.serviceType);
  if (address.userName.empty()) return;
  addEntry(content, Dictionary{{std::string(kABPersonInstantMessageServiceKey), decoder_.bareText(address.service)},
                               {std::string(kABPersonInstantMessageUsernameKey), decoder_.bareText(address.userName)}});
}

void VCardPersonBuilder::addMessage(const Content& content) {
  std::string userName = text(content);
  if (userName.empty()) return;
  const bool isOwn = ownMessageShapeOf(content.line) != OwnMessage::no;
  addEntry(content, Dictionary{{std::string(kABPersonInstantMessageServiceKey),
                                std::string(isOwn ? content.line.name.substr(2) : content.rule.word)},
                               {std::string(kABPersonInstantMessageUsernameKey), std::move(userName)}});
}

void VCardPersonBuilder::addOwnMessage(const VCardLine& line) {
  const OwnMessage shape = ownMessageShapeOf(line);
  if (shape == OwnMessage::no || line.value.empty()) return;
  const Rule rule{{}, &VCardPersonBuilder::leaveOut, kABPersonInstantMessageProperty};
  const Content content{line, rule, parseVCardParameters(line.parameters)};
  addEntry(content, Dictionary{{std::string(kABPersonInstantMessageServiceKey), decoder_.bareText(line.name.substr(2))},
                               {std::string(kABPersonInstantMessageUsernameKey), text(content)}});
  card_.entries.back().onlyWithLabel = shape == OwnMessage::labelled;
}

void VCardPersonBuilder::addProfile(const Content& content) {
  // Our own writer puts the service last and as it is, commas and all.
  constexpr std::string_view kOwnShape = "CHARSET=UTF-8;TYPE=";
  std::string_view service = content.parameters.otherType;
  if (content.line.parameters.starts_with(kOwnShape)) service = content.line.parameters.substr(kOwnShape.size());
  std::string userName = text(content);
  if (!content.parameters.user.empty()) userName = decoder_.bareText(decodedParameter(content.parameters.user));
  removePrefix(userName, "x-apple:");
  if (userName.empty()) return;
  addEntry(content, Dictionary{{std::string(kSocialProfileServiceKey), decoder_.bareText(service)},
                               {std::string(kSocialProfileUsernameKey), std::move(userName)}});
}

void VCardPersonBuilder::addPhoto(const Content& content) {
  if (card_.image && isPicture(*card_.image)) return;
  const std::string_view value = trimmedBlanks(content.line.value);
  std::optional<std::string> bytes;
  if (startsIgnoringCase(value, "data:")) {
    bytes = bytesOfDataURI(value);
  } else if (!content.parameters.isURI) {
    bytes = decodedBase64(value);
    // Without a word about its encoding, base64 must prove itself.
    if (bytes && content.parameters.encoding != VCardEncoding::base64 && !isPicture(*bytes)) bytes.reset();
  }
  if (!bytes || bytes->empty()) return;
  if (!card_.image || isPicture(*bytes)) card_.image = std::move(bytes);
}

void VCardPersonBuilder::addGroupLabel(const Content& content) {
  if (!content.line.group.empty()) card_.labels.try_emplace(inUpperCase(content.line.group), text(content));
}

void VCardPersonBuilder::leaveOut(const Content& /*content*/) {}

void VCardPersonBuilder::addEntry(const Content& content, EntryValue value) {
  const PropertyID property = content.rule.property;
  card_.entries.push_back(
      {property, std::move(value), labelOfTypes(content.parameters.types, property), inUpperCase(content.line.group)});
}

std::string& VCardPersonBuilder::single(PropertyID property) {
  return card_.texts[static_cast<std::size_t>(property)];
}

void VCardPersonBuilder::setSingle(PropertyID property, std::string text) {
  if (std::string& stored = single(property); stored.empty()) stored = std::move(text);
}

// The formatted name repeats what the other properties say, unless they are
// missing.
void VCardPersonBuilder::resolveFormattedName() {
  constexpr PropertyID kNames[] = {kABPersonLastNameProperty, kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                   kABPersonPrefixProperty, kABPersonSuffixProperty};
  if (std::ranges::any_of(kNames, [&](PropertyID property) { return !single(property).empty(); })) return;
  std::string& organization = single(kABPersonOrganizationProperty);
  if (card_.formattedName == organization) return;
  const bool namesOrganization = card_.isOrganization && organization.empty();
  (namesOrganization ? organization : single(kABPersonFirstNameProperty)) = std::move(card_.formattedName);
}

// Gives every entry its label; those that are nothing without one are dropped.
void VCardPersonBuilder::resolveLabels() {
  std::erase_if(card_.entries, [&](Entry& entry) {
    const auto found = entry.group.empty() ? card_.labels.end() : card_.labels.find(entry.group);
    if (found == card_.labels.end()) return entry.onlyWithLabel;
    // What our own writer prints for an entry without a label.
    if (found->second != "(null)") entry.label = found->second;
    return false;
  });
}

void VCardPersonBuilder::setList(ContactRecord& person, const Property& property) {
  const auto count = std::ranges::count(card_.entries, property.id, &Entry::property);
  if (count == 0) return;
  MultiValue list{property.type, {}};
  list.entries.reserve(static_cast<std::size_t>(count));
  for (Entry& entry : card_.entries) {
    if (entry.property == property.id) list.entries.push_back({std::move(entry.label), std::move(entry.value)});
  }
  VARNOK_CHECK(person.setValue(property.id, std::move(list)).ok());
}

bool VCardPersonBuilder::isUsable() const {
  const auto isThere = [](const std::string& text) { return !text.empty(); };
  return std::ranges::any_of(card_.texts, isThere) || !card_.entries.empty() || card_.birthday || card_.image;
}

PersonRef VCardPersonBuilder::build() {
  resolveFormattedName();
  setSingle(kABPersonJobTitleProperty, std::move(card_.role));
  resolveLabels();
  PersonRef person = isUsable() ? ABPersonCreate() : nullptr;
  if (person != nullptr) fill(*person);
  startCard();
  return person;
}

void VCardPersonBuilder::fill(ContactRecord& person) {
  for (const Property& property : allProperties()) {
    if (isMultiValued(property.type)) {
      setList(person, property);
    } else if (std::string& text = single(property.id); !text.empty()) {
      VARNOK_CHECK(person.setValue(property.id, std::move(text)).ok());
    }
  }
  if (card_.birthday) VARNOK_CHECK(person.setValue(kABPersonBirthdayProperty, *card_.birthday).ok());
  if (card_.isOrganization) {
    VARNOK_CHECK(person.setValue(kABPersonKindProperty, std::int64_t{kABPersonKindOrganization}).ok());
  }
  if (card_.image) person.setImage(std::move(card_.image));
}

// As reset(), but in place: it is done for every card.
void VCardPersonBuilder::startCard() {
  for (std::string& text : card_.texts)
    text.clear();
  card_.formattedName.clear();
  card_.role.clear();
  card_.birthday.reset();
  card_.isOrganization = false;
  card_.isGroup = false;
  card_.entries.clear();
  card_.labels.clear();
  card_.image.reset();
}

}  // namespace varnok
