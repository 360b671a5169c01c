// MoFile: the texts of one language, as msgfmt compiles them.
//
//   file   := magic revision count originals translations ...   six 32-bit words
//   originals, translations := offset of a table of (length, offset) pairs
//
// in either byte order, the originals sorted by their bytes, every text followed
// by a NUL. A text with plural forms has them one after the other, a NUL between.
//
// The file's bytes are kept and the sorted table is searched in place; nothing
// is copied per text. Everything is checked when the file is parsed, so a
// damaged file gives no object and a lookup never fails half way.
//
// Threads. Immutable after parse().

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/text/plural_rule.h"

namespace varnok {

class MoFile {
 public:
  // Nothing when `bytes` are no whole catalogue.
  static std::optional<MoFile> parse(std::string bytes);

  // The text of `key`, valid while this object lives and is not moved. `count`
  // chooses the plural form; without one the first form is meant. Nothing when
  // there is no text, or an empty one.
  std::optional<std::string_view> find(std::string_view key, std::optional<std::uint64_t> count) const;

 private:
  enum class Table { originals, translations };

  explicit MoFile(std::string bytes) : bytes_(std::move(bytes)) {}

  bool readHeader();
  bool tablesAreWhole() const;
  bool isWhole(Table table, std::uint32_t index) const;
  bool originalsAreSorted() const;
  void readPluralRule();

  std::uint32_t word(std::size_t offset) const;
  std::string_view entry(Table table, std::uint32_t index) const;
  std::string_view keyAt(std::uint32_t index) const;
  std::optional<std::uint32_t> indexOf(std::string_view key) const;

  std::string bytes_;
  bool bigEndian_ = false;
  std::uint32_t count_ = 0;
  std::uint32_t originals_ = 0;  // Offsets of the two tables.
  std::uint32_t translations_ = 0;
  PluralRule plural_;
};

}  // namespace varnok
