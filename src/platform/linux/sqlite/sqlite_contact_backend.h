#pragma once

#include <array>
#include <memory>
#include <string>

#include "contacts/contact_store.h"
#include "platform/linux/sqlite/contact_rows.h"
#include "platform/linux/sqlite/database.h"

namespace varnok {

// One handle's two connections: one that reads a fixed state, one that writes.
class SQLiteContactBackend : public ContactBackend {
 public:
  SQLiteContactBackend(std::string path, std::unique_ptr<Database> reader);

  std::vector<RecordID> allIDs() override;
  std::vector<RecordID> idsWithImage() override;
  int personCount() override;
  bool contains(RecordID id) override;
  std::optional<PropertyValue> value(RecordID id, PropertyID property) override;
  std::optional<std::string_view> text(RecordID id, PropertyID property) override;
  void entries(RecordID id, PropertyID property, std::vector<EntryView>& views) override;
  bool hasImage(RecordID id) override;
  std::optional<std::string> image(RecordID id) override;
  Status readStatus() const override { return readStatus_; }

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

  std::vector<RecordID> readIDs(std::string_view sql);
  void beginReading();
  void endReading();
  // Makes sure that rows_ holds the person if there is one.
  void load(RecordID id);
  Status beginWriting();

  std::string path_;
  std::unique_ptr<Database> reader_;
  ContactRows rows_;
  Statement imageQuery_;
  int window_ = 1;
  bool reading_ = false;
  Status readStatus_;
  std::unique_ptr<Writer> writer_;
  bool writing_ = false;
};

}  // namespace varnok
