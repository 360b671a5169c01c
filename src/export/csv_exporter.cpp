#include "export/csv_exporter.h"

#include <algorithm>
#include <array>
#include <span>

#include "backup/files/vnk_util.h"
#include "export/date_text.h"
#include "export/field_switches.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

// Quirk: no line feed. Spreadsheets set up for earlier backups read it so.
constexpr std::string_view kRowEnd = "\r";

constexpr std::array kNameParts{
    kABPersonPrefixProperty,     kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
    kABPersonLastNameProperty,   kABPersonSuffixProperty,    kABPersonOrganizationProperty,
    kABPersonDepartmentProperty, kABPersonJobTitleProperty,  kABPersonNicknameProperty,
};

constexpr std::array kPhoneLabels{
    label::kMobile,  label::kIPhone,  label::kWork,  label::kHome,  label::kMain,
    label::kHomeFAX, label::kWorkFAX, label::kPager, label::kOther,
};
constexpr std::array kURLLabels{label::kHomePage, label::kHome, label::kWork};

// Quirk: work comes first although the header says home, work. Spreadsheets
// made from earlier backups rely on the columns as they are.
constexpr std::array kAddressLabels{label::kWork, label::kHome};

constexpr std::size_t kEmailColumns = 6;

// The value of the last entry under each of `labels`, null where there is none.
// Entries under other labels have no column. Valid while `entries` are.
template <std::size_t N>
std::array<const EntryView*, N> lastOfEach(std::span<const EntryView> entries,
                                           const std::array<std::string_view, N>& labels) {
  std::array<const EntryView*, N> slots{};
  for (const EntryView& entry : entries) {
    if (!entry.label) continue;
    const auto found = std::ranges::find(labels, *entry.label);
    if (found != labels.end()) slots[static_cast<std::size_t>(found - labels.begin())] = &entry;
  }
  return slots;
}

template <std::size_t N>
void appendTextColumns(std::string& row, const PersonRef& person, PropertyID property,
                       const std::array<std::string_view, N>& labels) {
  for (const EntryView* entry : lastOfEach(viewEntries(person, property), labels)) {
    row += ',';
    if (entry != nullptr) row += entry->text;
  }
}

// The text on one line: line feeds become spaces, carriage returns go, and so
// do double quotes unless `quote` takes their place.
void appendOnOneLine(std::string& text, std::string_view value, std::string_view quote) {
  const auto isSpecial = [](char c) { return c == '\n' || c == '\r' || c == '"'; };
  for (;;) {
    const auto special = std::ranges::find_if(value, isSpecial);
    text.append(value.begin(), special);
    if (special == value.end()) return;
    if (*special == '\n') text += ' ';
    if (*special == '"') text += quote;
    value = {special + 1, value.end()};
  }
}

// Every part keeps its place: an absent one leaves the space beside it.
void appendAddress(std::string& columns, const DictionaryView& address) {
  appendOnOneLine(columns, address.textOr(kAddressStreetKey), "");
  for (const std::string_view part :
       {kABPersonAddressCityKey, kABPersonAddressStateKey, kABPersonAddressZIPKey, kABPersonAddressCountryKey}) {
    columns += ' ';
    columns += address.textOr(part);
  }
}

void appendNames(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  for (const PropertyID part : kNameParts) {
    if (part != kNameParts.front()) row += ',';
    if (const auto text = viewText(person, part)) row += *text;
  }
}

void appendBirthday(std::string& row, const PersonRef& person, const ExportServices& services) {
  const std::optional<PropertyValue> birthday = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  row += ',';
  if (birthday) row += localDateText(std::get<Instant>(*birthday), services.clock);
}

void appendAnniversary(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  const auto dates = viewEntries(person, kABPersonDateProperty);
  const EntryView* anniversary = lastOfEach(dates, std::array{label::kAnniversary}).front();
  row += ',';
  if (anniversary != nullptr) row += instantText(anniversary->instant);
}

void appendPhones(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  appendTextColumns(row, person, kABPersonPhoneProperty, kPhoneLabels);
}

void appendEmails(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  const auto emails = viewEntries(person, kABPersonEmailProperty);
  for (std::size_t i = 0; i < kEmailColumns; ++i) {
    row += ',';
    if (i < emails.size()) row += emails[i].text;
  }
}

void appendURLs(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  appendTextColumns(row, person, kABPersonURLProperty, kURLLabels);
}

void appendAddresses(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  for (const EntryView* entry : lastOfEach(viewEntries(person, kABPersonAddressProperty), kAddressLabels)) {
    row += ',';
    if (entry != nullptr) appendAddress(row, entry->dictionary);
  }
}

void appendNote(std::string& row, const PersonRef& person, const ExportServices& /*services*/) {
  row += ",\"";
  if (const auto note = viewText(person, kABPersonNoteProperty)) appendOnOneLine(row, *note, "\"\"");
  row += '"';
}

using Append = void (*)(std::string& row, const PersonRef& person, const ExportServices& services);

// Columns that are shown or hidden together, in the header and in the rows.
struct Group {
  FieldSwitch onlyIf;
  std::span<const std::string_view> titles;
  std::span<const Append> texts;
};

constexpr std::array kNameTitles{text_key::Prefix,     text_key::First_Name, text_key::Middle_Name,
                                 text_key::Last_Name,  text_key::Suffix,     text_key::Organization,
                                 text_key::Department, text_key::Title,      text_key::Nickname};
constexpr std::array kDateTitles{text_key::Birthday, text_key::Anniversary};
constexpr std::array kPhoneTitles{text_key::Mobile,   text_key::iPhone, text_key::Work,
                                  text_key::Home,     text_key::Main,   text_key::Home_Fax,
                                  text_key::Work_Fax, text_key::Pager,  text_key::Other};
// Quirk: the addresses stand as stored, so the first two need not be a home and
// a work address.
constexpr std::array kEmailTitles{text_key::Home,  text_key::Work,  text_key::Email,
                                  text_key::Email, text_key::Email, text_key::Email};
constexpr std::array kURLTitles{text_key::Home_Page, text_key::Home, text_key::Work};
constexpr std::array kAddressTitles{text_key::Home, text_key::Work};
constexpr std::array kNoteTitles{text_key::Note};

constexpr std::array<Append, 1> kNames{&appendNames};
constexpr std::array<Append, 2> kDates{&appendBirthday, &appendAnniversary};
constexpr std::array<Append, 1> kPhones{&appendPhones};
constexpr std::array<Append, 1> kEmails{&appendEmails};
constexpr std::array<Append, 1> kURLs{&appendURLs};
constexpr std::array<Append, 1> kAddresses{&appendAddresses};
constexpr std::array<Append, 1> kNotes{&appendNote};

constexpr std::array kGroups{
    Group{FieldSwitch::none, kNameTitles, kNames},
    Group{fieldSwitch(key::EXPORT_CONF_DATES), kDateTitles, kDates},
    Group{fieldSwitch(key::EXPORT_CONF_PHONES), kPhoneTitles, kPhones},
    Group{fieldSwitch(key::EXPORT_CONF_EMAILS), kEmailTitles, kEmails},
    Group{fieldSwitch(key::EXPORT_CONF_URLS), kURLTitles, kURLs},
    Group{fieldSwitch(key::EXPORT_CONF_ADRS), kAddressTitles, kAddresses},
    Group{fieldSwitch(key::EXPORT_CONF_NOTES), kNoteTitles, kNotes},
};
static_assert(kPhoneTitles.size() == kPhoneLabels.size() && kEmailTitles.size() == kEmailColumns &&
              kURLTitles.size() == kURLLabels.size() && kAddressTitles.size() == kAddressLabels.size());

// A row fits as a rule.
constexpr std::size_t kUsualRowBytes = 1024;

std::string titleColumns(const Group& group, const TextCatalog& texts) {
  std::string columns;
  bool beginsRow = &group == kGroups.data();
  for (const std::string_view title : group.titles) {
    if (!beginsRow) columns += ',';
    beginsRow = false;
    columns += texts.text(title);
  }
  return columns;
}

}  // namespace

Status CSVExporter::exportTitle(OutputStream& buffer, std::string_view language, const TextCatalog& texts,
                                const ExportServices& services) {
  const FieldSwitches switches(services.preferences);
  for (const Group& group : kGroups) {
    if (!switches.allow(group.onlyIf)) continue;
    const std::string columns = titleColumns(group, texts);
    Status status = VNKUtil::writeTo(buffer, columns, /*isCSV=*/true, language, services.codec);
    if (!status.ok()) return status;
  }
  return buffer.append(kRowEnd);
}

// A code page holds a text or does not, so each text is written alone then;
// UTF-8 takes the row as it is.
Status CSVExporter::exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                                 const ExportServices& services) {
  const FieldSwitches switches(services.preferences);
  const bool textByText = VNKUtil::hasCodePage(/*isCSV=*/true, language);
  std::string row;
  row.reserve(kUsualRowBytes);
  for (const Group& group : kGroups) {
    if (!switches.allow(group.onlyIf)) continue;
    for (const Append append : group.texts) {
      append(row, person, services);
      if (!textByText) continue;
      Status status = VNKUtil::writeTo(buffer, row, /*isCSV=*/true, language, services.codec);
      if (!status.ok()) return status;
      row.clear();
    }
  }
  row += kRowEnd;
  return VNKUtil::writeTo(buffer, row, /*isCSV=*/true, language, services.codec);
}

#define VARNOK_FIELD_FUNCTION(name, append)                                                \
  std::string CSVExporter::name(const PersonRef& person, const ExportServices& services) { \
    std::string columns;                                                                   \
    append(columns, person, services);                                                     \
    return columns;                                                                        \
  }
VARNOK_FIELD_FUNCTION(CSV_N, appendNames)
VARNOK_FIELD_FUNCTION(CSV_BDAY, appendBirthday)
VARNOK_FIELD_FUNCTION(CSV_DATE, appendAnniversary)
VARNOK_FIELD_FUNCTION(CSV_TEL, appendPhones)
VARNOK_FIELD_FUNCTION(CSV_EMAIL, appendEmails)
VARNOK_FIELD_FUNCTION(CSV_URL, appendURLs)
VARNOK_FIELD_FUNCTION(CSV_ADR, appendAddresses)
VARNOK_FIELD_FUNCTION(CSV_NOTE, appendNote)
#undef VARNOK_FIELD_FUNCTION

}  // namespace varnok
