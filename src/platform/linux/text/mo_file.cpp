#include "platform/linux/text/mo_file.h"

namespace varnok {
namespace {

constexpr std::uint32_t kMagic = 0x950412de;
constexpr std::uint32_t kSwappedMagic = 0xde120495;
constexpr std::size_t kHeaderSize = 28;  // With the two words about the hash table, which we do not read.
constexpr std::size_t kPairSize = 8;

// The text up to its first NUL.
std::string_view firstPart(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

// The part with that index of a text whose parts are separated by NULs; the
// first one when there are not so many.
std::string_view partAt(std::string_view text, std::size_t index) {
  std::string_view rest = text;
  for (; index > 0; --index) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) return firstPart(text);
    rest.remove_prefix(end + 1);
  }
  return firstPart(rest);
}

}  // namespace

std::optional<MoFile> MoFile::parse(std::string bytes) {
  MoFile file(std::move(bytes));
  if (!file.readHeader() || !file.tablesAreWhole() || !file.originalsAreSorted()) return std::nullopt;
  file.readPluralRule();
  return file;
}

std::optional<std::string_view> MoFile::find(std::string_view key, std::optional<std::uint64_t> count) const {
  if (key.empty()) return std::nullopt;  // The header's place.
  const std::optional<std::uint32_t> index = indexOf(key);
  if (!index) return std::nullopt;
  const std::string_view text = partAt(entry(Table::translations, *index), count ? plural_.formFor(*count) : 0);
  if (text.empty()) return std::nullopt;
  return text;
}

bool MoFile::readHeader() {
  if (bytes_.size() < kHeaderSize) return false;
  const std::uint32_t magic = word(0);
  if (magic != kMagic && magic != kSwappedMagic) return false;
  bigEndian_ = magic == kSwappedMagic;
  // The major revision is in the upper half; minor ones only add to the file.
  if ((word(4) >> 16) > 1) return false;
  count_ = word(8);
  originals_ = word(12);
  translations_ = word(16);
  return true;
}

bool MoFile::tablesAreWhole() const {
  const std::uint64_t tableSize = std::uint64_t{count_} * kPairSize;
  if (originals_ + tableSize > bytes_.size() || translations_ + tableSize > bytes_.size()) return false;
  for (std::uint32_t index = 0; index < count_; ++index) {
    if (!isWhole(Table::originals, index) || !isWhole(Table::translations, index)) return false;
  }
  return true;
}

bool MoFile::isWhole(Table table, std::uint32_t index) const {
  const std::size_t pair = (table == Table::originals ? originals_ : translations_) + index * kPairSize;
  const std::uint64_t end = std::uint64_t{word(pair)} + word(pair + 4);
  return end < bytes_.size() && bytes_[end] == '\0';
}

bool MoFile::originalsAreSorted() const {
  for (std::uint32_t index = 1; index < count_; ++index) {
    if (keyAt(index - 1) >= keyAt(index)) return false;
  }
  return true;
}

// The header is the text of the empty key. Without a rule that can be read the
// common one holds.
void MoFile::readPluralRule() {
  const std::optional<std::uint32_t> index = indexOf("");
  if (!index) return;
  const std::string_view header = entry(Table::translations, *index);
  constexpr std::string_view kField = "\nPlural-Forms:";
  const std::size_t start = header.find(kField);
  if (start == std::string_view::npos) return;
  const std::string_view field = header.substr(start + kField.size());
  if (const auto rule = PluralRule::parse(field.substr(0, field.find('\n')))) plural_ = *rule;
}

// Byte by byte, because the tables need not be aligned.
std::uint32_t MoFile::word(std::size_t offset) const {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = static_cast<unsigned char>(bytes_[offset + (bigEndian_ ? i : 3 - i)]);
    value = value << 8 | byte;
  }
  return value;
}

std::string_view MoFile::entry(Table table, std::uint32_t index) const {
  const std::size_t pair = (table == Table::originals ? originals_ : translations_) + index * kPairSize;
  return std::string_view(bytes_).substr(word(pair + 4), word(pair));
}

// The original of a text with plural forms has a second part, the plural.
std::string_view MoFile::keyAt(std::uint32_t index) const {
  return firstPart(entry(Table::originals, index));
}

std::optional<std::uint32_t> MoFile::indexOf(std::string_view key) const {
  std::uint32_t low = 0;
  std::uint32_t high = count_;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    const int order = keyAt(middle).compare(key);
    if (order == 0) return middle;
    if (order < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return std::nullopt;
}

}  // namespace varnok
