#include "export/html_exporter.h"

#include <array>
#include <boost/json.hpp>
#include <charconv>
#include <limits>
#include <span>

#include <fmt/format.h>

#include "backup/files/vnk_util.h"
#include "platform/text_key.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

namespace json = boost::json;

constexpr std::string_view kBlanks = " \t\n\v\f\r";

struct HeaderText {
  std::string_view member;
  std::string_view key;
};
constexpr std::array kHeader{
    HeaderText{"name", text_key::First_Name},
    HeaderText{"lastName", text_key::Last_Name},
    HeaderText{"edit", text_key::EDIT},
    HeaderText{"loading", text_key::LOADING},
    HeaderText{"search", text_key::SEARCH},
    HeaderText{"searching", text_key::SEARCHING},
    HeaderText{"searchPHolder", text_key::WRITE_SOMETHING},
    HeaderText{"close", text_key::CLOSE},
    HeaderText{"save", text_key::SAVE},
    HeaderText{"error", text_key::ERROR},
    HeaderText{"remove", text_key::REMOVE},
    HeaderText{"removing", text_key::REMOVING},
    HeaderText{"remove_msg", text_key::REMOVE_MSG},
    HeaderText{"new_record", text_key::NEW_RECORD},
};

struct Field {
  std::string_view key;
  PropertyID property;
};
constexpr std::array kNameFields{
    Field{text_key::First_Name, kABPersonFirstNameProperty},
    Field{text_key::Middle_Name, kABPersonMiddleNameProperty},
    Field{text_key::Last_Name, kABPersonLastNameProperty},
    Field{text_key::Prefix, kABPersonPrefixProperty},
    Field{text_key::Suffix, kABPersonSuffixProperty},
    Field{text_key::Organization, kABPersonOrganizationProperty},
    Field{text_key::Department, kABPersonDepartmentProperty},
    Field{text_key::Title, kABPersonJobTitleProperty},
    Field{text_key::Nickname, kABPersonNicknameProperty},
};

// One entry of a multi-valued property that the form has a place for.
struct Slot {
  std::string_view key;
  std::string_view label;
};
constexpr std::array kPhoneSlots{
    Slot{text_key::Mobile, label::kMobile},    Slot{text_key::iPhone, label::kIPhone},
    Slot{text_key::Work, label::kWork},        Slot{text_key::Home, label::kHome},
    Slot{text_key::Main, label::kMain},        Slot{text_key::Home_Fax, label::kHomeFAX},
    Slot{text_key::Work_Fax, label::kWorkFAX}, Slot{text_key::Pager, label::kPager},
    Slot{text_key::Other, label::kOther},
};
constexpr std::array kEmailSlots{Slot{text_key::Work, label::kWork}, Slot{text_key::Home, label::kHome}};
constexpr std::array kURLSlots{Slot{text_key::Home_Page, label::kHomePage}, Slot{text_key::Work, label::kWork},
                               Slot{text_key::Home, label::kHome}};

std::string_view unlessBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos ? std::string_view() : text;
}

// Quirk: of several entries with the label of a slot the last one fills it, and
// entries with other labels are left out. The form shows a fixed set of fields,
// and a save changes only what it shows.
HTMLExporter::Items slotItems(const PersonRef& person, PropertyID property, std::span<const Slot> slots,
                              const TextCatalog& texts) {
  const std::span<const EntryView> entries = viewEntries(person, property);
  HTMLExporter::Items items;
  for (const Slot& slot : slots) {
    std::optional<std::string_view> value;
    std::int32_t index = -1;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].label != slot.label) continue;
      value = entries[i].text;
      index = static_cast<std::int32_t>(i);
    }
    items.push_back(HTMLExporter::toDictionary(slot.key, value, property, slot.label, index, texts));
  }
  return items;
}

HTMLExporter::Items fieldItems(const PersonRef& person, std::span<const Field> fields, const TextCatalog& texts) {
  HTMLExporter::Items items;
  for (const Field& field : fields) {
    items.push_back(HTMLExporter::toDictionary(field.key, viewText(person, field.property), field.property, texts));
  }
  return items;
}

// The sections of the form, in order. The first has no heading.
struct Section {
  std::string_view heading;
  HTMLExporter::Items (*items)(const PersonRef& person, const TextCatalog& texts);
};
constexpr std::array kSections{
    Section{"", &HTMLExporter::JSON_N},
    Section{text_key::EXPORT_CONF_PHONES, &HTMLExporter::JSON_TEL},
    Section{text_key::EXPORT_CONF_EMAILS, &HTMLExporter::JSON_EMAIL},
    Section{text_key::EXPORT_CONF_NOTES, &HTMLExporter::JSON_NOTE},
    Section{text_key::EXPORT_CONF_URLS, &HTMLExporter::JSON_URL},
};

json::string jsonText(std::string_view text) {
  std::string copy;
  const std::string_view valid = validUTF8(text, copy);
  return json::string(valid.data(), valid.size());
}

void appendItems(json::array& array, const HTMLExporter::Items& items) {
  for (const HTMLExporter::Item& item : items) {
    json::object object;
    for (const auto& [member, text] : item.entries())
      object.emplace(member, jsonText(text));
    array.push_back(std::move(object));
  }
}

// Small on purpose: the picture only tells the user whom the form is about.
std::string thumbnailURL(const PersonRef& person, const ImageCodec& images) {
  const std::optional<std::string> stored = ABPersonCopyImageData(person);
  const std::optional<Image> image = stored ? VNKUtil::prepareImage(*stored, images) : std::nullopt;
  const std::optional<std::string> jpeg = image ? images.encodeJPEG(*image, 0.0) : std::nullopt;
  if (!jpeg) return "";
  std::string url = "data:image/jpeg;base64,";
  VNKUtil::appendBASE64(url, *jpeg);
  return url;
}

// Summaries, one after another into the same text.
class SummaryWriter {
 public:
  void append(std::string& text, const PersonRef& person) {
    text += R"({"name":)";
    appendText(text, viewText(person, kABPersonFirstNameProperty));
    text += R"(,"lastName":)";
    appendText(text, viewText(person, kABPersonLastNameProperty));
    fmt::format_to(std::back_inserter(text), R"(,"id":"{}"}})", ABRecordGetRecordID(person));
  }

 private:
  void appendText(std::string& text, std::optional<std::string_view> value) {
    const std::string_view valid = validUTF8(value.value_or(""), copy_);
    serializer_.reset(json::string_view(valid.data(), valid.size()));
    char piece[256];
    do {
      const json::string_view written = serializer_.read(piece);
      text.append(written.data(), written.size());
    } while (!serializer_.done());
  }

  json::serializer serializer_;
  std::string copy_;
};

std::string headerPiece(const TextCatalog& texts) {
  json::object header;
  for (const HeaderText& text : kHeader)
    header.emplace(text.member, jsonText(texts.text(text.key)));
  return R"("header" : )" + json::serialize(header) + ",";
}

std::string recordsPath(const WebDocumentServices& services) {
  return services.documents + "/" + std::string(HTMLExporter::kRecordsFile);
}

}  // namespace

std::string HTMLExporter::createRecordsJSON(const WebDocumentServices& services) {
  openRecordsJSON(services).reset();
  return recordsPath(services);
}

std::unique_ptr<OpenFile> HTMLExporter::openRecordsJSON(const WebDocumentServices& services) {
  Status status;
  const auto stream = services.files.createAtomic(recordsPath(services), status);
  if (stream == nullptr) return nullptr;
  write(*stream, "{");
  write(*stream, headerPiece(services.texts));
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts);
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(addressBook.get());
  write(*stream, R"("records":[)");
  SummaryWriter summaries;
  std::string summary;
  for (std::size_t i = 0; i < people.size(); ++i) {
    summary.clear();
    if (i > 0) summary += ',';
    summaries.append(summary, people[i]);
    write(*stream, summary);
  }
  write(*stream, "]}");
  return stream->publish(status);
}

std::string HTMLExporter::createRecordJSONWithId(std::string_view id, const WebDocumentServices& services) {
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts);
  PersonRef person = ABAddressBookGetPersonWithRecordID(addressBook.get(), leadingInteger(id));
  if (person == nullptr) person = ABPersonCreate();
  json::object document;
  document["image"] = thumbnailURL(person, services.images);
  json::array items;
  for (const Section& section : kSections) {
    if (!section.heading.empty()) appendItems(items, {{{"label", services.texts.text(section.heading)}}});
    appendItems(items, section.items(person, services.texts));
  }
  document["items"] = std::move(items);
  return json::serialize(document);
}

std::string HTMLExporter::JSON_HFields(const PersonRef& person) {
  std::string text;
  SummaryWriter().append(text, person);
  return text;
}

HTMLExporter::Items HTMLExporter::JSON_N(const PersonRef& person, const TextCatalog& texts) {
  return fieldItems(person, kNameFields, texts);
}

HTMLExporter::Items HTMLExporter::JSON_TEL(const PersonRef& person, const TextCatalog& texts) {
  return slotItems(person, kABPersonPhoneProperty, kPhoneSlots, texts);
}

HTMLExporter::Items HTMLExporter::JSON_EMAIL(const PersonRef& person, const TextCatalog& texts) {
  return slotItems(person, kABPersonEmailProperty, kEmailSlots, texts);
}

HTMLExporter::Items HTMLExporter::JSON_NOTE(const PersonRef& person, const TextCatalog& texts) {
  return fieldItems(person, std::array{Field{text_key::Note, kABPersonNoteProperty}}, texts);
}

HTMLExporter::Items HTMLExporter::JSON_URL(const PersonRef& person, const TextCatalog& texts) {
  return slotItems(person, kABPersonURLProperty, kURLSlots, texts);
}

HTMLExporter::Item HTMLExporter::toDictionary(std::string_view key, std::optional<std::string_view> value,
                                              PropertyID pId, const TextCatalog& texts) {
  return {{"label", std::string(unlessBlank(texts.text(key)))},
          {"property", std::to_string(static_cast<int>(pId))},
          {"value", std::string(unlessBlank(value.value_or("")))}};
}

HTMLExporter::Item HTMLExporter::toDictionary(std::string_view key, std::optional<std::string_view> value,
                                              PropertyID pId, std::string_view identifier, std::int32_t index,
                                              const TextCatalog& texts) {
  Item item = toDictionary(key, value, pId, texts);
  item.put("identifier", unlessBlank(identifier));
  item.put("index", std::to_string(index));
  return item;
}

void HTMLExporter::write(OutputStream& stream, std::optional<std::string_view> buffer) {
  if (buffer) stream.append(*buffer).ignore("the file is not published after a failure");
}

std::int32_t leadingInteger(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  std::int32_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  using Limits = std::numeric_limits<std::int32_t>;
  return text.starts_with('-') ? Limits::min() : Limits::max();
}

}  // namespace varnok
