#include "backup/files/vnk_util.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace varnok {
namespace {

constexpr int kReducedSide = 960;  // Pixels.

struct CodePage {
  std::string_view language;
  std::string_view encoding;  // One that holds ASCII as it is.
};

// Quirk: German text goes out in the Central European page, and Greek as
// UTF-8. Spreadsheets that open earlier backups expect the pages as they are.
constexpr std::array kCSVPages{
    CodePage{"tr", "windows-1254"}, CodePage{"de", "windows-1250"}, CodePage{"es", "windows-1252"},
    CodePage{"it", "windows-1252"}, CodePage{"fr", "windows-1252"}, CodePage{"he", "windows-1255"},
};

// Quirk: cards in an archive are in a code page, although each line says
// CHARSET=UTF-8 and the same cards in one file are UTF-8. Greek has a page here,
// and Hebrew has none. Programs that read earlier archives expect it so.
constexpr std::array kZipPages{
    CodePage{"tr", "windows-1254"}, CodePage{"el", "windows-1253"}, CodePage{"de", "windows-1250"},
    CodePage{"es", "windows-1252"}, CodePage{"it", "windows-1252"}, CodePage{"fr", "windows-1252"},
};

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for every 12 bits: one look-up where the alphabet needs two.
constexpr auto kPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i)
    pairs[i] = {kAlphabet[i >> 6U], kAlphabet[i & 63U]};
  return pairs;
}();

struct FileIcon {
  std::string_view extension;
  std::string_view image;
};
constexpr std::array kFileIcons{
    FileIcon{"__folder__", "folder.png"}, FileIcon{"vcf", "contact.png"}, FileIcon{"csv", "table.png"},
    FileIcon{"xls", "table.png"},         FileIcon{"xlsx", "table.png"},  FileIcon{"ods", "table.png"},
    FileIcon{"zip", "archive.png"},       FileIcon{"gz", "archive.png"},  FileIcon{"txt", "text.png"},
    FileIcon{"rtf", "text.png"},          FileIcon{"doc", "text.png"},    FileIcon{"docx", "text.png"},
    FileIcon{"odt", "text.png"},          FileIcon{"pdf", "text.png"},    FileIcon{"htm", "text.png"},
    FileIcon{"html", "text.png"},         FileIcon{"jpg", "picture.png"}, FileIcon{"jpeg", "picture.png"},
    FileIcon{"png", "picture.png"},       FileIcon{"gif", "picture.png"}, FileIcon{"heic", "picture.png"},
    FileIcon{"mp3", "sound.png"},         FileIcon{"m4a", "sound.png"},   FileIcon{"wav", "sound.png"},
    FileIcon{"mp4", "film.png"},          FileIcon{"mov", "film.png"},    FileIcon{"avi", "film.png"},
};
constexpr std::string_view kUnknownFileIcon = "unknown.png";

constexpr std::string_view kDatePattern = "yyyy-MM-dd HH:mm:ss zzz";

// Where the digits stand in the common form of kDatePattern.
constexpr std::string_view kCommonForm = "0000-00-00 00:00:00 +0000";

bool hasCommonForm(std::string_view text) {
  return std::ranges::equal(text, kCommonForm, [](char c, char form) {
    if (form == '0') return c >= '0' && c <= '9';
    return c == form || (form == '+' && c == '-');
  });
}

// Reading a pattern takes ICU a tenth of a millisecond, and nearly every text
// has the common form. Nothing for any other and for moments that do not exist.
std::optional<Instant> commonInstant(std::string_view text) {
  if (!hasCommonForm(text)) return std::nullopt;
  const auto number = [&](std::size_t start, std::size_t count) {
    int result = 0;
    for (const char digit : text.substr(start, count))
      result = result * 10 + (digit - '0');
    return result;
  };
  const std::chrono::year_month_day date(std::chrono::year(number(0, 4)),
                                         std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                         std::chrono::day(static_cast<unsigned>(number(8, 2))));
  const std::chrono::hours hours(number(11, 2));
  const std::chrono::minutes minutes(number(14, 2));
  const std::chrono::seconds seconds(number(17, 2));
  const auto offset = std::chrono::hours(number(21, 2)) + std::chrono::minutes(number(23, 2));
  if (!date.ok() || hours.count() > 23 || minutes.count() > 59 || seconds.count() > 59) return std::nullopt;
  if (number(21, 2) > 23 || number(23, 2) > 59) return std::nullopt;
  const Instant local = std::chrono::sys_days(date) + hours + minutes + seconds;
  return text[20] == '-' ? local + offset : local - offset;
}

// Eight bytes at a time: the lines of photos are long, and all of it.
bool isASCII(std::string_view text) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, text.data() + i, 8);
    if ((eight & kHighBits) != 0) return false;
  }
  return std::ranges::all_of(text.substr(i), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Null when texts of `language` go out as UTF-8.
const CodePage* pageOf(std::span<const CodePage> pages, std::string_view language) {
  const auto page = std::ranges::find(pages, language, &CodePage::language);
  return page == pages.end() ? nullptr : &*page;
}

// `text` in that page, then a view of `copy`; as it is when there is no page, or
// when the page cannot hold all of it.
std::string_view inCodePage(std::string_view text, const CodePage* page, const TextCodec& codec, std::string& copy) {
  if (page == nullptr || isASCII(text)) return text;
  std::optional<std::string> encoded = codec.encode(text, page->encoding);
  if (!encoded) return text;
  copy = std::move(*encoded);
  return copy;
}

}  // namespace

Status VNKUtil::writeTo(OutputStream& stream, std::optional<std::string_view> text, bool isCSV,
                        std::string_view language, const TextCodec& codec) {
  if (!text) return {};
  std::string repaired;
  std::string encoded;
  const CodePage* page = isCSV ? pageOf(kCSVPages, language) : nullptr;
  return stream.append(inCodePage(validUTF8(*text, repaired), page, codec, encoded));
}

bool VNKUtil::hasCodePage(bool isCSV, std::string_view language) {
  return isCSV && pageOf(kCSVPages, language) != nullptr;
}

void VNKUtil::writeToZip(std::string& buffer, std::optional<std::string_view> text, std::string_view /*fileName*/,
                         std::string_view language, const TextCodec& codec) {
  if (!text) return;
  std::string repaired;
  std::string encoded;
  buffer += inCodePage(validUTF8(*text, repaired), pageOf(kZipPages, language), codec, encoded);
}

void VNKUtil::appendBASE64(std::string& text, std::string_view bytes) {
  const std::size_t start = text.size();
  text.resize(start + (bytes.size() + 2) / 3 * 4);
  char* out = text.data() + start;
  const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])); };
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3, out += 4) {
    const std::uint32_t bits = byte(i) << 16U | byte(i + 1) << 8U | byte(i + 2);
    std::memcpy(out, kPairs[bits >> 12U].data(), 2);
    std::memcpy(out + 2, kPairs[bits & 4095U].data(), 2);
  }
  if (i == bytes.size()) return;
  const bool two = bytes.size() - i == 2;
  const std::uint32_t bits = byte(i) << 16U | (two ? byte(i + 1) << 8U : 0U);
  std::memcpy(out, kPairs[bits >> 12U].data(), 2);
  std::memcpy(out + 2, kPairs[bits & 4095U].data(), 2);
  out[3] = '=';
  if (!two) out[2] = '=';
}

std::string VNKUtil::encodeBASE64(std::string_view bytes) {
  std::string text;
  appendBASE64(text, bytes);
  return text;
}

std::optional<Image> VNKUtil::prepareImage(std::string_view bytes, const ImageCodec& images) {
  const std::optional<ImageSize> size = images.sizeOf(bytes);
  if (!size) return std::nullopt;
  const auto scaled = [](int side, int longer) {
    return std::max(1, static_cast<int>(std::lround(static_cast<double>(kReducedSide) * side / longer)));
  };
  const bool wide = size->width > size->height;
  const ImageSize target = wide ? ImageSize{kReducedSide, scaled(size->height, size->width)}
                                : ImageSize{scaled(size->width, size->height), kReducedSide};
  return images.decode(bytes, target);
}

std::optional<std::string> VNKUtil::formatDate(std::string_view text, DateStyle dateStyle, DateStyle timeStyle,
                                               const DateFormatter& dates, std::string_view language) {
  const std::optional<Instant> instant = stringToDate(text, dates);
  if (!instant) return std::nullopt;
  return dates.format(*instant, dateStyle, timeStyle, language);
}

std::optional<Instant> VNKUtil::stringToDate(std::string_view text, const DateFormatter& dates) {
  const std::optional<Instant> common = commonInstant(text);
  return common ? common : dates.parse(text, kDatePattern);
}

std::string_view VNKUtil::iconForExtension(std::string_view extension) {
  std::string lower(extension.empty() ? "__folder__" : extension);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const auto* found = std::ranges::find(kFileIcons, lower, &FileIcon::extension);
  return found == kFileIcons.end() ? kUnknownFileIcon : found->image;
}

std::string VNKUtil::convertSize(double bytes) {
  constexpr std::array<std::string_view, 5> kUnits{"bytes", "KB", "MB", "GB", "TB"};
  std::size_t unit = 0;
  while (bytes > 1024.0 && unit + 1 < kUnits.size()) {
    bytes /= 1024.0;
    ++unit;
  }
  return fmt::format("{:4.2f} {}", bytes, kUnits[unit]);
}

}  // namespace varnok
