// Measures the search for duplicates beside the bare work (two ordered SQLite
// cursors that read the twelve fields of the same rows and hash them), and the
// removal of the duplicates and of everybody beside one bare SQL delete of the
// same rows. All are processes of their own and alternate in one run; medians
// are compared.
//
//   duplicates_bench [PEOPLE...]
//
// One person in five is a duplicate, stored long after the first one, as after
// the same file was imported twice.

#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/address_book_generator.h"
#include "bench/process_cost.h"
#include "cleanup/duplicate_finder.h"
#include "cleanup/record_removal.h"
#include "contacts/address_book.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"

namespace {

using namespace varnok;

constexpr int kRounds = 7;
constexpr int kOriginalsForOneDuplicate = 4;

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}

class BareDatabase {
 public:
  explicit BareDatabase(const std::string& path) {
    if (sqlite3_open(path.c_str(), &database_) != SQLITE_OK) fail("the book cannot be opened");
  }
  BareDatabase(const BareDatabase&) = delete;
  BareDatabase& operator=(const BareDatabase&) = delete;
  ~BareDatabase() { sqlite3_close(database_); }

  void execute(const std::string& sql) {
    if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail(sqlite3_errmsg(database_));
  }
  sqlite3* get() { return database_; }

 private:
  sqlite3* database_ = nullptr;
};

void makeBook(const std::string& path, int people) {
  const int originals = people * kOriginalsForOneDuplicate / (kOriginalsForOneDuplicate + 1);
  {
    SQLiteContactStoreProvider provider(path);
    const auto store = ABAddressBookCreateWithOptions(provider);
    AddressBookGenerator generator;
    for (int i = 0; i < originals; ++i) {
      if (!ABAddressBookAddRecord(store.get(), generator.person(static_cast<std::uint32_t>(i))).ok()) fail("no book");
    }
    if (!ABAddressBookSave(store.get()).ok()) fail("no book");
  }
  const std::string every = " % " + std::to_string(kOriginalsForOneDuplicate) + " = 0";
  const std::string shift = std::to_string(originals);
  BareDatabase database(path);
  database.execute(
      "CREATE TEMP TABLE copy AS SELECT * FROM person WHERE id" + every + ";" + "UPDATE copy SET id = id / 4 + " +
      shift + ";" + "INSERT INTO person SELECT * FROM copy;" + "INSERT INTO entry SELECT person / 4 + " + shift +
      ", property, position, label, value FROM entry WHERE person" + every + ";" + "PRAGMA wal_checkpoint(TRUNCATE);");
}

DuplicateRecords search(const std::string& path) {
  SQLiteContactStoreProvider provider(path);
  const auto addressBook = ABAddressBookCreateWithOptions(provider);
  return findDuplicates(addressBook.get(), PosixClock());
}

std::size_t hashed(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  if (text == nullptr) return 1;
  return std::hash<std::string_view>()({text, static_cast<std::size_t>(sqlite3_column_bytes(row, column))});
}

// The sum keeps the compiler honest.
int bareSearch(const std::string& path) {
  BareDatabase database(path);
  sqlite3_stmt* persons = nullptr;
  sqlite3_stmt* entries = nullptr;
  sqlite3_prepare_v2(database.get(),
                     "SELECT id, first_name, last_name, middle_name, prefix, suffix, nickname, organization, "
                     "department, job_title, birthday FROM person ORDER BY id",
                     -1, &persons, nullptr);
  sqlite3_prepare_v2(database.get(),
                     "SELECT person, label, value FROM entry WHERE property IN (15, 16) "
                     "ORDER BY person, property, position",
                     -1, &entries, nullptr);
  std::size_t sum = 0;
  bool more = sqlite3_step(entries) == SQLITE_ROW;
  while (sqlite3_step(persons) == SQLITE_ROW) {
    for (int column = 1; column <= 10; ++column)
      sum += hashed(persons, column);
    const sqlite3_int64 id = sqlite3_column_int64(persons, 0);
    for (; more && sqlite3_column_int64(entries, 0) == id; more = sqlite3_step(entries) == SQLITE_ROW)
      sum += hashed(entries, 1) + hashed(entries, 2);
  }
  sqlite3_finalize(persons);
  sqlite3_finalize(entries);
  return sum == 0 || more ? 1 : 0;
}

int removal(const std::string& path, const std::vector<RecordID>& ids) {
  SQLiteContactStoreProvider provider(path);
  const auto addressBook = ABAddressBookCreateWithOptions(provider);
  return removeRecords(addressBook.get(), ids).ok() ? 0 : 1;
}

int bareRemoval(const std::string& path, const std::vector<RecordID>& ids) {
  std::string list;
  for (const RecordID id : ids)
    list.append(list.empty() ? "[" : ",").append(std::to_string(id));
  BareDatabase database(path);
  database.execute("PRAGMA synchronous = FULL; BEGIN IMMEDIATE");
  for (const char* table : {"entry WHERE person", "image WHERE person", "person WHERE id"})
    database.execute(fmt::format("DELETE FROM {} IN (SELECT value FROM json_each('{}]'))", table, list));
  database.execute("COMMIT");
  return 0;
}

void report(const char* what, const ProcessCost& ours, const ProcessCost& bare) {
  std::printf("  %s: ours %.3f s wall %.3f s CPU | bare %.3f s %.3f s | ratio wall %.2f CPU %.2f\n", what, ours.wall,
              ours.cpu, bare.wall, bare.cpu, ours.wall / bare.wall, ours.cpu / bare.cpu);
  std::fflush(stdout);
}

ProcessCost measureSearch(const std::string& path) {
  std::vector<ProcessCost> ours;
  std::vector<ProcessCost> bare;
  for (int round = 0; round < kRounds; ++round) {
    ours.push_back(costOf([&] { return search(path).duplicateRecords.empty() ? 1 : 0; }));
    bare.push_back(costOf([&] { return bareSearch(path); }));
  }
  report("search", median(ours), median(bare));
  return median(ours);
}

void measureRemoval(const char* what, const std::string& path, const std::vector<RecordID>& ids) {
  const std::string copy = path + ".copy";
  const auto costOfRemoval = [&](int (*remove)(const std::string&, const std::vector<RecordID>&)) {
    for (const char* suffix : {"", "-wal", "-shm"})
      std::filesystem::remove(copy + suffix);
    std::filesystem::copy_file(path, copy);
    return costOf([&] { return remove(copy, ids); });
  };
  std::vector<ProcessCost> ours;
  std::vector<ProcessCost> bare;
  for (int round = 0; round < kRounds; ++round) {
    ours.push_back(costOfRemoval(&removal));
    bare.push_back(costOfRemoval(&bareRemoval));
  }
  report(what, median(ours), median(bare));
}

std::vector<RecordID> everybody(const std::string& path) {
  SQLiteContactStoreProvider provider(path);
  const auto addressBook = ABAddressBookCreateWithOptions(provider);
  return ABAddressBookCopyArrayOfAllPeople(addressBook.get()).ids();
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes{10000, 100000};
  if (argc > 1) sizes.clear();
  for (int i = 1; i < argc; ++i)
    sizes.push_back(std::atoi(argv[i]));
  const auto root = std::filesystem::temp_directory_path() / ("varnok-bench-" + std::to_string(getpid()));
  std::filesystem::create_directories(root);
  std::vector<ProcessCost> searches;
  for (const int people : sizes) {
    const std::string path = (root / (std::to_string(people) + ".db")).string();
    costOf([&] {
      makeBook(path, people);
      return 0;
    });
    const DuplicateRecords found = search(path);
    std::printf("%d people, %zu duplicates in %zu groups\n", people, found.duplicateRecords.size(),
                found.duplicateRecordsAsDictionary.size());
    searches.push_back(measureSearch(path));
    measureRemoval("removal of the duplicates", path, found.duplicateRecords);
    measureRemoval("removal of everybody", path, everybody(path));
  }
  if (searches.size() > 1) {
    const ProcessCost& small = searches.front();
    const ProcessCost& large = searches.back();
    std::printf("search from %d to %d people: CPU grows %.1f times, memory by %.0f bytes a person\n", sizes.front(),
                sizes.back(), large.cpu / small.cpu, (large.peak - small.peak) / (sizes.back() - sizes.front()));
  }
  std::filesystem::remove_all(root);
  return 0;
}
