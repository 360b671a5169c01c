#include "platform/linux/sqlite/sqlite_contact_backend.h"

#include <algorithm>
#include <array>

#include "platform/check.h"
#include "platform/linux/sqlite/contact_schema.h"

namespace varnok {
namespace {

constexpr std::array<std::string_view, kKindColumn> kColumns{
    "first_name",         "last_name",    "middle_name", "prefix",    "suffix", "nickname", "first_name_phonetic",
    "last_name_phonetic", "organization", "department",  "job_title", "note",   "birthday", "kind",
};

constexpr std::string_view kInsertPerson =
    "INSERT INTO person(first_name, last_name, middle_name, prefix, suffix, nickname, first_name_phonetic, "
    "last_name_phonetic, organization, department, job_title, note, birthday, kind, image) "
    "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)";

const PropertyValue* findValue(const PersonChanges& changes, PropertyID property) {
  const auto found = changes.properties.find(property);
  return found == changes.properties.end() || !found->second ? nullptr : &*found->second;
}

// Binds a single-valued property, NULL when it is absent.
void bindValue(Statement& statement, const PropertyValue* value) {
  if (value == nullptr) {
    statement.bind(std::nullopt);
  } else if (const auto* text = std::get_if<std::string>(value)) {
    statement.bind(std::optional<std::string_view>(*text));
  } else if (const auto* instant = std::get_if<Instant>(value)) {
    statement.bind(static_cast<std::int64_t>(instant->time_since_epoch().count()));
  } else if (const auto* number = std::get_if<std::int64_t>(value)) {
    statement.bind(*number);
  } else {
    VARNOK_UNREACHABLE();
  }
}

void bindSize(Statement& statement, const std::string* image) {
  if (image != nullptr) {
    statement.bind(static_cast<std::int64_t>(image->size()));
  } else {
    statement.bind(std::nullopt);
  }
}

std::string entryText(const EntryValue& value) {
  if (const auto* instant = std::get_if<Instant>(&value)) return std::to_string(instant->time_since_epoch().count());
  return encodeDictionary(std::get<Dictionary>(value));
}

}  // namespace

SQLiteContactBackend::SQLiteContactBackend(std::shared_ptr<IdleContactReader> idle,
                                           std::unique_ptr<ContactReader> reader)
    : idle_(std::move(idle)), reader_(std::move(reader)) {}

// The log file goes when the last connection closes, so none is kept after a write.
SQLiteContactBackend::~SQLiteContactBackend() {
  if (!hasWritten_) idle_->give(std::move(reader_));
}

SQLiteContactBackend::Writer::Writer(std::unique_ptr<Database> connection)
    : database(std::move(connection)),
      insertPerson(database->prepare(kInsertPerson)),
      insertEntry(database->prepare("INSERT INTO entry(person, property, position, label, value) "
                                    "VALUES(?1, ?2, ?3, ?4, ?5)")),
      deleteEntries(database->prepare("DELETE FROM entry WHERE person = ?1 AND property = ?2")),
      insertImage(database->prepare("INSERT OR REPLACE INTO image(person, bytes) VALUES(?1, ?2)")),
      deleteImage(database->prepare("DELETE FROM image WHERE person = ?1")),
      personExists(database->prepare("SELECT 1 FROM person WHERE id = ?1")),
      deletePerson{database->prepare("DELETE FROM entry WHERE person = ?1"),
                   database->prepare("DELETE FROM image WHERE person = ?1"),
                   database->prepare("DELETE FROM person WHERE id = ?1")} {}

Status SQLiteContactBackend::Writer::writeEntries(RecordID id, const PersonChanges& changes) {
  for (const auto& [property, value] : changes.properties) {
    if (!value || !isMultiValued(propertyOf(property).type)) continue;
    std::int64_t position = 0;
    for (const MultiValueEntry& entry : std::get<MultiValue>(*value).entries) {
      const auto* text = std::get_if<std::string>(&entry.value);
      const std::string encoded = text == nullptr ? entryText(entry.value) : std::string();
      insertEntry.bind(id).bind(static_cast<int>(property)).bind(position++);
      insertEntry.bind(entry.label ? std::optional<std::string_view>(*entry.label) : std::nullopt);
      insertEntry.bind(std::string_view(text == nullptr ? encoded : *text));
      if (Status status = insertEntry.run(); !status.ok()) return status;
    }
  }
  return {};
}

// For a list, takes the old entries away; writeEntries() adds the new ones.
Status SQLiteContactBackend::Writer::replaceValue(RecordID id, PropertyID property, const PropertyValue* value) {
  if (isMultiValued(propertyOf(property).type)) {
    return deleteEntries.bind(id).bind(static_cast<int>(property)).run();
  }
  const auto column = kColumns[static_cast<std::size_t>(property) - 1];
  Statement statement = database->prepare("UPDATE person SET " + std::string(column) + " = ?1 WHERE id = ?2");
  bindValue(statement, value);
  return statement.bind(id).run();
}

Status SQLiteContactBackend::Writer::writeImage(RecordID id, const PersonChanges& changes) {
  if (!changes.image) return {};
  Statement size = database->prepare("UPDATE person SET image = ?1 WHERE id = ?2");
  bindSize(size, *changes.image ? &**changes.image : nullptr);
  if (Status status = size.bind(id).run(); !status.ok()) return status;
  if (!*changes.image) return deleteImage.bind(id).run();
  return insertImage.bind(id).bindBlob(**changes.image).run();
}

Status SQLiteContactBackend::beginWriting() {
  if (writing_) return {};
  if (writer_ == nullptr) {
    Status status;
    auto database = openContactDatabase(idle_->path(), status);
    if (database == nullptr) return status;
    writer_ = std::make_unique<Writer>(std::move(database));
  }
  Status status = writer_->database->execute("BEGIN IMMEDIATE");
  writing_ = status.ok();
  hasWritten_ = hasWritten_ || writing_;
  return status;
}

Status SQLiteContactBackend::insert(const PersonChanges& person, RecordID& id) {
  if (Status status = beginWriting(); !status.ok()) return status;
  for (int number = 1; number <= kKindColumn; ++number) {
    bindValue(writer_->insertPerson, findValue(person, static_cast<PropertyID>(number)));
  }
  const std::string* image = person.image && *person.image ? &**person.image : nullptr;
  bindSize(writer_->insertPerson, image);
  if (Status status = writer_->insertPerson.run(); !status.ok()) return status;
  id = static_cast<RecordID>(writer_->database->lastInsertRowid());
  if (Status status = writer_->writeEntries(id, person); !status.ok()) return status;
  return image == nullptr ? Status() : writer_->insertImage.bind(id).bindBlob(*image).run();
}

Status SQLiteContactBackend::update(RecordID id, const PersonChanges& changes) {
  if (Status status = beginWriting(); !status.ok()) return status;
  writer_->personExists.bind(id);
  const bool exists = writer_->personExists.step();
  writer_->personExists.reset();
  if (!exists) return writer_->personExists.status();
  for (const auto& [property, value] : changes.properties) {
    if (Status status = writer_->replaceValue(id, property, value ? &*value : nullptr); !status.ok()) return status;
  }
  if (Status status = writer_->writeEntries(id, changes); !status.ok()) return status;
  return writer_->writeImage(id, changes);
}

Status SQLiteContactBackend::remove(RecordID id) {
  if (Status status = beginWriting(); !status.ok()) return status;
  for (Statement& statement : writer_->deletePerson) {
    if (Status status = statement.bind(id).run(); !status.ok()) return status;
  }
  return {};
}

Status SQLiteContactBackend::commit() {
  if (writing_) {
    if (Status status = writer_->database->execute("COMMIT"); !status.ok()) return status;
    writing_ = false;
  }
  reader_->endReading();
  return {};
}

void SQLiteContactBackend::rollback() {
  if (writing_) writer_->database->execute("ROLLBACK").ignore("SQLite rolls back by itself when this cannot");
  writing_ = false;
  // A statement that failed keeps its failure; the next write starts afresh.
  writer_.reset();
  reader_->endReading();
}

}  // namespace varnok
