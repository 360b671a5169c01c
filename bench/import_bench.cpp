// `varnokctl import` of a vCard file beside inserting the rows that come of it
// with bare SQLite, in one transaction, into the same tables.
//
//   import_bench PATH_OF_VARNOKCTL

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "bench/bench_support.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRounds = 5;
constexpr int kPeople = 100'000;
constexpr double kMebibyte = 1048576;

using Value = std::variant<std::monostate, sqlite3_int64, std::string>;

// The rows of one table, in memory: what inserts them has only that to do.
struct Table {
  std::string sql;     // That makes it.
  std::string insert;  // Of one row.
  int columns = 0;
  std::vector<Value> values;
};

Value valueOf(sqlite3_stmt* row, int column) {
  if (sqlite3_column_type(row, column) == SQLITE_NULL) return {};
  if (sqlite3_column_type(row, column) == SQLITE_INTEGER) return sqlite3_column_int64(row, column);
  return reinterpret_cast<const char*>(sqlite3_column_text(row, column));
}

void bind(sqlite3_stmt* insert, int column, const Value& value) {
  if (const auto* number = std::get_if<sqlite3_int64>(&value)) {
    sqlite3_bind_int64(insert, column, *number);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    sqlite3_bind_text(insert, column, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
  } else {
    sqlite3_bind_null(insert, column);
  }
}

Table readTable(sqlite3* database, const std::string& name) {
  Table table;
  sqlite3_stmt* rows = nullptr;
  sqlite3_prepare_v2(database, ("SELECT sql FROM sqlite_master WHERE name = '" + name + "'").c_str(), -1, &rows,
                     nullptr);
  if (sqlite3_step(rows) == SQLITE_ROW) table.sql = reinterpret_cast<const char*>(sqlite3_column_text(rows, 0));
  sqlite3_finalize(rows);
  sqlite3_prepare_v2(database, ("SELECT * FROM " + name).c_str(), -1, &rows, nullptr);
  table.columns = sqlite3_column_count(rows);
  while (sqlite3_step(rows) == SQLITE_ROW) {
    for (int i = 0; i < table.columns; ++i)
      table.values.push_back(valueOf(rows, i));
  }
  sqlite3_finalize(rows);
  table.insert = "INSERT INTO " + name + " VALUES(?";
  for (int i = 1; i < table.columns; ++i)
    table.insert += ",?";
  table.insert += ")";
  return table;
}

int insertRows(sqlite3* database, const Table& table) {
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(database, table.insert.c_str(), -1, &insert, nullptr);
  int column = 0;
  for (const Value& value : table.values) {
    bind(insert, ++column, value);
    if (column < table.columns) continue;
    if (sqlite3_step(insert) != SQLITE_DONE) return 1;
    sqlite3_reset(insert);
    column = 0;
  }
  return sqlite3_finalize(insert);
}

int insertAll(const std::string& path, const std::vector<Table>& tables) {
  fs::remove(path);
  sqlite3* database = nullptr;
  if (sqlite3_open(path.c_str(), &database) != SQLITE_OK) return 1;
  sqlite3_exec(database, "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
  for (const Table& table : tables)
    sqlite3_exec(database, table.sql.c_str(), nullptr, nullptr, nullptr);
  sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  for (const Table& table : tables) {
    if (insertRows(database, table) != SQLITE_OK) return 1;
  }
  return sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK ? sqlite3_close(database) : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: import_bench PATH_OF_VARNOKCTL\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  const std::string source = folder.path("source");
  varnok::makeHome(source, kPeople);
  varnok::costOf(varnok::program(varnok::varnokctl(argv[1], source, {"backup", "--type", "vcf"})));
  const std::string file = varnok::backupIn(source, "vcf");
  const std::string home = folder.path("home");
  const auto import = [&] {
    fs::remove_all(home);
    return varnok::program(varnok::varnokctl(argv[1], home, {"import", file}))();
  };
  const double peak = varnok::costOf(import).peak;

  sqlite3* imported = nullptr;
  sqlite3_open((home + "/contacts.db").c_str(), &imported);
  const std::vector<Table> tables{readTable(imported, "person"), readTable(imported, "entry")};
  sqlite3_close(imported);
  const varnok::CostPair costs =
      varnok::leastInTurns(kRounds, import, [&] { return insertAll(folder.path("bare.db"), tables); });
  varnok::Bounds bounds;
  bounds.ratio("import of 100,000 beside bare inserts, wall", costs.ours.wall, costs.theirs.wall, 2.5);
  bounds.ratio("import of 100,000 beside bare inserts, CPU", costs.ours.cpu, costs.theirs.cpu, 2.5);
  bounds.atMost("import of 100,000, memory", peak / kMebibyte, 64, "MiB");
  return bounds.exitStatus();
}
