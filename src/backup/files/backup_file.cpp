#include "backup/files/backup_file.h"

#include <algorithm>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace varnok {
namespace {

// Of a name's 255 bytes at most, what eight digits and ".vcf" leave.
constexpr std::size_t kLongestStem = 243;

// In bytes. A longer end of a name is taken for no extension.
constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestExtension = 16;

constexpr std::uint32_t kNumbers = 100'000'000;

bool isContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

// The start of valid `text`, not cut within a character.
std::string_view cutTo(std::size_t size, std::string_view text) {
  if (text.size() <= size) return text;
  while (size > 0 && isContinuation(text[size]))
    --size;
  return text.substr(0, size);
}

// U+0080 to U+009F, which is 0xC2 and their number.
bool isLongControl(std::string_view text, std::size_t i) {
  return text[i] == '\xC2' && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
}

bool isUnsafe(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || c == '/' || c == '\\';
}

std::string plainName(std::string_view text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool longControl = isLongControl(text, i);
    name += longControl || isUnsafe(text[i]) ? '_' : text[i];
    if (longControl) ++i;
  }
  return name;
}

}  // namespace

std::string backupFileName(const LocalTime& time, std::int32_t contacts, std::string_view fileType) {
  return fmt::format("Varnok-{:04}-{:02}-{:02}-{:02}{:02}{:02}-{}.{}", time.year, time.month, time.day, time.hour,
                     time.minute, time.second, contacts, fileType);
}

std::string zipEntryName(const std::optional<std::string>& compositeName, std::uint32_t number) {
  if (!compositeName) return fmt::format("(null){}.vcf", number % kNumbers);
  std::string copy;
  return fmt::format("{}{}.vcf", cutTo(kLongestStem, plainName(validUTF8(*compositeName, copy))), number % kNumbers);
}

std::string plainFileName(std::string_view name) {
  std::string copy;
  std::string plain = plainName(validUTF8(name, copy));
  if (plain.empty()) plain = "_";
  if (plain.front() == '.') plain.front() = '_';
  if (plain.size() <= kLongestName) return plain;
  std::string extension(pathExtension(plain));
  extension = extension.empty() || extension.size() > kLongestExtension ? "" : "." + extension;
  return std::string(cutTo(kLongestName - extension.size(), plain)) + extension;
}

std::string_view lastPathComponent(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathExtension(std::string_view path) {
  const std::string_view name = lastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

bool hasFileWithExtension(FileSystem& files, const std::string& documents, std::string_view extension) {
  return std::ranges::any_of(files.filesBelow(documents),
                             [&](const std::string& path) { return pathExtension(path) == extension; });
}

}  // namespace varnok
