#include "cleanup/white_space.h"

#include <algorithm>
#include <array>

namespace varnok {
namespace {

// In UTF-8: the blanks of ASCII, U+0085, U+00A0, U+1680, U+2000 to U+200A,
// U+2028, U+2029, U+202F, U+205F and U+3000.
constexpr std::array<std::string_view, 25> kSpaces{
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\xC2\x85", "\xC2\xA0", "\xE1\x9A\x80",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",   "\u2007",   "\u2008",
    "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

}  // namespace

std::string_view trimmed(std::string_view text) {
  const auto leads = [&](std::string_view space) { return text.starts_with(space); };
  const auto trails = [&](std::string_view space) { return text.ends_with(space); };
  for (const auto* space = kSpaces.end(); (space = std::ranges::find_if(kSpaces, leads)) != kSpaces.end();)
    text.remove_prefix(space->size());
  for (const auto* space = kSpaces.end(); (space = std::ranges::find_if(kSpaces, trails)) != kSpaces.end();)
    text.remove_suffix(space->size());
  return text;
}

}  // namespace varnok
