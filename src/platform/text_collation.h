// TextCollation: the order of texts, and their capitals, in the language of the
// user's locale. Any thread. Bytes that are not UTF-8 count as U+FFFD.

#pragma once

#include <string>
#include <string_view>

namespace varnok {

class TextCollation {
 public:
  virtual ~TextCollation() = default;

  // Bytes in whose order people expect to find the texts, whether they are
  // written large or small. No key is the beginning of another one, so keys one
  // behind the other order by the first text, then by the second.
  virtual std::string sortKey(std::string_view text) const = 0;

  virtual std::string upperCase(std::string_view text) const = 0;
};

}  // namespace varnok
