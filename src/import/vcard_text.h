// The text of vCard values: transfer encodings, character sets, escapes.
//
// Whatever goes in, what comes out as text is valid UTF-8.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/vcard_line.h"
#include "platform/text_codec.h"

namespace varnok {

// "=" without two hexadecimal digits after it stays as it is.
std::string decodedQuotedPrintable(std::string_view text);

// Blanks and tabs between the digits do not count, padding may be missing.
// Nothing when there is anything else.
std::optional<std::string> decodedBase64(std::string_view text);

std::string decodedPercents(std::string_view text);  // "%40"; may give any bytes.

// Undoes \n \N \, \; \\ and \: and makes CRLF and CR line feeds. A backslash
// before anything else stays: some writers escape nothing.
std::string unescaped(std::string_view text);

class VCardTextDecoder {
 public:
  // `fallbackEncoding` names how text that is no valid UTF-8 is read; when it
  // is empty, or not known to `codec`, such bytes become U+FFFD.
  VCardTextDecoder(const TextCodec& codec, std::string fallbackEncoding)
      : codec_(codec), fallbackEncoding_(std::move(fallbackEncoding)) {}

  // Says that the bytes were UTF-8 before their transfer encoding is undone,
  // whatever CHARSET claims.
  void setTranscoded() { transcoded_ = true; }

  // The whole value as one text.
  std::string text(std::string_view value, const VCardParameters& parameters) const;

  // The components of a value such as N or ADR, separated by semicolons; at
  // least one. After very many the rest counts as one.
  void split(std::string_view value, const VCardParameters& parameters, std::vector<std::string>& components) const;

  // Text that stands outside a value: in a name or a parameter.
  std::string bareText(std::string_view bytes) const;

 private:
  static constexpr std::size_t kMaxComponents = 64;

  // Escapes are still in. Points to `value` or `scratch`.
  std::string_view decoded(std::string_view value, const VCardParameters& parameters, std::string& scratch) const;

  const TextCodec& codec_;
  std::string fallbackEncoding_;
  bool transcoded_ = false;
};

}  // namespace varnok
