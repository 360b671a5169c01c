#include "platform/linux/imaging/exif.h"

#include <array>
#include <cstddef>

namespace varnok {

namespace {

constexpr std::uint32_t kOrientationTag = 0x0112;
constexpr std::uint32_t kShortType = 3;
constexpr std::size_t kEntrySize = 12;  // Bytes: tag 2, type 2, count 4, value 4.

// By the tag's value less one.
constexpr std::array<Orientation, 8> kOrientations{{
    {false, false, false},
    {false, true, false},
    {false, true, true},
    {false, false, true},
    {true, false, false},
    {true, false, true},
    {true, true, true},
    {true, true, false},
}};

// Numbers of a TIFF block in its own byte order. What lies outside reads as 0,
// which is no tag and no orientation.
class TIFFBytes {
 public:
  TIFFBytes(std::string_view bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}

  std::uint32_t number(std::size_t at, std::size_t length) const {
    if (at > bytes_.size() || bytes_.size() - at < length) return 0;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < length; ++i) {
      const std::size_t place = bigEndian_ ? i : length - 1 - i;
      value = value << 8 | static_cast<unsigned char>(bytes_[at + place]);
    }
    return value;
  }

 private:
  std::string_view bytes_;
  bool bigEndian_;
};

}  // namespace

Orientation exifOrientation(std::string_view tiff) {
  const bool bigEndian = tiff.starts_with("MM");
  if (!bigEndian && !tiff.starts_with("II")) return {};
  const TIFFBytes block(tiff, bigEndian);
  const std::size_t directory = block.number(4, 4);
  const std::uint32_t entries = block.number(directory, 2);  // At most 65535, so the walk is short.
  for (std::uint32_t i = 0; i < entries; ++i) {
    const std::size_t entry = directory + 2 + i * kEntrySize;
    if (block.number(entry, 2) != kOrientationTag) continue;
    const std::uint32_t value = block.number(entry + 8, 2);
    const bool known = block.number(entry + 2, 2) == kShortType && value >= 1 && value <= kOrientations.size();
    return known ? kOrientations[value - 1] : Orientation{};
  }
  return {};
}

}  // namespace varnok
