// RecordIDs: which number stands for which contact of which address book. The
// service names contacts by texts; ours are numbers, which are never used again,
// so a contact that is gone keeps its number. Beside them it keeps how many
// people the book had when it was last read.
//
// Threads. A handle's. Many handles and processes may use one file.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/contact_record.h"
#include "platform/linux/sqlite/database.h"

namespace varnok {

class RecordIDs {
 public:
  // Null with a Status when the file at `path` cannot be used. Makes it where
  // there is none.
  static std::unique_ptr<RecordIDs> open(const std::string& path, std::string source, Status& status);

  // The numbers of these contacts, in their order; who has none gets one.
  std::vector<RecordID> numbersOf(const std::vector<std::string>& uids, Status& status);

  // A number for a contact that is about to be made. Durable with secure().
  Status add(const std::string& uid, RecordID& id);

  // What add() has given survives a power failure from here on.
  Status secure();

  // The contact got another name than it was to have.
  Status rename(RecordID id, const std::string& uid);

  // Empty when nobody has this number.
  std::string uidOf(RecordID id, Status& status);

  // How many people the book had at `revision`; nothing when that was not kept.
  std::optional<int> peopleAt(const std::string& revision);
  void keepPeopleAt(const std::string& revision, int count);
  void forgetPeople();

 private:
  RecordIDs(std::unique_ptr<Database> database, std::string source);

  std::unique_ptr<Database> database_;
  std::string source_;
  // After the connection, so that they go first.
  Statement insert_;
  Statement find_;
};

}  // namespace varnok
