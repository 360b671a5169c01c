#include "export/vcf_exporter.h"

#include <array>

#include "app/preferences/preference_keys.h"
#include "backup/files/vnk_util.h"
#include "export/date_text.h"

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

// The bottom of the codec's scale: a backup's photos only have to show who it is.
constexpr double kShrunkQuality = 0.0;

template <typename... Pieces>
void append(std::string& text, const Pieces&... pieces) {
  (text.append(pieces), ...);
}

// Line feeds become "\n" in letters, carriage returns go.
void appendEscaped(std::string& text, std::string_view value) {
  for (;;) {
    const std::size_t special = value.find_first_of("\n\r");
    text += value.substr(0, special);
    if (special == std::string_view::npos) return;
    if (value[special] == '\n') text += "\\n";
    value.remove_prefix(special + 1);
  }
}

std::string withSemicolonsEscaped(std::string_view value) {
  std::string text;
  for (const char c : value) {
    if (c == ';') text += '\\';
    text += c;
  }
  return text;
}

void appendSemicolonsEscaped(std::string& text, std::string_view value) {
  if (value.find(';') == std::string_view::npos) {
    text += value;
  } else {
    text += withSemicolonsEscaped(value);
  }
}

// The line of a single text property whose value takes the first escape.
Lines escapedLine(std::string_view start, const std::optional<std::string>& value) {
  if (!value) return std::nullopt;
  std::string line(start);
  appendEscaped(line, *value);
  line += "\r\n";
  return line;
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
                     const std::optional<std::string>& label) {
  append(lines, "\r\nitem", number, before, label ? std::string_view(*label) : "(null)", "\r\n");
}

// `appendValue(lines, entry value)` writes an entry's value.
template <typename AppendValue>
Lines listLines(const PersonRef& person, const ListFormat& format, const ExportServices& services,
                const AppendValue& appendValue) {
  const MultiValue list = copyList(person, format.property);
  if (list.entries.empty()) return std::nullopt;
  std::string lines;
  for (const MultiValueEntry& entry : list.entries) {
    if (const auto type = VCFExporter::convertVCFLabel(entry.label)) {
      append(lines, format.typed, *type, format.before);
      appendValue(lines, entry.value);
      lines += "\r\n";
    } else {
      const std::string number = std::to_string(VCFExporter::itemCount(services));
      append(lines, "item", number, format.item);
      appendValue(lines, entry.value);
      appendItemLabel(lines, number, format.itemLabel, entry.label);
    }
  }
  return lines;
}

void appendRaw(std::string& lines, const EntryValue& value) {
  lines += std::get<std::string>(value);
}

// Post-office box and extended address stay empty.
void appendAddress(std::string& lines, const EntryValue& value) {
  const auto& address = std::get<Dictionary>(value);
  std::string street;
  appendEscaped(street, address.textOr(kAddressStreetKey));
  lines += ";;";
  appendSemicolonsEscaped(lines, street);
  append(lines, ";", address.textOr(kABPersonAddressCityKey), ";", address.textOr(kABPersonAddressStateKey), ";",
         address.textOr(kABPersonAddressZIPKey), ";", address.textOr(kABPersonAddressCountryKey));
}

// The order of a card. A switch guards its property; without one it is always
// written when the person has it.
struct CardStep {
  std::string_view onlyIf;
  Lines (*write)(const PersonRef&, const ExportServices&);
};

Lines photoAsChosen(const PersonRef& person, const ExportServices& services) {
  return VCFExporter::vCard_PHOTO(person, services.preferences.boolForKey(key::EXPORT_CONF_SHRINK), services);
}

constexpr std::string_view kAlways;

constexpr std::array kCard{
    CardStep{kAlways, &VCFExporter::vCard_BEGIN},
    CardStep{kAlways, &VCFExporter::vCard_VERSION},
    CardStep{kAlways, &VCFExporter::vCard_N},
    CardStep{kAlways, &VCFExporter::vCard_FN},
    CardStep{kAlways, &VCFExporter::vCard_NICKNAME},
    CardStep{kAlways, &VCFExporter::vCard_X_PHONETIC_FIRST_NAME},
    CardStep{kAlways, &VCFExporter::vCard_X_PHONETIC_LAST_NAME},
    CardStep{key::EXPORT_CONF_PHOTOS, &photoAsChosen},
    CardStep{key::EXPORT_CONF_DATES, &VCFExporter::vCard_BDAY},
    CardStep{key::EXPORT_CONF_DATES, &VCFExporter::vCard_DATE},
    CardStep{key::EXPORT_CONF_ADRS, &VCFExporter::vCard_ADR},
    CardStep{kAlways, &VCFExporter::vCard_LABEL},
    CardStep{key::EXPORT_CONF_PHONES, &VCFExporter::vCard_TEL},
    CardStep{key::EXPORT_CONF_EMAILS, &VCFExporter::vCard_EMAIL},
    CardStep{kAlways, &VCFExporter::vCard_MAILER},
    CardStep{kAlways, &VCFExporter::vCard_TZ},
    CardStep{kAlways, &VCFExporter::vCard_GEO},
    CardStep{kAlways, &VCFExporter::vCard_TITLE},
    CardStep{kAlways, &VCFExporter::vCard_ROLE},
    CardStep{kAlways, &VCFExporter::vCard_LOGO},
    CardStep{kAlways, &VCFExporter::vCard_AGENT},
    CardStep{kAlways, &VCFExporter::vCard_ORG},
    CardStep{key::EXPORT_CONF_NOTES, &VCFExporter::vCard_NOTE},
    CardStep{kAlways, &VCFExporter::vCard_REV},
    CardStep{kAlways, &VCFExporter::vCard_SOUND},
    CardStep{key::EXPORT_CONF_URLS, &VCFExporter::vCard_URL},
    CardStep{kAlways, &VCFExporter::vCard_X_SOCIALPROFILE},
    CardStep{kAlways, &VCFExporter::vCard_IM},
    CardStep{kAlways, &VCFExporter::vCard_FAMILIY},
    CardStep{kAlways, &VCFExporter::vCard_UID},
    CardStep{kAlways, &VCFExporter::vCard_KEY},
    CardStep{kAlways, &VCFExporter::vCard_END},
};

}  // namespace

Status VCFExporter::exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                                 const ExportServices& services) {
  for (const CardStep& step : kCard) {
    if (!step.onlyIf.empty() && !services.preferences.boolForKey(step.onlyIf)) continue;
    Status status = VNKUtil::writeTo(buffer, step.write(person, services), /*isCSV=*/false, language, services.codec);
    if (!status.ok()) return status;
  }
  return {};
}

std::optional<std::string_view> VCFExporter::convertVCFLabel(const std::optional<std::string>& label) {
  if (!label) return std::nullopt;
  for (const TypeWord& word : kTypes) {
    if (word.label == *label) return word.type;
  }
  return std::nullopt;
}

std::int64_t VCFExporter::itemCount(const ExportServices& services) {
  const std::int64_t number = services.preferences.integerForKey(key::itemCount);
  services.preferences.setInteger(number + 1, key::itemCount);
  services.preferences.synchronize().ignore("the number counts for this run; a backup does not depend on it later");
  return number;
}

Lines VCFExporter::vCard_BEGIN(const PersonRef& /*person*/, const ExportServices& /*services*/) {
  return "BEGIN:VCARD\r\n";
}

Lines VCFExporter::vCard_VERSION(const PersonRef& /*person*/, const ExportServices& /*services*/) {
  return "VERSION:3.0\r\n";
}

// Quirk: the extra line feed leaves an empty line between cards.
Lines VCFExporter::vCard_END(const PersonRef& /*person*/, const ExportServices& /*services*/) {
  return "END:VCARD\r\n\n";
}

Lines VCFExporter::vCard_N(const PersonRef& person, const ExportServices& /*services*/) {
  std::string line = "N;CHARSET=UTF-8:";
  bool first = true;
  for (const PropertyID part : {kABPersonLastNameProperty, kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                kABPersonPrefixProperty, kABPersonSuffixProperty}) {
    if (!first) line += ';';
    first = false;
    if (const auto text = copyText(person, part)) appendEscaped(line, *text);
  }
  line += "\r\n";
  return line;
}

Lines VCFExporter::vCard_FN(const PersonRef& person, const ExportServices& /*services*/) {
  return escapedLine("FN;CHARSET=UTF-8:", ABRecordCopyCompositeName(person));
}

Lines VCFExporter::vCard_NICKNAME(const PersonRef& person, const ExportServices& /*services*/) {
  return escapedLine("NICKNAME;CHARSET=UTF-8:", copyText(person, kABPersonNicknameProperty));
}

Lines VCFExporter::vCard_X_PHONETIC_FIRST_NAME(const PersonRef& person, const ExportServices& /*services*/) {
  return escapedLine("X-PHONETIC-FIRST-NAME;CHARSET=UTF-8:", copyText(person, kABPersonFirstNamePhoneticProperty));
}

Lines VCFExporter::vCard_X_PHONETIC_LAST_NAME(const PersonRef& person, const ExportServices& /*services*/) {
  return escapedLine("X-PHONETIC-LAST-NAME;CHARSET=UTF-8:", copyText(person, kABPersonLastNamePhoneticProperty));
}

// Quirk: PNG bytes go out under TYPE=JPEG too; readers look at the bytes.
Lines VCFExporter::vCard_PHOTO(const PersonRef& person, bool shrink, const ExportServices& services) {
  if (!ABPersonHasImageData(person)) return std::nullopt;
  std::optional<std::string> bytes = ABPersonCopyImageData(person);
  if (!bytes) return std::nullopt;
  if (shrink) {
    const std::optional<Image> image = VNKUtil::prepareImage(*bytes, services.images);
    std::optional<std::string> reduced = image ? services.images.encodeJPEG(*image, kShrunkQuality) : std::nullopt;
    if (reduced) bytes = std::move(reduced);
  }
  std::string line;
  line.reserve(bytes->size() / 3 * 4 + 40);
  line += "PHOTO;ENCODING=b;TYPE=JPEG:";
  VNKUtil::appendBASE64(line, *bytes);
  line += "\r\n";
  return line;
}

Lines VCFExporter::vCard_BDAY(const PersonRef& person, const ExportServices& services) {
  const std::optional<PropertyValue> birthday = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  if (!birthday) return std::nullopt;
  return "BDAY;CHARSET=UTF-8:" + localDateText(std::get<Instant>(*birthday), services.clock) + "\r\n";
}

Lines VCFExporter::vCard_DATE(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kDate, services,
                   [](std::string& lines, const EntryValue& value) { lines += instantText(std::get<Instant>(value)); });
}

Lines VCFExporter::vCard_ADR(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kAddress, services, appendAddress);
}

Lines VCFExporter::vCard_TEL(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kTel, services, [](std::string& lines, const EntryValue& value) {
    appendSemicolonsEscaped(lines, std::get<std::string>(value));
  });
}

Lines VCFExporter::vCard_EMAIL(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kEmail, services, appendRaw);
}

Lines VCFExporter::vCard_URL(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kURL, services, appendRaw);
}

Lines VCFExporter::vCard_FAMILIY(const PersonRef& person, const ExportServices& services) {
  return listLines(person, kFamily, services, appendRaw);
}

Lines VCFExporter::vCard_TITLE(const PersonRef& person, const ExportServices& /*services*/) {
  const std::optional<std::string> title = copyText(person, kABPersonJobTitleProperty);
  if (!title) return std::nullopt;
  return "TITLE;CHARSET=UTF-8:" + *title + "\r\n";
}

Lines VCFExporter::vCard_ORG(const PersonRef& person, const ExportServices& /*services*/) {
  return "ORG;CHARSET=UTF-8:" + copyText(person, kABPersonOrganizationProperty).value_or("") + ";" +
         copyText(person, kABPersonDepartmentProperty).value_or("") + "\r\n";
}

Lines VCFExporter::vCard_NOTE(const PersonRef& person, const ExportServices& /*services*/) {
  std::optional<std::string> note = copyText(person, kABPersonNoteProperty);
  if (note && note->find(';') != std::string::npos) note = withSemicolonsEscaped(*note);
  return escapedLine("NOTE;CHARSET=UTF-8:", note);
}

Lines VCFExporter::vCard_X_SOCIALPROFILE(const PersonRef& person, const ExportServices& /*services*/) {
  const MultiValue profiles = copyList(person, kABPersonSocialProfileProperty);
  if (profiles.entries.empty()) return std::nullopt;
  std::string lines;
  for (const MultiValueEntry& entry : profiles.entries) {
    const auto& profile = std::get<Dictionary>(entry.value);
    append(lines, "X-SOCIALPROFILE;CHARSET=UTF-8;TYPE=", profile.textOr(kSocialProfileServiceKey), ":",
           profile.textOr(kSocialProfileUsernameKey), "\r\n");
  }
  return lines;
}

Lines VCFExporter::vCard_IM(const PersonRef& person, const ExportServices& services) {
  const MultiValue messages = copyList(person, kABPersonInstantMessageProperty);
  if (messages.entries.empty()) return std::nullopt;
  std::string lines;
  for (const MultiValueEntry& entry : messages.entries) {
    const auto& message = std::get<Dictionary>(entry.value);
    const std::string_view service = message.textOr(kABPersonInstantMessageServiceKey);
    const std::string_view username = message.textOr(kABPersonInstantMessageUsernameKey);
    if (const auto type = convertVCFLabel(entry.label)) {
      append(lines, "X-", service, ";TYPE=", *type, ";CHARSET=UTF-8:", username, "\r\n");
    } else {
      const std::string number = std::to_string(itemCount(services));
      append(lines, "item", number, ".X-", service, ";CHARSET=UTF-8:", username);
      appendItemLabel(lines, number, ".X-ABLabel;CHARSET=UTF-8:", entry.label);
    }
  }
  return lines;
}

#define VARNOK_EMPTY_HOOK(name)                                                              \
  Lines VCFExporter::name(const PersonRef& /*person*/, const ExportServices& /*services*/) { \
    return std::nullopt;                                                                     \
  }
VARNOK_EMPTY_HOOK(vCard_LABEL)
VARNOK_EMPTY_HOOK(vCard_MAILER)
VARNOK_EMPTY_HOOK(vCard_TZ)
VARNOK_EMPTY_HOOK(vCard_GEO)
VARNOK_EMPTY_HOOK(vCard_ROLE)
VARNOK_EMPTY_HOOK(vCard_LOGO)
VARNOK_EMPTY_HOOK(vCard_AGENT)
VARNOK_EMPTY_HOOK(vCard_REV)
VARNOK_EMPTY_HOOK(vCard_SOUND)
VARNOK_EMPTY_HOOK(vCard_UID)
VARNOK_EMPTY_HOOK(vCard_KEY)
#undef VARNOK_EMPTY_HOOK

}  // namespace varnok
