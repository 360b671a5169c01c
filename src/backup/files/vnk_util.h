// VNKUtil: what the writers and the backup run share. Stateless; any thread.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/date_formatter.h"
#include "platform/device.h"
#include "platform/file_system.h"
#include "platform/image_codec.h"
#include "platform/text_codec.h"

namespace varnok {

class VNKUtil {
 public:
  VNKUtil() = delete;

  // Appends `text` to `stream`: a CSV text in the code page of `language` (two
  // letters, lower case), everything else as UTF-8. A text that the code page
  // cannot hold whole goes out as UTF-8. Absent text writes nothing. Bytes that
  // are not UTF-8 become U+FFFD. Fails as the stream does.
  static Status writeTo(OutputStream& stream, std::optional<std::string_view> text, bool isCSV,
                        std::string_view language, const TextCodec& codec);

  // Whether writeTo() would not write every text as UTF-8. Where it does, two
  // texts give the same bytes in one call as in two.
  static bool hasCodePage(bool isCSV, std::string_view language);

  // Appends `text` to `buffer`, one card of an archive, likewise in the code page
  // of `language`. `fileName`, the stem of the card's name, has no influence.
  static void writeToZip(std::string& buffer, std::optional<std::string_view> text, std::string_view fileName,
                         std::string_view language, const TextCodec& codec);

  // Standard alphabet, padded, without line breaks.
  static std::string encodeBASE64(std::string_view bytes);
  static void appendBASE64(std::string& text, std::string_view bytes);

  // The picture redrawn so that its longer side is 960 pixels, small ones
  // enlarged. Nothing when it cannot be decoded.
  static std::optional<Image> prepareImage(std::string_view bytes, const ImageCodec& images);

  // The date text formatted in `language`, and the instant it names. `text` is
  // of the form "2024-03-05 13:07:09 +0000"; its zone may also be a name, such
  // as "GMT". Nothing when it is no such text.
  static std::optional<std::string> formatDate(std::string_view text, DateStyle dateStyle, DateStyle timeStyle,
                                               const DateFormatter& dates, std::string_view language);
  static std::optional<Instant> stringToDate(std::string_view text, const DateFormatter& dates);

  // "1.50 KB". A unit is left behind only above 1024 of it.
  static std::string convertSize(double bytes);

  static bool isIpad(const Device& device) { return device.isPad; }

  // A phone with the 4-inch screen of 568 points.
  static bool is4InchRetina(const Device& device) { return !device.isPad && device.screenHeight == 568; }

  // The name of a picture in resources/images/. Capitals make no difference;
  // an empty extension is a folder's.
  static std::string_view iconForExtension(std::string_view extension);
};

}  // namespace varnok
