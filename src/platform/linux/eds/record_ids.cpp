#include "platform/linux/eds/record_ids.h"

#include <algorithm>
#include <unordered_map>

namespace varnok {
namespace {

// "VARI"; tells our file from another program's SQLite database.
constexpr const char* kCreate = R"(
PRAGMA application_id = 1447121481;
CREATE TABLE IF NOT EXISTS number(
  id INTEGER PRIMARY KEY AUTOINCREMENT, source TEXT NOT NULL, uid TEXT NOT NULL, UNIQUE(source, uid));
CREATE TABLE IF NOT EXISTS secured(one INTEGER PRIMARY KEY, times INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS people(source TEXT PRIMARY KEY, revision TEXT NOT NULL, count INTEGER NOT NULL);
PRAGMA user_version = 2;
)";
constexpr std::int64_t kApplicationID = 1447121481;
constexpr std::int64_t kVersion = 2;

Status checkFile(Database& database, const std::string& path, std::int64_t& version) {
  Status status;
  version = database.queryInteger("PRAGMA user_version", status).value_or(0);
  if (!status.ok()) return status;
  const std::int64_t application = database.queryInteger("PRAGMA application_id", status).value_or(0);
  if (!status.ok()) return status;
  if (version > kVersion && application == kApplicationID) {
    return {Status::Code::newerVersion, "the file " + path + " was written by a newer version of this application"};
  }
  if (application == kApplicationID || (application == 0 && version == 0)) return {};
  return {Status::Code::corrupt, "the file " + path + " is not this application's; it was left as it is"};
}

Status createTables(Database& database, const std::string& path) {
  if (Status status = database.execute("BEGIN IMMEDIATE"); !status.ok()) return status;
  std::int64_t version = 0;
  Status status = checkFile(database, path, version);
  if (status.ok() && version < kVersion) status = database.execute(kCreate);
  if (status.ok()) status = database.execute("COMMIT");
  if (!status.ok()) database.execute("ROLLBACK").ignore("the first failure is what counts");
  return status;
}

Status prepare(Database& database, const std::string& path) {
  std::int64_t version = 0;
  if (Status status = checkFile(database, path, version); !status.ok()) return status;
  if (version < kVersion) {
    if (Status status = createTables(database, path); !status.ok()) return status;
    if (Status status = database.useWriteAheadLog(); !status.ok()) return status;
  }
  return database.execute("PRAGMA synchronous = NORMAL");
}

}  // namespace

std::unique_ptr<RecordIDs> RecordIDs::open(const std::string& path, std::string source, Status& status) {
  auto database = Database::openOrCreate(path, status);
  if (database == nullptr) return nullptr;
  status = prepare(*database, path);
  if (!status.ok()) return nullptr;
  return std::unique_ptr<RecordIDs>(new RecordIDs(std::move(database), std::move(source)));
}

RecordIDs::RecordIDs(std::unique_ptr<Database> database, std::string source)
    : database_(std::move(database)),
      source_(std::move(source)),
      insert_(database_->prepare("INSERT INTO number(source, uid) VALUES(?1, ?2)")),
      find_(database_->prepare("SELECT uid FROM number WHERE id = ?1 AND source = ?2")) {}

std::vector<RecordID> RecordIDs::numbersOf(const std::vector<std::string>& uids, Status& status) {
  std::unordered_map<std::string, RecordID> known;
  const auto read = [&] {
    Statement all = database_->prepare("SELECT id, uid FROM number WHERE source = ?1");
    all.bind(std::string_view(source_));
    while (all.step())
      known.insert_or_assign(std::string(all.text(1).value_or("")), static_cast<RecordID>(all.integer(0)));
    return all.status();
  };
  status = read();
  const auto isKnown = [&](const std::string& uid) { return known.contains(uid); };
  if (status.ok() && !std::ranges::all_of(uids, isKnown)) {
    // Another handle may be naming the same ones.
    status = database_->execute("BEGIN IMMEDIATE");
    if (status.ok()) status = read();
    for (auto uid = uids.begin(); status.ok() && uid != uids.end(); ++uid) {
      if (known.contains(*uid)) continue;
      status = add(*uid, known[*uid]);
    }
    if (status.ok()) status = database_->execute("COMMIT");
    if (!status.ok()) database_->execute("ROLLBACK").ignore("the first failure is what counts");
  }
  std::vector<RecordID> numbers;
  if (!status.ok()) return numbers;
  numbers.reserve(uids.size());
  for (const std::string& uid : uids)
    numbers.push_back(known[uid]);
  return numbers;
}

Status RecordIDs::add(const std::string& uid, RecordID& id) {
  insert_.bind(std::string_view(source_)).bind(std::string_view(uid));
  if (Status status = insert_.run(); !status.ok()) return status;
  id = static_cast<RecordID>(database_->lastInsertRowid());
  return {};
}

// The log is one file: to flush one write flushes all that went before.
Status RecordIDs::secure() {
  Status status = database_->execute("PRAGMA synchronous = FULL");
  if (status.ok()) {
    status = database_->execute("INSERT INTO secured VALUES(1, 1) ON CONFLICT(one) DO UPDATE SET times = times + 1");
  }
  database_->execute("PRAGMA synchronous = NORMAL").ignore("the next flush is slower");
  return status;
}

Status RecordIDs::rename(RecordID id, const std::string& uid) {
  // The name may have been met, and numbered, by a reader in the meantime.
  Statement forget = database_->prepare("DELETE FROM number WHERE source = ?1 AND uid = ?2 AND id <> ?3");
  if (Status status = forget.bind(std::string_view(source_)).bind(std::string_view(uid)).bind(id).run(); !status.ok()) {
    return status;
  }
  Statement update = database_->prepare("UPDATE number SET uid = ?1 WHERE id = ?2");
  return update.bind(std::string_view(uid)).bind(id).run();
}

std::string RecordIDs::uidOf(RecordID id, Status& status) {
  find_.bind(id).bind(std::string_view(source_));
  std::string uid(find_.step() ? find_.text(0).value_or("") : "");
  status = find_.status();
  find_.reset();
  return uid;
}

std::optional<int> RecordIDs::peopleAt(const std::string& revision) {
  Statement count = database_->prepare("SELECT count FROM people WHERE source = ?1 AND revision = ?2");
  count.bind(std::string_view(source_)).bind(std::string_view(revision));
  if (revision.empty() || !count.step()) return std::nullopt;
  return static_cast<int>(count.integer(0));
}

void RecordIDs::keepPeopleAt(const std::string& revision, int count) {
  if (revision.empty() || peopleAt(revision) == count) return;
  Statement keep = database_->prepare("INSERT OR REPLACE INTO people VALUES(?1, ?2, ?3)");
  keep.bind(std::string_view(source_))
      .bind(std::string_view(revision))
      .bind(count)
      .run()
      .ignore("they are counted again");
}

void RecordIDs::forgetPeople() {
  Statement forget = database_->prepare("DELETE FROM people WHERE source = ?1");
  forget.bind(std::string_view(source_)).run().ignore("the next revision differs");
}

}  // namespace varnok
