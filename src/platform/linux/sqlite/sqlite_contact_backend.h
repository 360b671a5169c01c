#pragma once

#include <array>
#include <memory>
#include <string>

#include "contacts/contact_store.h"
#include "platform/linux/sqlite/contact_reader.h"
#include "platform/linux/sqlite/database.h"

namespace varnok {

// One handle's two connections: one that reads a fixed state, one that writes.
class SQLiteContactBackend : public ContactBackend {
 public:
  // `reader`, which comes from `idle`, goes back there.
  SQLiteContactBackend(std::shared_ptr<IdleContactReader> idle, std::unique_ptr<ContactReader> reader);
  SQLiteContactBackend(const SQLiteContactBackend&) = delete;
  SQLiteContactBackend& operator=(const SQLiteContactBackend&) = delete;
  ~SQLiteContactBackend() override;

  std::vector<RecordID> allIDs() override { return reader_->allIDs(); }
  std::vector<RecordID> idsWithImage() override { return reader_->idsWithImage(); }
  int personCount() override { return reader_->personCount(); }
  bool contains(RecordID id) override { return reader_->contains(id); }
  std::optional<PropertyValue> value(RecordID id, PropertyID property) override { return reader_->value(id, property); }
  std::optional<std::string_view> text(RecordID id, PropertyID property) override {
    return reader_->text(id, property);
  }
  std::span<const EntryView> entries(RecordID id, PropertyID property) override {
    return reader_->entries(id, property);
  }
  bool hasImage(RecordID id) override { return reader_->hasImage(id); }
  std::optional<std::string> image(RecordID id) override { return reader_->image(id); }
  Status readStatus() const override { return reader_->status(); }

  Status insert(const PersonChanges& person, RecordID& id) override;
  Status update(RecordID id, const PersonChanges& changes) override;
  Status remove(RecordID id) override;
  Status commit() override;
  void rollback() override;

 private:
  // The connection that writes, with its open transaction. Statements are
  // declared after the connection, so they go first.
  struct Writer {
    explicit Writer(std::unique_ptr<Database> connection);

    Status writeEntries(RecordID id, const PersonChanges& changes);
    Status replaceValue(RecordID id, PropertyID property, const PropertyValue* value);
    Status writeImage(RecordID id, const PersonChanges& changes);

    std::unique_ptr<Database> database;
    Statement insertPerson;
    Statement insertEntry;
    Statement deleteEntries;
    Statement insertImage;
    Statement deleteImage;
    Statement personExists;
    std::array<Statement, 3> deletePerson;
  };

  Status beginWriting();

  std::shared_ptr<IdleContactReader> idle_;
  std::unique_ptr<ContactReader> reader_;
  std::unique_ptr<Writer> writer_;
  bool writing_ = false;     // A transaction is open.
  bool hasWritten_ = false;  // One has been.
};

}  // namespace varnok
