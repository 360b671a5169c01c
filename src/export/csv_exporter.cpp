#include "export/csv_exporter.h"

#include <algorithm>
#include <array>
#include <span>

#include "app/preferences/preference_keys.h"
#include "backup/files/vnk_util.h"
#include "export/date_text.h"
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
std::string textColumns(const PersonRef& person, PropertyID property, const std::array<std::string_view, N>& labels) {
  std::string columns;
  for (const EntryView* entry : lastOfEach(viewEntries(person, property), labels)) {
    columns += ',';
    if (entry != nullptr) columns += entry->text;
  }
  return columns;
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

using Write = std::string (*)(const PersonRef&, const ExportServices&);

// Columns that one switch shows or hides, in the header and in the rows.
struct Group {
  std::string_view onlyIf;  // Empty: always there.
  std::span<const std::string_view> titles;
  std::span<const Write> writes;
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

constexpr std::array<Write, 1> kNames{&CSVExporter::CSV_N};
constexpr std::array<Write, 2> kDates{&CSVExporter::CSV_BDAY, &CSVExporter::CSV_DATE};
constexpr std::array<Write, 1> kPhones{&CSVExporter::CSV_TEL};
constexpr std::array<Write, 1> kEmails{&CSVExporter::CSV_EMAIL};
constexpr std::array<Write, 1> kURLs{&CSVExporter::CSV_URL};
constexpr std::array<Write, 1> kAddresses{&CSVExporter::CSV_ADR};
constexpr std::array<Write, 1> kNotes{&CSVExporter::CSV_NOTE};

constexpr std::array kGroups{
    Group{{}, kNameTitles, kNames},
    Group{key::EXPORT_CONF_DATES, kDateTitles, kDates},
    Group{key::EXPORT_CONF_PHONES, kPhoneTitles, kPhones},
    Group{key::EXPORT_CONF_EMAILS, kEmailTitles, kEmails},
    Group{key::EXPORT_CONF_URLS, kURLTitles, kURLs},
    Group{key::EXPORT_CONF_ADRS, kAddressTitles, kAddresses},
    Group{key::EXPORT_CONF_NOTES, kNoteTitles, kNotes},
};
static_assert(kPhoneTitles.size() == kPhoneLabels.size() && kEmailTitles.size() == kEmailColumns &&
              kURLTitles.size() == kURLLabels.size() && kAddressTitles.size() == kAddressLabels.size());

bool isOn(const Group& group, const PreferenceStore& preferences) {
  return group.onlyIf.empty() || preferences.boolForKey(group.onlyIf);
}

Status write(OutputStream& buffer, std::string text, std::string_view language, const TextCodec& codec) {
  return VNKUtil::writeTo(buffer, std::move(text), /*isCSV=*/true, language, codec);
}

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
  for (const Group& group : kGroups) {
    if (!isOn(group, services.preferences)) continue;
    Status status = write(buffer, titleColumns(group, texts), language, services.codec);
    if (!status.ok()) return status;
  }
  return buffer.append(kRowEnd);
}

Status CSVExporter::exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                                 const ExportServices& services) {
  for (const Group& group : kGroups) {
    if (!isOn(group, services.preferences)) continue;
    for (const Write writeColumns : group.writes) {
      Status status = write(buffer, writeColumns(person, services), language, services.codec);
      if (!status.ok()) return status;
    }
  }
  return buffer.append(kRowEnd);
}

std::string CSVExporter::CSV_N(const PersonRef& person, const ExportServices& /*services*/) {
  std::string columns;
  for (const PropertyID part : kNameParts) {
    if (part != kNameParts.front()) columns += ',';
    if (const auto text = viewText(person, part)) columns += *text;
  }
  return columns;
}

std::string CSVExporter::CSV_BDAY(const PersonRef& person, const ExportServices& services) {
  const std::optional<PropertyValue> birthday = ABRecordCopyValue(person, kABPersonBirthdayProperty);
  std::string column = ",";
  if (birthday) column += localDateText(std::get<Instant>(*birthday), services.clock);
  return column;
}

std::string CSVExporter::CSV_DATE(const PersonRef& person, const ExportServices& /*services*/) {
  const auto dates = viewEntries(person, kABPersonDateProperty);
  const EntryView* anniversary = lastOfEach(dates, std::array{label::kAnniversary}).front();
  std::string column = ",";
  if (anniversary != nullptr) column += instantText(anniversary->instant);
  return column;
}

std::string CSVExporter::CSV_TEL(const PersonRef& person, const ExportServices& /*services*/) {
  return textColumns(person, kABPersonPhoneProperty, kPhoneLabels);
}

std::string CSVExporter::CSV_EMAIL(const PersonRef& person, const ExportServices& /*services*/) {
  const auto emails = viewEntries(person, kABPersonEmailProperty);
  std::string columns;
  for (std::size_t i = 0; i < kEmailColumns; ++i) {
    columns += ',';
    if (i < emails.size()) columns += emails[i].text;
  }
  return columns;
}

std::string CSVExporter::CSV_URL(const PersonRef& person, const ExportServices& /*services*/) {
  return textColumns(person, kABPersonURLProperty, kURLLabels);
}

std::string CSVExporter::CSV_ADR(const PersonRef& person, const ExportServices& /*services*/) {
  std::string columns;
  for (const EntryView* entry : lastOfEach(viewEntries(person, kABPersonAddressProperty), kAddressLabels)) {
    columns += ',';
    if (entry != nullptr) appendAddress(columns, entry->dictionary);
  }
  return columns;
}

std::string CSVExporter::CSV_NOTE(const PersonRef& person, const ExportServices& /*services*/) {
  std::string column = ",\"";
  if (const auto note = viewText(person, kABPersonNoteProperty)) appendOnOneLine(column, *note, "\"\"");
  column += '"';
  return column;
}

}  // namespace varnok
