#include "platform/linux/sqlite/database.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/check.h"

namespace varnok {
namespace {

// Another process may hold the book for as long as a large import takes.
constexpr int kBusyTimeoutMilliseconds = 60'000;

Status::Code codeOf(int primary, int systemError) {
  switch (primary) {
    case SQLITE_FULL: return Status::Code::noSpace;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB: return Status::Code::corrupt;
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return Status::Code::busy;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH: return Status::Code::accessDenied;
    default: break;
  }
  if (systemError == ENOSPC || systemError == EDQUOT) return Status::Code::noSpace;
  if (systemError == EACCES || systemError == EPERM || systemError == EROFS) return Status::Code::accessDenied;
  if (systemError == ENOENT) return Status::Code::notFound;
  return Status::Code::inputOutput;
}

const char* textOf(Status::Code code, int primary) {
  switch (code) {
    case Status::Code::noSpace: return "the disk is full";
    case Status::Code::corrupt: return "the file is damaged or is not an address book; it was left as it is";
    case Status::Code::busy: return "another program is using it";
    case Status::Code::accessDenied: return "access was denied";
    case Status::Code::notFound: return "there is no such file or folder";
    default: return sqlite3_errstr(primary);
  }
}

}  // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Statement& Statement::bind(std::int64_t value) {
  if (status_.ok()) sqlite3_bind_int64(statement_.get(), ++parameters_, value);
  return *this;
}

Statement& Statement::bind(std::optional<std::string_view> text) {
  if (!status_.ok()) return *this;
  ++parameters_;
  if (text) {
    const char* bytes = text->data() == nullptr ? "" : text->data();
    sqlite3_bind_text64(statement_.get(), parameters_, bytes, text->size(), SQLITE_STATIC, SQLITE_UTF8);
  } else {
    sqlite3_bind_null(statement_.get(), parameters_);
  }
  return *this;
}

Statement& Statement::bindBlob(std::string_view bytes) {
  if (!status_.ok()) return *this;
  sqlite3_bind_blob64(statement_.get(), ++parameters_, bytes.data() == nullptr ? "" : bytes.data(), bytes.size(),
                      SQLITE_STATIC);
  return *this;
}

bool Statement::step() {
  if (!status_.ok()) return false;
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) status_ = database_->statusOf(code);
  reset();
  return false;
}

Status Statement::run() {
  while (step()) {
  }
  return status_;
}

void Statement::reset() {
  if (statement_ != nullptr) sqlite3_reset(statement_.get());
  parameters_ = 0;
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::optional<std::string_view> Statement::text(int column) const {
  // The value is looked up once for both questions: a pass over a book asks them
  // for every column.
  sqlite3_value* value = sqlite3_column_value(statement_.get(), column);
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) return std::nullopt;
  return std::string_view(text, static_cast<std::size_t>(sqlite3_value_bytes(value)));
}

std::string_view Statement::blob(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

void Database::Closer::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

// SQLite would let others of the machine read a file that it makes; its log
// files take the mode of the database. A file that is there is not opened here:
// to close it would give up the locks that this process's connections hold on it.
std::unique_ptr<Database> Database::openOrCreate(const std::string& path, Status& status) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd >= 0) ::close(fd);
  return open(path, status);
}

// The switch does not wait for other connections.
Status Database::useWriteAheadLog() {
  Status status;
  for (int attempt = 0; attempt < 100; ++attempt) {
    status = execute("PRAGMA journal_mode = WAL");
    if (status.code() != Status::Code::busy) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return status;
}

std::unique_ptr<Database> Database::open(const std::string& path, Status& status) {
  std::unique_ptr<Database> database(new Database(path));
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  database->database_.reset(handle);
  if (code != SQLITE_OK) {
    status = database->statusOf(code);
    return nullptr;
  }
  sqlite3_extended_result_codes(handle, 1);
  sqlite3_busy_timeout(handle, kBusyTimeoutMilliseconds);
  status = {};
  return database;
}

Status Database::execute(const char* sql) {
  const int code = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
  return code == SQLITE_OK ? Status() : statusOf(code);
}

Statement Database::prepare(std::string_view sql) {
  Statement statement;
  statement.database_ = this;
  sqlite3_stmt* handle = nullptr;
  const int code = sqlite3_prepare_v3(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &handle, nullptr);
  statement.statement_.reset(handle);
  if (code != SQLITE_OK) statement.status_ = statusOf(code);
  return statement;
}

std::optional<std::int64_t> Database::queryInteger(std::string_view sql, Status& status) {
  Statement statement = prepare(sql);
  const bool found = statement.step();
  status = statement.status();
  return found ? std::optional(statement.integer(0)) : std::nullopt;
}

std::int64_t Database::lastInsertRowid() const {
  return sqlite3_last_insert_rowid(database_.get());
}

bool Database::hasMoved() const {
  int moved = 0;
  const int code = sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return code != SQLITE_OK || moved != 0;
}

Status Database::statusOf(int code) const {
  const int primary = code & 0xff;
  const Status::Code meaning = codeOf(primary, database_ == nullptr ? 0 : sqlite3_system_errno(database_.get()));
  return {meaning, "the address book " + path_ + ": " + textOf(meaning, primary)};
}

}  // namespace varnok
