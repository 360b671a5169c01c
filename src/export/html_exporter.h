// HTMLExporter: the address book as the JSON that the browser pages read.
//
//   list    := {"header" : HEADER,"records":[SUMMARY,SUMMARY]}
//   SUMMARY := {"name":T,"lastName":T,"id":T}
//   record  := {"image":DATA_URL_OR_EMPTY,"items":[ITEM]}
//   ITEM    := {"label":T}                                             begins a section
//            | {"label":T,"property":T,"value":T}                      a text of the person
//            | {"label":T,"property":T,"value":T,"identifier":T,"index":T}
//                                                                      an entry with that label
//
// Every value is a text, numbers too; one that is not UTF-8 in the address book
// goes out with U+FFFD. docs/formats/web-protocol.md has the whole protocol.
//
// Threads. Any; every call opens its own handle on the address book and shares
// nothing with others.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/address_book.h"
#include "platform/file_system.h"
#include "platform/image_codec.h"
#include "platform/text_catalog.h"

namespace varnok {

// What the pages' documents are made from. All outlive the calls.
struct WebDocumentServices {
  ContactStoreProvider& contacts;
  FileSystem& files;
  const TextCatalog& texts;
  const ImageCodec& images;
  std::string documents;  // The documents directory.
};

class HTMLExporter {
 public:
  HTMLExporter() = delete;

  // Of the list document in the documents directory.
  static constexpr std::string_view kRecordsFile = "records.json";

  // Writes the list document, in place of an earlier one, and answers its path,
  // also when it could not be written and the earlier one stays.
  static std::string createRecordsJSON(const WebDocumentServices& services);

  // The same, open for reading: as written by this call, whatever other calls
  // do meanwhile. Null when it could not be written.
  static std::unique_ptr<OpenFile> openRecordsJSON(const WebDocumentServices& services);

  // The record document of the person whose identifier `id` begins with; the
  // blank form when it names nobody.
  static std::string createRecordJSONWithId(std::string_view id, const WebDocumentServices& services);

  static std::string JSON_HFields(const PersonRef& person);

  // Members and their texts.
  using Item = Dictionary;
  using Items = std::vector<Item>;

  static Items JSON_N(const PersonRef& person, const TextCatalog& texts);
  static Items JSON_TEL(const PersonRef& person, const TextCatalog& texts);
  static Items JSON_EMAIL(const PersonRef& person, const TextCatalog& texts);
  static Items JSON_NOTE(const PersonRef& person, const TextCatalog& texts);
  static Items JSON_URL(const PersonRef& person, const TextCatalog& texts);

  // An item whose label is the text of `key`. A blank label or value is empty.
  static Item toDictionary(std::string_view key, std::optional<std::string_view> value, PropertyID pId,
                           const TextCatalog& texts);
  static Item toDictionary(std::string_view key, std::optional<std::string_view> value, PropertyID pId,
                           std::string_view identifier, std::int32_t index, const TextCatalog& texts);

  static void write(OutputStream& stream, std::optional<std::string_view> buffer);
};

// The whole number that `text` begins with, after blanks; 0 when there is none,
// the nearest that fits when it is too large.
std::int32_t leadingInteger(std::string_view text);

}  // namespace varnok
