#include "platform/linux/text/mo_text_catalog.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace varnok {
namespace {

constexpr std::string_view kEnglish = "en";
// Ours have about 10 KB; what is much larger is no catalogue, or no regular file.
constexpr std::streamoff kMaxFileSize = 4 << 20;  // In bytes.

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kAliases{{
    {"C", "en"}, {"POSIX", "en"}, {"iw", "he"},  // The name that Hebrew had before 1989, still found in locale names.
}};

bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

// The two letters, in lower case, of a locale's name. Nothing for another name,
// so that none leads out of the directory of the catalogues.
std::optional<std::string> languageOf(std::string_view name) {
  std::string language(name.substr(0, name.find_first_of("_-.@")));
  for (const auto& [alias, meaning] : kAliases) {
    if (language == alias) return std::string(meaning);
  }
  if (language.size() != 2 || !std::all_of(language.begin(), language.end(), isLetter)) return std::nullopt;
  for (char& letter : language)
    letter = static_cast<char>(letter | 0x20);
  return language;
}

std::optional<MoFile> readCatalog(const std::string& directory, std::string_view language) {
  std::ifstream stream(directory + "/" + std::string(language) + ".mo", std::ios::binary | std::ios::ate);
  const std::streamoff size = stream ? std::streamoff(stream.tellg()) : -1;
  if (size <= 0 || size > kMaxFileSize) return std::nullopt;
  std::string bytes(static_cast<std::size_t>(size), '\0');
  stream.seekg(0);
  if (!stream.read(bytes.data(), size)) return std::nullopt;
  return MoFile::parse(std::move(bytes));
}

// A count below zero takes the form of its distance from zero.
std::uint64_t magnitude(std::int64_t count) {
  const auto bits = static_cast<std::uint64_t>(count);
  return count < 0 ? 0 - bits : bits;
}

}  // namespace

std::unique_ptr<MoTextCatalog> MoTextCatalog::load(const std::string& directory,
                                                   std::span<const std::string> languages) {
  std::string chosen(kEnglish);
  std::optional<MoFile> texts;
  for (const std::string& name : languages) {
    const std::optional<std::string> language = languageOf(name);
    if (!language) continue;
    if (*language == kEnglish) break;
    texts = readCatalog(directory, *language);
    if (texts) {
      chosen = *language;
      break;
    }
  }
  // The constructor is private, which std::make_unique cannot reach.
  return std::unique_ptr<MoTextCatalog>(
      new MoTextCatalog(std::move(chosen), std::move(texts), readCatalog(directory, kEnglish)));
}

std::optional<std::string> MoTextCatalog::lookup(std::string_view key, std::optional<std::int64_t> count) const {
  std::optional<std::uint64_t> number;
  if (count) number = magnitude(*count);
  for (const std::optional<MoFile>* file : {&texts_, &english_}) {
    if (!*file) continue;
    if (const std::optional<std::string_view> text = (*file)->find(key, number)) return std::string(*text);
  }
  return std::nullopt;
}

}  // namespace varnok
