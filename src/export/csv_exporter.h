// CSVExporter: the header row, and one person as one row.
//
//   row     := names group* CR             the same groups in every row, see below
//   names   := value ("," value){8}        prefix first middle last suffix
//                                          organisation department title nickname
//   group   := ("," value){n}              n is fixed for the group
//   note    := "," '"' text '"'            every '"' of the text doubled
//
//   groups:  birthday anniversary | 9 phones | 6 e-mails | 3 web addresses |
//            2 postal addresses | note     each behind its field switch
//
// Quirk: values go out as they are stored. A comma in one moves the columns of
// its row; only the note is quoted. A row ends with a carriage return alone.
//
// Each CSV_... operation yields the text of its columns, the separators in
// front of them included. They read the person, write nothing and never fail.
// docs/formats/csv.md shows the whole format with its reasons.

#pragma once

#include <string>
#include <string_view>

#include "contacts/address_book.h"
#include "export/export_services.h"
#include "platform/file_system.h"
#include "platform/text_catalog.h"

namespace varnok {

class CSVExporter {
 public:
  CSVExporter() = delete;

  // Appends the header row, or the row of `person`, with the groups that the
  // field switches allow at this moment. `language` is a two-letter code in
  // lower case; it decides the code page, which each text leaves for UTF-8 as a
  // whole when it does not fit (one operation's in a row, one group's titles in
  // the header). They fail as the stream does.
  static Status exportTitle(OutputStream& buffer, std::string_view language, const TextCatalog& texts,
                            const ExportServices& services);
  static Status exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                             const ExportServices& services);

  static std::string CSV_N(const PersonRef& person, const ExportServices& services);
  static std::string CSV_BDAY(const PersonRef& person, const ExportServices& services);
  static std::string CSV_DATE(const PersonRef& person, const ExportServices& services);
  static std::string CSV_TEL(const PersonRef& person, const ExportServices& services);
  static std::string CSV_EMAIL(const PersonRef& person, const ExportServices& services);
  static std::string CSV_URL(const PersonRef& person, const ExportServices& services);
  static std::string CSV_ADR(const PersonRef& person, const ExportServices& services);
  static std::string CSV_NOTE(const PersonRef& person, const ExportServices& services);
};

}  // namespace varnok
