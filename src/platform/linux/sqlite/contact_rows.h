// ContactRows: the rows of neighbouring persons, read in two ordered scans and
// kept as the bytes that SQLite gave. Values are made when asked for.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_record.h"
#include "contacts/entry_view.h"
#include "platform/linux/sqlite/database.h"

namespace varnok {

// Text properties and then birthday, kind and image stand in the person table
// in the order of their numbers, after the identifier.
inline constexpr int kTextColumns = 12;
inline constexpr int kBirthdayColumn = 13;
inline constexpr int kKindColumn = 14;
inline constexpr int kImageColumn = 15;

class ContactRows {
 public:
  explicit ContactRows(Database& database);

  // Reads person `first` and up to `count` - 1 that follow in order, fewer when
  // they are large. What was read before is forgotten.
  Status load(RecordID first, int count);
  void clear();

  bool covers(RecordID id) const { return id >= first_ && id <= last_; }
  RecordID last() const { return last_; }

  bool contains(RecordID id) const { return find(id) != nullptr; }
  bool hasImage(RecordID id) const;
  std::optional<PropertyValue> value(RecordID id, PropertyID property) const;
  // Of a text property. Valid until the next load().
  std::optional<std::string_view> text(RecordID id, PropertyID property) const;
  // Adds the entries of a multi-valued property. They live until the next load().
  void views(RecordID id, PropertyID property, std::vector<EntryView>& views) const;

 private:
  // A stretch of bytes_; absent when `length` is kAbsent.
  struct Text {
    static constexpr std::uint32_t kAbsent = 0xffffffff;
    std::uint32_t offset = 0;
    std::uint32_t length = kAbsent;
  };
  struct Person {
    RecordID id = kInvalidRecordID;
    std::array<Text, kTextColumns> texts;
    std::optional<std::int64_t> birthday;
    std::optional<std::int64_t> kind;
    bool hasImage = false;
    std::uint32_t firstEntry = 0;
    std::uint32_t endEntry = 0;
  };
  struct Entry {
    PropertyID property;
    Text label;
    Text value;
  };

  Status loadPersons(RecordID first, int count);
  Status loadEntries();
  Text keep(std::optional<std::string_view> text);
  std::optional<std::string> textOf(Text text) const;
  std::string_view viewOf(Text text) const { return std::string_view(bytes_).substr(text.offset, text.length); }
  const Person* find(RecordID id) const;
  std::span<const Entry> entriesOf(const Person& person, PropertyID property) const;
  std::optional<PropertyValue> listOf(const Person& person, const Property& property) const;
  EntryValue entryValue(Text text, PropertyType listType) const;

  Statement personScan_;
  Statement entryScan_;
  RecordID first_ = 0;  // Every person from first_ to last_ is here; none when first_ > last_.
  RecordID last_ = -1;
  std::vector<Person> persons_;
  std::vector<Entry> entries_;
  std::string bytes_;
  mutable std::size_t lastFound_ = 0;
};

}  // namespace varnok
