// VCFExporter: one person as one vCard 3.0 card.
//
//   card   := BEGIN VERSION line* END
//   line   := ["item" n "."] NAME [";CHARSET=UTF-8"] params ":" value CRLF
//   END    := "END:VCARD" CRLF LF          the LF makes an empty line between cards
//
// Each vCard_... operation yields the lines of one property, or nothing when
// the person has none. They read the person and the preferences, write nothing
// but the item counter, and never fail. docs/formats/vcard-backup.md shows the
// whole format with its reasons.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "backup/files/zip_archive.h"
#include "contacts/address_book.h"
#include "export/export_services.h"
#include "platform/file_system.h"

namespace varnok {

class VCFExporter {
 public:
  VCFExporter() = delete;

  // Appends the card of `person` to `buffer`, with the groups of properties
  // that the field switches allow. `language` is a two-letter code in lower
  // case. Fails as the stream does.
  static Status exportPerson(OutputStream& buffer, const PersonRef& person, std::string_view language,
                             const ExportServices& services);

  // Adds the card to `archive`, in the code page of `language` where its texts
  // fit, as a file named after `fileName` and a random number. The other dates
  // are in it whatever their switch says. Fails as the archive does.
  static Status exportAsZip(ZipArchive& archive, const PersonRef& person, std::string_view language,
                            const std::optional<std::string>& fileName, const ExportServices& services);

  // The TYPE word of a stored label; nothing for any other label and for none.
  static std::optional<std::string_view> convertVCFLabel(std::optional<std::string_view> label);

  // The next item number, counting from the start of the backup. The raised
  // counter is flushed before this returns.
  static std::int64_t itemCount(const ExportServices& services);

  using Lines = std::optional<std::string>;

  // The PHOTO line of a picture. Any thread.
  static std::string photoLine(std::string_view bytes, bool shrink, const ImageCodec& images);

  static Lines vCard_BEGIN(const PersonRef& person, const ExportServices& services);
  static Lines vCard_VERSION(const PersonRef& person, const ExportServices& services);
  static Lines vCard_N(const PersonRef& person, const ExportServices& services);
  static Lines vCard_FN(const PersonRef& person, const ExportServices& services);
  static Lines vCard_NICKNAME(const PersonRef& person, const ExportServices& services);
  static Lines vCard_X_PHONETIC_FIRST_NAME(const PersonRef& person, const ExportServices& services);
  static Lines vCard_X_PHONETIC_LAST_NAME(const PersonRef& person, const ExportServices& services);
  // A photo that cannot be reduced goes out as it is stored. Taken from
  // `services.photos` where they are prepared ahead; `shrink` was settled there.
  static Lines vCard_PHOTO(const PersonRef& person, bool shrink, const ExportServices& services);
  static Lines vCard_BDAY(const PersonRef& person, const ExportServices& services);
  static Lines vCard_DATE(const PersonRef& person, const ExportServices& services);
  static Lines vCard_ADR(const PersonRef& person, const ExportServices& services);
  static Lines vCard_TEL(const PersonRef& person, const ExportServices& services);
  static Lines vCard_EMAIL(const PersonRef& person, const ExportServices& services);
  static Lines vCard_TITLE(const PersonRef& person, const ExportServices& services);
  static Lines vCard_ORG(const PersonRef& person, const ExportServices& services);
  static Lines vCard_NOTE(const PersonRef& person, const ExportServices& services);
  static Lines vCard_URL(const PersonRef& person, const ExportServices& services);
  static Lines vCard_X_SOCIALPROFILE(const PersonRef& person, const ExportServices& services);
  static Lines vCard_IM(const PersonRef& person, const ExportServices& services);
  static Lines vCard_FAMILIY(const PersonRef& person, const ExportServices& services);
  static Lines vCard_END(const PersonRef& person, const ExportServices& services);

  // Hooks that keep their place in the card and yield nothing.
  static Lines vCard_LABEL(const PersonRef& person, const ExportServices& services);
  static Lines vCard_MAILER(const PersonRef& person, const ExportServices& services);
  static Lines vCard_TZ(const PersonRef& person, const ExportServices& services);
  static Lines vCard_GEO(const PersonRef& person, const ExportServices& services);
  static Lines vCard_ROLE(const PersonRef& person, const ExportServices& services);
  static Lines vCard_LOGO(const PersonRef& person, const ExportServices& services);
  static Lines vCard_AGENT(const PersonRef& person, const ExportServices& services);
  static Lines vCard_REV(const PersonRef& person, const ExportServices& services);
  static Lines vCard_SOUND(const PersonRef& person, const ExportServices& services);
  static Lines vCard_UID(const PersonRef& person, const ExportServices& services);
  static Lines vCard_KEY(const PersonRef& person, const ExportServices& services);
};

}  // namespace varnok
