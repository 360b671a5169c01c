#include "export/vcf_exporter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "export/date_text.h"
#include "export/field_switches.h"
#include "export/prepared_photos.h"

namespace varnok {
namespace {

using Lines = VCFExporter::Lines;

struct TypeWord {
  std::string_view label;
  std::string_view type;
};
constexpr std::array kTypes{
    TypeWord{label::kWork, "WORK"}, TypeWord{label::kHome, "HOME"},   TypeWord{label::kMobile, "CELL"},
    TypeWord{label::kMain, "MAIN"}, TypeWord{label::kPager, "PAGER"},
};

// A card without a photo fits as a rule.
constexpr std::size_t kUsualCardBytes = 2048;

// The bottom of the codec's scale: a backup's photos only have to show who it is.
constexpr double kShrunkQuality = 0.0;

template <typename... Pieces>
void append(std::string& text, const Pieces&... pieces) {
  (text.append(pieces), ...);
}

// Which characters of a value are written otherwise.
enum class Escape {
  lineBreaks,  // A line feed becomes "\n" in letters, a carriage return goes.
  semicolons,  // A backslash goes before each.
  both,
};

template <Escape escape>
void appendEscaped(std::string& text, std::string_view value) {
  constexpr bool kLineBreaks = escape != Escape::semicolons;
  constexpr bool kSemicolons = escape != Escape::lineBreaks;
  const auto isSpecial = [](char c) { return (kLineBreaks && (c == '\n' || c == '\r')) || (kSemicolons && c == ';'); };
  for (;;) {
    const auto special = std::ranges::find_if(value, isSpecial);
    text.append(value.begin(), special);
    if (special == value.end()) return;
    if (*special == '\n') text += "\\n";
    if (*special == ';') text += "\\;";
    value = std::string_view(special + 1, value.end());
  }
}

// A property's lines, put at the end of a text; nothing when it has none.
using Append = void (*)(std::string& lines, const PersonRef& person, const ExportServices& services);

// The line of a single text property.
template <Escape escape = Escape::lineBreaks>
void appendEscapedLine(std::string& lines, std::string_view start, std::optional<std::string_view> value) {
  if (!value) return;
  lines += start;
  appendEscaped<escape>(lines, *value);
  lines += "\r\n";
}

// How the lines of one multi-valued property are put together. Quirk: the
// pieces differ between the properties, and between the typed line and the item
// pair; readers of earlier backups know them as they are.
struct ListFormat {
  PropertyID property;
  std::string_view typed;         // Up to the type.
  std::string_view item;          // Between "itemN" and the value.
  std::string_view itemLabel;     // Between "itemN" and the label.
  std::string_view before = ":";  // Between the type and the value.
};
constexpr ListFormat kTel{kABPersonPhoneProperty, "TEL;CHARSET=UTF-8;TYPE=", ".TEL;CHARSET=UTF-8:", ".X-ABLabel:"};
constexpr ListFormat kEmail{kABPersonEmailProperty,
                            "EMAIL;CHARSET=UTF-8;TYPE=", ".EMAIL;CHARSET=UTF-8:", ".X-ABLabel:"};
constexpr ListFormat kURL{kABPersonURLProperty, "URL;CHARSET=UTF-8;TYPE=", ".URL;CHARSET=UTF-8:", ".X-ABLabel:"};
constexpr ListFormat kDate{kABPersonDateProperty,
                           "X-ABDATES;CHARSET=UTF-8;TYPE=", ".X-ABDATE;CHARSET=UTF-8:", ".X-ABLabel:"};
constexpr ListFormat kFamily{kABPersonRelatedNamesProperty,
                             "X-ABRELATEDNAMES;CHARSET=UTF-8;TYPE=", ".X-ABRELATEDNAMES;CHARSET=UTF-8:", ".X-ABLabel:"};
constexpr ListFormat kAddress{kABPersonAddressProperty, "ADR;CHARSET=UTF-8;",
                              ".ADR;CHARSET=UTF-8:", ".X-ABLabel;CHARSET=UTF-8:"};

// Ends an item pair, whose value has just been written, with its label line.
void appendItemLabel(std::string& lines, const std::string& number, std::string_view before,
                     std::optional<std::string_view> label) {
  append(lines, "\r\nitem", number, before, label.value_or("(null)"), "\r\n");
}

// `appendValue(lines, entry value)` writes an entry's value.
template <typename AppendValue>
void appendList(std::string& lines, const PersonRef& person, const ListFormat& format, const ExportServices& services,
                const AppendValue& appendValue) {
  for (const EntryView& entry : viewEntries(person, format.property)) {
    if (const auto type = VCFExporter::convertVCFLabel(entry.label)) {
      append(lines, format.typed, *type, format.before);
      appendValue(lines, entry);
      lines += "\r\n";
    } else {
      const std::string number = std::to_string(VCFExporter::itemCount(services));
      append(lines, "item", number, format.item);
      appendValue(lines, entry);
      appendItemLabel(lines, number, format.itemLabel, entry.label);
    }
  }
}

void appendRaw(std::string& lines, const EntryView& entry) {
  lines += entry.text;
}

// Post-office box and extended address stay empty.
void appendAddress(std::string& lines, const EntryView& entry) {
  const DictionaryView& address = entry.dictionary;
  lines += ";;";
  appendEscaped<Escape::both>(lines, address.textOr(kAddressStreetKey));
  append(lines, ";", address.textOr(kABPersonAddressCityKey), ";", address.textOr(kABPersonAddressStateKey), ";",
         address.textOr(kABPersonAddressZIPKey), ";", address.textOr(kABPersonAddressCountryKey));
}

void appendBegin(std::string& lines, const PersonRef& /*person*/, const ExportServices& /*services*/) {
  lines += "BEGIN:VCARD\r\n";
}

void appendVersion(std::string& lines, const PersonRef& /*person*/, const ExportServices& /*services*/) {
  lines += "VERSION:3.0\r\n";
}

// Quirk: the extra line feed leaves an empty line between cards.
void appendEnd(std::string& lines, const PersonRef& /*person*/, const ExportServices& /*services*/) {
  lines += "END:VCARD\r\n\n";
}

void appendN(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  char separator = ':';
  lines += "N;CHARSET=UTF-8";
  for (const PropertyID part : {kABPersonLastNameProperty, kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                kABPersonPrefixProperty, kABPersonSuffixProperty}) {
    lines += std::exchange(separator, ';');
    if (const auto text = viewText(person, part)) appendEscaped<Escape::lineBreaks>(lines, *text);
  }
  lines += "\r\n";
}

void appendFN(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  appendEscapedLine(lines, "FN;CHARSET=UTF-8:", ABRecordCopyCompositeName(person));
}

void appendNickname(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  appendEscapedLine(lines, "NICKNAME;CHARSET=UTF-8:", viewText(person, kABPersonNicknameProperty));
}

void appendPhoneticFirstName(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  appendEscapedLine(lines,
                    "X-PHONETIC-FIRST-NAME;CHARSET=UTF-8:", viewText(person, kABPersonFirstNamePhoneticProperty));
}

void appendPhoneticLastName(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  appendEscapedLine(lines, "X-PHONETIC-LAST-NAME;CHARSET=UTF-8:", viewText(person, kABPersonLastNamePhoneticProperty));
}

void appendPhotoAsChosen(std::string& lines, const PersonRef& person, const ExportServices& services) {
  const bool shrink = services.preferences.boolForKey(key::EXPORT_CONF_SHRINK);
  if (const auto photo = VCFExporter::vCard_PHOTO(person, shrink, services)) lines += *photo;
}

void appendBirthday(std::string& lines, const PersonRef& person, const ExportServices& services) {
  const std::optional<PropertyValue> birthday = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  if (!birthday) return;
  append(lines, "BDAY;CHARSET=UTF-8:", localDateText(std::get<Instant>(*birthday), services.clock), "\r\n");
}

void appendDates(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kDate, services,
             [](std::string& text, const EntryView& entry) { text += instantText(entry.instant); });
}

void appendAddresses(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kAddress, services, appendAddress);
}

void appendPhones(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kTel, services,
             [](std::string& text, const EntryView& entry) { appendEscaped<Escape::semicolons>(text, entry.text); });
}

void appendEmails(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kEmail, services, appendRaw);
}

void appendURLs(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kURL, services, appendRaw);
}

void appendFamily(std::string& lines, const PersonRef& person, const ExportServices& services) {
  appendList(lines, person, kFamily, services, appendRaw);
}

void appendTitle(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  if (const auto title = viewText(person, kABPersonJobTitleProperty))
    append(lines, "TITLE;CHARSET=UTF-8:", *title, "\r\n");
}

void appendOrganization(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  lines += "ORG;CHARSET=UTF-8:";
  lines += viewText(person, kABPersonOrganizationProperty).value_or("");
  lines += ';';
  lines += viewText(person, kABPersonDepartmentProperty).value_or("");
  lines += "\r\n";
}

void appendNote(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  appendEscapedLine<Escape::both>(lines, "NOTE;CHARSET=UTF-8:", viewText(person, kABPersonNoteProperty));
}

void appendSocialProfiles(std::string& lines, const PersonRef& person, const ExportServices& /*services*/) {
  for (const EntryView& entry : viewEntries(person, kABPersonSocialProfileProperty)) {
    const DictionaryView& profile = entry.dictionary;
    append(lines, "X-SOCIALPROFILE;CHARSET=UTF-8;TYPE=", profile.textOr(kSocialProfileServiceKey), ":",
           profile.textOr(kSocialProfileUsernameKey), "\r\n");
  }
}

void appendMessages(std::string& lines, const PersonRef& person, const ExportServices& services) {
  for (const EntryView& entry : viewEntries(person, kABPersonInstantMessageProperty)) {
    const DictionaryView& message = entry.dictionary;
    const std::string_view service = message.textOr(kABPersonInstantMessageServiceKey);
    const std::string_view username = message.textOr(kABPersonInstantMessageUsernameKey);
    if (const auto type = VCFExporter::convertVCFLabel(entry.label)) {
      append(lines, "X-", service, ";TYPE=", *type, ";CHARSET=UTF-8:", username, "\r\n");
    } else {
      const std::string number = std::to_string(VCFExporter::itemCount(services));
      append(lines, "item", number, ".X-", service, ";CHARSET=UTF-8:", username);
      appendItemLabel(lines, number, ".X-ABLabel;CHARSET=UTF-8:", entry.label);
    }
  }
}

// A hook that keeps its place in the card.
void appendNothing(std::string& /*lines*/, const PersonRef& /*person*/, const ExportServices& /*services*/) {}

// Cards of which kind of backup.
enum class In { all, oneFile, archive };

// The order of a card. A switch guards its property; without one it is always
// written when the person has it.
struct CardStep {
  FieldSwitch onlyIf;
  Append append;
  In in = In::all;
};

bool belongs(const CardStep& step, In kind, const FieldSwitches& switches) {
  return (step.in == In::all || step.in == kind) && switches.allow(step.onlyIf);
}

constexpr FieldSwitch kAlways = FieldSwitch::none;

constexpr std::array kCard{
    CardStep{kAlways, &appendBegin},
    CardStep{kAlways, &appendVersion},
    CardStep{kAlways, &appendN},
    CardStep{kAlways, &appendFN},
    CardStep{kAlways, &appendNickname},
    CardStep{kAlways, &appendPhoneticFirstName},
    CardStep{kAlways, &appendPhoneticLastName},
    CardStep{fieldSwitch(key::EXPORT_CONF_PHOTOS), &appendPhotoAsChosen},
    CardStep{fieldSwitch(key::EXPORT_CONF_DATES), &appendBirthday},
    CardStep{fieldSwitch(key::EXPORT_CONF_DATES), &appendDates, In::oneFile},
    CardStep{fieldSwitch(key::EXPORT_CONF_ADRS), &appendAddresses},
    CardStep{fieldSwitch(key::EXPORT_CONF_PHONES), &appendPhones},
    CardStep{fieldSwitch(key::EXPORT_CONF_EMAILS), &appendEmails},
    CardStep{kAlways, &appendTitle},
    CardStep{kAlways, &appendOrganization},
    CardStep{fieldSwitch(key::EXPORT_CONF_NOTES), &appendNote},
    CardStep{fieldSwitch(key::EXPORT_CONF_URLS), &appendURLs},
    CardStep{kAlways, &appendSocialProfiles},
    CardStep{kAlways, &appendMessages},
    // Quirk: in an archive the dates come here, and no switch takes them out.
    // Its readers have always found them.
    CardStep{kAlways, &appendDates, In::archive},
    CardStep{kAlways, &appendFamily},
    CardStep{kAlways, &appendEnd},
};

}  // namespace

Status VCFExporter::exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                                 const ExportServices& services) {
  std::optional<std::string> card(std::in_place);
  card->reserve(kUsualCardBytes);
  const FieldSwitches switches(services.preferences);
  for (const CardStep& step : kCard) {
    if (belongs(step, In::oneFile, switches)) step.append(*card, person, services);
  }
  return VNKUtil::writeTo(buffer, card, /*isCSV=*/false, language, services.codec);
}

Status VCFExporter::exportAsZip(ZipArchive& archive, const PersonRef& person, std::string_view language,
                                const std::optional<std::string>& fileName, const ExportServices& services) {
  std::string card;
  const std::string_view stem = fileName ? std::string_view(*fileName) : std::string_view();
  const FieldSwitches switches(services.preferences);
  for (const CardStep& step : kCard) {
    if (!belongs(step, In::archive, switches)) continue;
    std::string lines;
    step.append(lines, person, services);
    VNKUtil::writeToZip(card, lines, stem, language, services.codec);
  }
  if (!archive.addData(std::move(card), zipEntryName(fileName, services.random.next()))) return archive.status();
  return {};
}

std::optional<std::string_view> VCFExporter::convertVCFLabel(std::optional<std::string_view> label) {
  if (!label) return std::nullopt;
  for (const TypeWord& word : kTypes) {
    if (word.label == *label) return word.type;
  }
  return std::nullopt;
}

std::int64_t VCFExporter::itemCount(const ExportServices& services) {
  Status flushed;
  const std::int64_t number = services.preferences.takeNumberForKey(key::itemCount, flushed);
  flushed.ignore("the number counts for this run; a backup does not depend on it later");
  return number;
}

// Quirk: PNG bytes go out under TYPE=JPEG too; readers look at the bytes.
std::string VCFExporter::photoLine(std::string_view bytes, bool shrink, const ImageCodec& images) {
  std::optional<std::string> reduced;
  if (shrink) {
    const std::optional<Image> image = VNKUtil::prepareImage(bytes, images);
    if (image) reduced = images.encodeJPEG(*image, kShrunkQuality);
  }
  if (reduced) bytes = *reduced;
  std::string line;
  line.reserve(bytes.size() / 3 * 4 + 40);
  line += "PHOTO;ENCODING=b;TYPE=JPEG:";
  VNKUtil::appendBASE64(line, bytes);
  line += "\r\n";
  return line;
}

Lines VCFExporter::vCard_PHOTO(const PersonRef& person, bool shrink, const ExportServices& services) {
  if (!ABPersonHasImageData(person)) return std::nullopt;
  if (services.photos != nullptr) return services.photos->take(ABRecordGetRecordID(person));
  const std::optional<std::string> bytes = ABPersonCopyImageData(person);
  return bytes ? std::optional(photoLine(*bytes, shrink, services.images)) : std::nullopt;
}

#define VARNOK_PROPERTY_FUNCTION(name, append)                                       \
  Lines VCFExporter::name(const PersonRef& person, const ExportServices& services) { \
    std::string lines;                                                               \
    append(lines, person, services);                                                 \
    return lines.empty() ? std::nullopt : Lines(std::move(lines));                   \
  }
VARNOK_PROPERTY_FUNCTION(vCard_BEGIN, appendBegin)
VARNOK_PROPERTY_FUNCTION(vCard_VERSION, appendVersion)
VARNOK_PROPERTY_FUNCTION(vCard_N, appendN)
VARNOK_PROPERTY_FUNCTION(vCard_FN, appendFN)
VARNOK_PROPERTY_FUNCTION(vCard_NICKNAME, appendNickname)
VARNOK_PROPERTY_FUNCTION(vCard_X_PHONETIC_FIRST_NAME, appendPhoneticFirstName)
VARNOK_PROPERTY_FUNCTION(vCard_X_PHONETIC_LAST_NAME, appendPhoneticLastName)
VARNOK_PROPERTY_FUNCTION(vCard_BDAY, appendBirthday)
VARNOK_PROPERTY_FUNCTION(vCard_DATE, appendDates)
VARNOK_PROPERTY_FUNCTION(vCard_ADR, appendAddresses)
VARNOK_PROPERTY_FUNCTION(vCard_TEL, appendPhones)
VARNOK_PROPERTY_FUNCTION(vCard_EMAIL, appendEmails)
VARNOK_PROPERTY_FUNCTION(vCard_TITLE, appendTitle)
VARNOK_PROPERTY_FUNCTION(vCard_ORG, appendOrganization)
VARNOK_PROPERTY_FUNCTION(vCard_NOTE, appendNote)
VARNOK_PROPERTY_FUNCTION(vCard_URL, appendURLs)
VARNOK_PROPERTY_FUNCTION(vCard_X_SOCIALPROFILE, appendSocialProfiles)
VARNOK_PROPERTY_FUNCTION(vCard_IM, appendMessages)
VARNOK_PROPERTY_FUNCTION(vCard_FAMILIY, appendFamily)
VARNOK_PROPERTY_FUNCTION(vCard_END, appendEnd)
VARNOK_PROPERTY_FUNCTION(vCard_LABEL, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_MAILER, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_TZ, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_GEO, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_ROLE, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_LOGO, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_AGENT, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_REV, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_SOUND, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_UID, appendNothing)
VARNOK_PROPERTY_FUNCTION(vCard_KEY, appendNothing)
#undef VARNOK_PROPERTY_FUNCTION

}  // namespace varnok
