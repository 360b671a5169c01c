// IcuTextCodec: TextCodec over ICU's converters.
//
// Encodings are named as ICU and IANA name them, letter case and punctuation
// aside. A name with characters that no such name has is not known, so one from
// a stranger's file can neither set converter options nor name a file.
//
// UTF-8 itself goes through unchanged where it is well formed. A byte-order mark
// is a character like any other: neither dropped nor added, except where the
// encoding demands one ("UTF-16").
//
// Threads. Any thread; every call opens its own converter, which is cheap
// because ICU shares the tables.
//
// Failure. Beside what TextCodec says: nothing for more than 256 MiB at once.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/text_codec.h"

namespace varnok {

class IcuTextCodec final : public TextCodec {
 public:
  std::optional<std::string> decode(std::string_view bytes, std::string_view encoding) const override;
  std::optional<std::string> encode(std::string_view text, std::string_view encoding) const override;
};

}  // namespace varnok
