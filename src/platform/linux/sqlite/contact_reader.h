// ContactReader: the half of a handle that reads. Its state of the book is fixed
// from the first read until endReading(). A read that fails yields nothing and
// is remembered in status().
//
// A reader outlives its handle and serves the next one: opening a connection
// costs more than reading a small book, and only a connection that stays knows
// without counting that the number of persons is as it was.

#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/contact_record.h"
#include "platform/linux/sqlite/contact_rows.h"
#include "platform/linux/sqlite/database.h"

namespace varnok {

class ContactReader {
 public:
  explicit ContactReader(std::unique_ptr<Database> database);

  std::vector<RecordID> allIDs();
  std::vector<RecordID> idsWithImage();
  int personCount();
  bool contains(RecordID id) { return rowsWith(id).contains(id); }
  std::optional<PropertyValue> value(RecordID id, PropertyID property) {
    return (isMultiValued(propertyOf(property).type) ? rowsWithEntries(id) : rowsWith(id)).value(id, property);
  }
  std::optional<std::string_view> text(RecordID id, PropertyID property) { return rowsWith(id).text(id, property); }
  std::span<const EntryView> entries(RecordID id, PropertyID property) {
    return rowsWithEntries(id).entries(id, property);
  }
  bool hasImage(RecordID id) { return rowsWith(id).hasImage(id); }
  std::optional<std::string> image(RecordID id);

  const Status& status() const { return status_; }  // The first failed read, else ok.

  void endReading();

  // Whether this still is a reader of the book at `path`, of this version. Between
  // two handles.
  bool stillReads(const std::string& path);

 private:
  struct Count {
    std::int64_t state;  // As the connection numbers the states that it has seen.
    int persons;
  };

  void beginReading();
  // The rows, with the person among them if there is one.
  const ContactRows& rowsWith(RecordID id);
  const ContactRows& rowsWithEntries(RecordID id);
  std::vector<RecordID> readIDs(std::string_view sql);
  std::int64_t readInteger(Statement& statement);
  void note(const Status& status);

  std::unique_ptr<Database> database_;  // Before its statements: it goes last.
  ContactRows rows_;
  Statement imageQuery_;
  Statement stateQuery_;
  Statement countQuery_;
  int window_ = 1;
  bool reading_ = false;
  std::optional<Count> count_;
  Status status_;
};

// The readers of one address book that no handle uses; one at most. Any thread.
class IdleContactReader {
 public:
  explicit IdleContactReader(std::string path) : path_(std::move(path)) {}

  // The idle reader if it still reads the file at the path, else a new one. Null
  // with a Status when the book cannot be opened.
  std::unique_ptr<ContactReader> take(Status& status);

  // Keeps `reader` unless it has failed.
  void give(std::unique_ptr<ContactReader> reader);

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::mutex mutex_;
  std::unique_ptr<ContactReader> idle_;
};

}  // namespace varnok
