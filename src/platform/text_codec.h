// TextCodec: other encodings than UTF-8. Any thread. Strict both ways: what
// cannot be represented is never dropped silently.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varnok {

class TextCodec {
 public:
  virtual ~TextCodec() = default;

  // `bytes` in the encoding of that name ("ISO-8859-9", "windows-1254",
  // "UTF-16LE", ...) as UTF-8. Malformed sequences become U+FFFD. Nothing when
  // the encoding is not known.
  virtual std::optional<std::string> decode(std::string_view bytes, std::string_view encoding) const = 0;

  // `text` (UTF-8) in the encoding of that name. Nothing when a single
  // character, an invisible one included, has no place in it.
  virtual std::optional<std::string> encode(std::string_view text, std::string_view encoding) const = 0;
};

}  // namespace varnok
