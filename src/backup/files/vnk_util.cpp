#include "backup/files/vnk_util.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace varnok {
namespace {

constexpr int kReducedSide = 960;  // Pixels.

// Quirk: German text goes out in the Central European page, and Greek as
// UTF-8. Spreadsheets that open earlier backups expect the pages as they are.
struct CodePage {
  std::string_view language;
  std::string_view encoding;
};
constexpr std::array kCSVPages{
    CodePage{"tr", "windows-1254"}, CodePage{"de", "windows-1250"}, CodePage{"es", "windows-1252"},
    CodePage{"it", "windows-1252"}, CodePage{"fr", "windows-1252"}, CodePage{"he", "windows-1255"},
};

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for every 12 bits: one look-up where the alphabet needs two.
constexpr auto kPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i)
    pairs[i] = {kAlphabet[i >> 6U], kAlphabet[i & 63U]};
  return pairs;
}();

}  // namespace

Status VNKUtil::writeTo(OutputStream& stream, const std::optional<std::string>& text, bool isCSV,
                        std::string_view language, const TextCodec& codec) {
  if (!text) return {};
  std::string copy;
  const std::string_view valid = validUTF8(*text, copy);
  const auto* page = isCSV ? std::ranges::find(kCSVPages, language, &CodePage::language) : kCSVPages.end();
  if (page != kCSVPages.end()) {
    if (const auto encoded = codec.encode(valid, page->encoding)) return stream.append(*encoded);
  }
  return stream.append(valid);
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
