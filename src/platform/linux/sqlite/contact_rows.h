// ContactRows: the rows of neighbouring persons, read in two ordered scans and
// kept as the bytes that SQLite gave. Values are made when asked for.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
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

  // Reads the entries of person `id`, who is here, and of those that follow,
  // unless they are here already. When they are large, later persons are
  // forgotten.
  Status loadEntries(RecordID id);

  bool covers(RecordID id) const { return id >= first_ && id <= last_; }
  RecordID last() const { return last_; }

  bool contains(RecordID id) const { return find(id) != nullptr; }
  bool hasImage(RecordID id) const;
  // Of a multi-valued property nothing before loadEntries().
  std::optional<PropertyValue> value(RecordID id, PropertyID property) const;
  // Of a text property. Valid until the next load().
  std::optional<std::string_view> text(RecordID id, PropertyID property) const;
  // Of a multi-valued property; none before loadEntries(). Valid until the next
  // load() or loadEntries().
  std::span<const EntryView> entries(RecordID id, PropertyID property) const;

 private:
  using Text = std::optional<std::string_view>;  // In texts_.
  struct Person {
    RecordID id = kInvalidRecordID;
    bool hasImage = false;
    std::uint32_t firstEntry = 0;
    std::uint32_t endEntry = 0;
    std::array<Text, kTextColumns> texts;
    std::optional<std::int64_t> birthday;
    std::optional<std::int64_t> kind;
  };

  Status loadPersons(RecordID first, int count);
  Status scanEntries(std::size_t index);  // From that person on.
  void forgetEntries();
  void addEntry(PropertyID property, Text label, std::string_view value);
  Text keep(Text text);
  const Person* find(RecordID id) const;
  std::size_t indexOf(RecordID id) const;  // Of the first person with this identifier or a larger one.
  std::optional<PropertyValue> listOf(const Person& person, const Property& property) const;
  std::span<const EntryView> entriesOf(const Person& person, PropertyID property) const;

  Statement personScan_;
  Statement entryScan_;
  RecordID first_ = 0;  // Every person from first_ to last_ is here; none when first_ > last_.
  RecordID last_ = -1;
  RecordID firstWithEntries_ = 0;  // Of those here; larger than last_ when nobody's entries are.
  std::vector<Person> persons_;
  std::vector<EntryView> entries_;
  std::vector<PropertyID> properties_;  // Of the entry at the same place.
  std::unique_ptr<std::byte[]> firstTexts_;
  std::pmr::monotonic_buffer_resource texts_;  // A window of usual size fits into firstTexts_.
  std::size_t textBytes_ = 0;                  // In texts_.
  mutable std::size_t lastFound_ = 0;
};

}  // namespace varnok
