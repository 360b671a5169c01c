#include "platform/linux/sqlite/contact_schema.h"

namespace varnok {
namespace {

// "VARN"; tells our file from another program's SQLite database.
constexpr std::int64_t kApplicationID = 0x5641524E;
constexpr std::int64_t kSchemaVersion = 1;

constexpr const char* kCreate = R"(
PRAGMA application_id = 1447121486;
CREATE TABLE person(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  first_name TEXT, last_name TEXT, middle_name TEXT, prefix TEXT, suffix TEXT, nickname TEXT,
  first_name_phonetic TEXT, last_name_phonetic TEXT, organization TEXT, department TEXT, job_title TEXT,
  note TEXT, birthday INTEGER, kind INTEGER, image INTEGER);
CREATE TABLE entry(
  person INTEGER NOT NULL, property INTEGER NOT NULL, position INTEGER NOT NULL, label TEXT, value TEXT NOT NULL,
  PRIMARY KEY(person, property, position)) WITHOUT ROWID;
CREATE TABLE image(person INTEGER PRIMARY KEY, bytes BLOB NOT NULL);
PRAGMA user_version = 1;
)";
static_assert(kApplicationID == 1447121486 && kSchemaVersion == 1, "kCreate writes both as literals");

Status notOurs(const std::string& path) {
  return {Status::Code::corrupt,
          "the file " + path + " is not an address book of this application; it was left as it is"};
}

// The version of the tables, 0 for an empty file. Within a transaction: another
// process may be making the tables.
Status readVersion(Database& database, const std::string& path, std::int64_t& version) {
  Status status;
  version = database.queryInteger("PRAGMA user_version", status).value_or(0);
  if (!status.ok()) return status;
  const std::int64_t application = database.queryInteger("PRAGMA application_id", status).value_or(0);
  if (!status.ok()) return status;
  if (application == kApplicationID) return {};
  const std::int64_t tables = database.queryInteger("SELECT count(*) FROM sqlite_master", status).value_or(0);
  if (!status.ok()) return status;
  return application == 0 && tables == 0 && version == 0 ? Status() : notOurs(path);
}

// Another process may be making the same file: look again under the lock.
Status createTables(Database& database, const std::string& path) {
  if (Status status = database.execute("BEGIN IMMEDIATE"); !status.ok()) return status;
  std::int64_t version = 0;
  Status status = readVersion(database, path, version);
  if (status.ok() && version == 0) status = database.execute(kCreate);
  if (status.ok()) status = database.execute("COMMIT");
  if (!status.ok()) database.execute("ROLLBACK").ignore("the first failure is what counts");
  return status;
}

// As readVersion(), but a newer version is a failure.
Status readKnownVersion(Database& database, const std::string& path, std::int64_t& version) {
  if (Status status = database.execute("BEGIN"); !status.ok()) return status;
  Status status = readVersion(database, path, version);
  database.execute("COMMIT").ignore("it only read");
  if (!status.ok() || version <= kSchemaVersion) return status;
  return {Status::Code::newerVersion,
          "the address book " + path + " was written by a newer version of this application; it was left as it is"};
}

Status prepare(Database& database, const std::string& path) {
  std::int64_t version = 0;
  Status status = readKnownVersion(database, path, version);
  if (!status.ok()) return status;
  if (version == 0) {
    status = createTables(database, path);
    if (status.ok()) status = database.useWriteAheadLog();
    if (!status.ok()) return status;
  }
  return database.execute("PRAGMA synchronous = FULL");
}

}  // namespace

std::unique_ptr<Database> openContactDatabase(const std::string& path, Status& status) {
  auto database = Database::openOrCreate(path, status);
  if (database == nullptr) return nullptr;
  status = prepare(*database, path);
  return status.ok() ? std::move(database) : nullptr;
}

bool isContactDatabase(Database& database, const std::string& path) {
  std::int64_t version = 0;
  return readKnownVersion(database, path, version).ok() && version == kSchemaVersion;
}

}  // namespace varnok
