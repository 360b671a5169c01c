// TextCatalog: user-visible text by key, in the user's language.
//
// A text may hold "%@" placeholders, in the order of the arguments, or
// numbered ones ("%2$@") where a language needs another order. A placeholder
// without an argument becomes nothing and the result is trimmed, so a text
// never shows a bare placeholder. "%%" is a percent sign in a text that has
// arguments; text() gives a text as it stands.
//
// Threads. Any thread; the catalogue does not change after it was loaded.

#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace varnok {

class TextCatalog {
 public:
  virtual ~TextCatalog() = default;

  // The text in the user's language, else in English, else the key itself.
  std::string text(std::string_view key) const;

  // The text with its placeholders filled.
  std::string format(std::string_view key, std::initializer_list<std::string_view> arguments) const;

  // As above, in the plural form for `count`; the count is the first argument.
  std::string formatCount(std::string_view key, std::int64_t count) const;

 private:
  // Nothing when neither the user's language nor English has the key. `count`
  // chooses the plural form of a text that has several; without one the first
  // form is meant.
  virtual std::optional<std::string> lookup(std::string_view key, std::optional<std::int64_t> count) const = 0;
};

}  // namespace varnok
