// Database and Statement: SQLite behind RAII and Status.
//
// Threads. A connection and its statements are used by one thread at a time.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/status.h"

struct sqlite3;
struct sqlite3_stmt;

namespace varnok {

class Database;

// A prepared statement. Text that is bound must stay alive until step() or
// run() has returned.
class Statement {
 public:
  Statement() = default;

  // Binds the next parameter, counting from the first.
  Statement& bind(std::int64_t value);
  Statement& bind(std::optional<std::string_view> text);  // Nothing binds NULL.
  Statement& bindBlob(std::string_view bytes);

  // True while there is a row; false at the end and on failure, which status()
  // tells apart. At the end the statement is ready to be bound again.
  bool step();

  // Runs a statement that has no rows.
  Status run();

  // Ready to be bound again, although rows are left.
  void reset();

  const Status& status() const { return status_; }

  // Columns of the row that step() found; views live until the next step().
  bool isNull(int column) const;
  std::int64_t integer(int column) const;
  std::optional<std::string_view> text(int column) const;  // Nothing for NULL.
  std::string_view blob(int column) const;

 private:
  friend class Database;
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };

  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
  Database* database_ = nullptr;
  int parameters_ = 0;
  Status status_;
};

class Database {
 public:
  // Null with a Status when there is no such file or it cannot be opened; a file
  // that is no database is found out by the first statement. The messages of
  // every Status name the file.
  static std::unique_ptr<Database> open(const std::string& path, Status& status);

  // As open(), but makes a file that is missing, for its owner alone.
  static std::unique_ptr<Database> openOrCreate(const std::string& path, Status& status);

  // Switches the file to the write-ahead log, for good.
  Status useWriteAheadLog();

  // One or more statements without rows.
  Status execute(const char* sql);

  Statement prepare(std::string_view sql);

  // The single integer that `sql` yields.
  std::optional<std::int64_t> queryInteger(std::string_view sql, Status& status);

  std::int64_t lastInsertRowid() const;

  // Whether the file at the path is not the open one any more.
  bool hasMoved() const;

  // What an SQLite result code means, with this file's name.
  Status statusOf(int code) const;

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
  };

  explicit Database(std::string path) : path_(std::move(path)) {}

  std::string path_;
  std::unique_ptr<sqlite3, Closer> database_;
};

}  // namespace varnok
