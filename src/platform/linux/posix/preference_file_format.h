// The bytes of a preference file, as pure functions. docs/formats/preferences.md
// is the reference.
//
//   file   := header record*
//   header := "VNKPREF\n" version:u32 0:u32 changes:u64 0:u64      32 bytes
//   record := size:u32 crc:u32 keyLength:u32 kind:u8 0 0 0 [slot:u64] key payload padding
//
// Numbers are little-endian. A record begins at a multiple of eight and its
// size, padding included, is one. The checksum leaves out itself and the slot,
// so a slot can be overwritten in place.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace varnok {

inline constexpr std::size_t kPreferenceHeaderSize = 32;

// Where the header counts the changes of the file's structure; eight bytes.
inline constexpr std::uint64_t kPreferenceChangesOffset = 16;

enum class PreferenceHeader {
  current,
  absent,  // Empty, or cut off while the file was being made.
  newer,   // Of a later version of this format.
  unknown,
};

PreferenceHeader readPreferenceHeader(std::string_view image);
std::string preferenceHeader();

struct PreferenceRecord {
  std::string key;
  std::optional<Value> value;  // Absent: the key was removed.
  std::uint64_t slot = 0;      // Offset of the slot in the file; 0 when the kind has none.
  std::uint64_t offset = 0;    // Of the record in the file.
  std::uint32_t size = 0;      // Bytes, padding included.

  bool operator==(const PreferenceRecord&) const = default;
};

// Appends the records in `bytes`, which begin at `offset` of the file, to
// `records`, up to the first that is cut off or damaged. Answers the number of
// bytes that they take.
std::size_t parsePreferenceRecords(std::string_view bytes, std::uint64_t offset,
                                   std::vector<PreferenceRecord>& records);

// Appends one record; a null `value` removes the key. False, with `bytes` as
// they were, when the value is nested too deep or too large for the format.
bool appendPreferenceRecord(std::string& bytes, std::string_view key, const Value* value);

// A value of eight bytes (truth value, integer, real, instant) lives in a slot.
bool hasPreferenceSlot(const Value& value);

// The slot's word as it stands in the file, for a value that has one; and back,
// for a slot of the kind of `like`.
std::uint64_t preferenceSlotWord(const Value& value);
Value preferenceSlotValue(std::uint64_t word, const Value& like);

}  // namespace varnok
