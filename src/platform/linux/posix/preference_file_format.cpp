#include "platform/linux/posix/preference_file_format.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

namespace varnok {
namespace {

constexpr std::string_view kMagic = "VNKPREF\n";
constexpr std::uint32_t kVersion = 1;

constexpr std::size_t kRecordHeaderSize = 16;
constexpr std::size_t kSlotSize = 8;

// Far above any preference; keeps a damaged size from asking for much memory.
constexpr std::size_t kMaximumRecordSize = std::size_t{64} << 20;
constexpr int kMaximumDepth = 32;

// Numbers of the file, independent of the order of Value's alternatives.
enum class Kind : std::uint8_t {
  removed = 0,
  boolean = 1,
  integer = 2,
  real = 3,
  instant = 4,
  text = 5,
  array = 6,
  dictionary = 7,
};

bool hasSlot(Kind kind) {
  return kind >= Kind::boolean && kind <= Kind::instant;
}

template <typename Word>
Word littleEndian(Word word) {
  static_assert(std::endian::native == std::endian::little || std::endian::native == std::endian::big);
  if constexpr (std::endian::native == std::endian::little) return word;
  auto bytes = std::bit_cast<std::array<char, sizeof word>>(word);
  std::reverse(bytes.begin(), bytes.end());
  return std::bit_cast<Word>(bytes);
}

template <typename Word>
Word wordAt(std::string_view bytes, std::size_t offset) {
  Word word{};
  std::memcpy(&word, bytes.data() + offset, sizeof word);
  return littleEndian(word);
}

template <typename Word>
void appendWord(std::string& bytes, Word word) {
  word = littleEndian(word);
  bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
}

void putWord(std::string& bytes, std::size_t offset, std::uint32_t word) {
  word = littleEndian(word);
  std::memcpy(bytes.data() + offset, &word, sizeof word);
}

Kind kindOf(const Value& value) {
  struct Visitor {
    Kind operator()(bool) const { return Kind::boolean; }
    Kind operator()(std::int64_t) const { return Kind::integer; }
    Kind operator()(double) const { return Kind::real; }
    Kind operator()(const std::string&) const { return Kind::text; }
    Kind operator()(Instant) const { return Kind::instant; }
    Kind operator()(const ValueArray&) const { return Kind::array; }
    Kind operator()(const ValueDictionary&) const { return Kind::dictionary; }
  };
  return std::visit(Visitor(), static_cast<const Value::variant&>(value));
}

std::uint64_t bitsOf(const Value& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? 1 : 0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::bit_cast<std::uint64_t>(*integer);
  if (const auto* real = std::get_if<double>(&value)) return std::bit_cast<std::uint64_t>(*real);
  return std::bit_cast<std::uint64_t>(std::int64_t{std::get<Instant>(value).time_since_epoch().count()});
}

Value scalar(Kind kind, std::uint64_t bits) {
  if (kind == Kind::boolean) return bits != 0;
  if (kind == Kind::integer) return std::bit_cast<std::int64_t>(bits);
  if (kind == Kind::real) return std::bit_cast<double>(bits);
  return Instant(std::chrono::seconds(std::bit_cast<std::int64_t>(bits)));
}

std::uint32_t checksum(std::string_view record) {
  const auto add = [](uLong sum, std::string_view part) {
    return crc32(sum, reinterpret_cast<const Bytef*>(part.data()), static_cast<uInt>(part.size()));
  };
  const bool slot = hasSlot(static_cast<Kind>(record[12]));
  uLong sum = add(0, record.substr(0, 4));
  sum = add(sum, record.substr(8, 8));
  sum = add(sum, record.substr(kRecordHeaderSize + (slot ? kSlotSize : 0)));
  return static_cast<std::uint32_t>(sum);
}

// Reads values from bytes that may be anything. Every take answers nothing when
// the bytes do not hold it.
class PayloadReader {
 public:
  explicit PayloadReader(std::string_view bytes) : rest_(bytes) {}

  std::string_view rest() const { return rest_; }

  std::optional<Value> value(Kind kind, int depth) {
    if (hasSlot(kind)) return scalarValue(kind);
    if (kind == Kind::text) return textValue();
    if (depth >= kMaximumDepth) return std::nullopt;
    if (kind == Kind::array) return array(depth);
    if (kind == Kind::dictionary) return dictionary(depth);
    return std::nullopt;
  }

 private:
  template <typename Word>
  std::optional<Word> word() {
    if (rest_.size() < sizeof(Word)) return std::nullopt;
    const Word word = wordAt<Word>(rest_, 0);
    rest_.remove_prefix(sizeof word);
    return word;
  }

  std::optional<Value> scalarValue(Kind kind) {
    const auto bits = word<std::uint64_t>();
    return bits ? std::optional(scalar(kind, *bits)) : std::nullopt;
  }

  std::optional<std::string> text() {
    const auto size = word<std::uint32_t>();
    if (!size || rest_.size() < *size) return std::nullopt;
    std::string text(rest_.substr(0, *size));
    rest_.remove_prefix(*size);
    return text;
  }

  std::optional<Value> textValue() {
    auto content = text();
    return content ? std::optional<Value>(std::move(*content)) : std::nullopt;
  }

  std::optional<Value> nested(int depth) {
    const auto kind = word<std::uint8_t>();
    return kind ? value(static_cast<Kind>(*kind), depth + 1) : std::nullopt;
  }

  std::optional<Value> array(int depth) {
    const auto count = word<std::uint32_t>();
    if (!count) return std::nullopt;
    ValueArray values;
    for (std::uint32_t i = 0; i < *count; ++i) {
      auto element = nested(depth);
      if (!element) return std::nullopt;
      values.push_back(std::move(*element));
    }
    return values;
  }

  std::optional<Value> dictionary(int depth) {
    const auto count = word<std::uint32_t>();
    if (!count) return std::nullopt;
    ValueDictionary values;
    for (std::uint32_t i = 0; i < *count; ++i) {
      auto key = text();
      auto element = key ? nested(depth) : std::nullopt;
      if (!element) return std::nullopt;
      values.insert_or_assign(std::move(*key), std::move(*element));
    }
    return values;
  }

  std::string_view rest_;
};

bool appendPayload(std::string& bytes, const Value& value, int depth);

bool appendNested(std::string& bytes, const Value& value, int depth) {
  bytes.push_back(static_cast<char>(kindOf(value)));
  return appendPayload(bytes, value, depth + 1);
}

// A size that does not fit is cut here; the record is then refused as too large.
void appendText(std::string& bytes, std::string_view text) {
  appendWord(bytes, static_cast<std::uint32_t>(text.size()));
  bytes.append(text);
}

bool appendPayload(std::string& bytes, const Value& value, int depth) {
  if (hasPreferenceSlot(value)) {
    appendWord(bytes, bitsOf(value));
    return true;
  }
  if (const auto* text = std::get_if<std::string>(&value)) {
    appendText(bytes, *text);
    return true;
  }
  if (depth >= kMaximumDepth) return false;
  if (const auto* array = std::get_if<ValueArray>(&value)) {
    appendWord(bytes, static_cast<std::uint32_t>(array->size()));
    for (const Value& element : *array) {
      if (!appendNested(bytes, element, depth)) return false;
    }
    return true;
  }
  const auto& dictionary = std::get<ValueDictionary>(value);
  appendWord(bytes, static_cast<std::uint32_t>(dictionary.size()));
  for (const auto& [key, element] : dictionary) {
    appendText(bytes, key);
    if (!appendNested(bytes, element, depth)) return false;
  }
  return true;
}

// The bytes of the first record, padding included; empty when it is cut off or damaged.
std::string_view firstRecord(std::string_view bytes) {
  if (bytes.size() < kRecordHeaderSize) return {};
  const std::size_t size = wordAt<std::uint32_t>(bytes, 0);
  const auto kind = static_cast<Kind>(bytes[12]);
  const std::size_t fixed = kRecordHeaderSize + (hasSlot(kind) ? kSlotSize : 0);
  if (size < fixed || size % 8 != 0 || size > bytes.size() || size > kMaximumRecordSize) return {};
  const std::string_view record = bytes.substr(0, size);
  if (wordAt<std::uint32_t>(record, 8) > size - fixed) return {};
  if (wordAt<std::uint32_t>(record, 4) != checksum(record)) return {};
  return record;
}

std::optional<PreferenceRecord> decode(std::string_view bytes, std::uint64_t offset) {
  const auto kind = static_cast<Kind>(bytes[12]);
  const bool slot = hasSlot(kind);
  const std::size_t keyStart = kRecordHeaderSize + (slot ? kSlotSize : 0);
  const std::size_t keyLength = wordAt<std::uint32_t>(bytes, 8);
  PreferenceRecord record;
  record.key = bytes.substr(keyStart, keyLength);
  record.offset = offset;
  record.size = static_cast<std::uint32_t>(bytes.size());
  PayloadReader payload(bytes.substr(keyStart + keyLength));
  if (slot) {
    record.slot = offset + kRecordHeaderSize;
    record.value = scalar(kind, wordAt<std::uint64_t>(bytes, kRecordHeaderSize));
  } else if (kind != Kind::removed) {
    record.value = payload.value(kind, /*depth=*/0);
    if (!record.value) return std::nullopt;
  }
  if (payload.rest().size() >= 8) return std::nullopt;  // More than padding.
  return record;
}

}  // namespace

PreferenceHeader readPreferenceHeader(std::string_view image) {
  const std::string ours = preferenceHeader();
  if (image.size() < kPreferenceHeaderSize) {
    return ours.starts_with(image) ? PreferenceHeader::absent : PreferenceHeader::unknown;
  }
  if (!image.starts_with(kMagic)) return PreferenceHeader::unknown;
  const auto version = wordAt<std::uint32_t>(image, kMagic.size());
  if (version > kVersion) return PreferenceHeader::newer;
  return version == kVersion ? PreferenceHeader::current : PreferenceHeader::unknown;
}

std::string preferenceHeader() {
  std::string header(kMagic);
  appendWord(header, kVersion);
  header.resize(kPreferenceHeaderSize, '\0');
  return header;
}

std::size_t parsePreferenceRecords(std::string_view bytes, std::uint64_t offset,
                                   std::vector<PreferenceRecord>& records) {
  std::size_t taken = 0;
  for (;;) {
    const std::string_view next = firstRecord(bytes.substr(taken));
    if (next.empty()) return taken;
    auto record = decode(next, offset + taken);
    if (!record) return taken;
    records.push_back(std::move(*record));
    taken += next.size();
  }
}

bool appendPreferenceRecord(std::string& bytes, std::string_view key, const Value* value) {
  std::string record(kRecordHeaderSize, '\0');
  const bool slot = value != nullptr && hasPreferenceSlot(*value);
  if (slot) appendWord(record, bitsOf(*value));
  record.append(key);
  if (value != nullptr && !slot && !appendPayload(record, *value, /*depth=*/0)) return false;
  record.resize((record.size() + 7) / 8 * 8, '\0');
  if (record.size() > kMaximumRecordSize) return false;
  putWord(record, 0, static_cast<std::uint32_t>(record.size()));
  putWord(record, 8, static_cast<std::uint32_t>(key.size()));
  record[12] = static_cast<char>(value == nullptr ? Kind::removed : kindOf(*value));
  putWord(record, 4, checksum(record));
  bytes.append(record);
  return true;
}

bool hasPreferenceSlot(const Value& value) {
  return hasSlot(kindOf(value));
}

std::uint64_t preferenceSlotWord(const Value& value) {
  return littleEndian(bitsOf(value));
}

Value preferenceSlotValue(std::uint64_t word, const Value& like) {
  return scalar(kindOf(like), littleEndian(word));
}

}  // namespace varnok
