#include "platform/linux/sqlite/contact_reader.h"

#include <algorithm>
#include <utility>

#include "platform/linux/sqlite/contact_schema.h"

namespace varnok {
namespace {

// Persons read at once by a pass over the book.
constexpr int kLargestWindow = 256;

}  // namespace

ContactReader::ContactReader(std::unique_ptr<Database> database)
    : database_(std::move(database)),
      rows_(*database_),
      imageQuery_(database_->prepare("SELECT bytes FROM image WHERE person = ?1")),
      stateQuery_(database_->prepare("PRAGMA data_version")),
      countQuery_(database_->prepare("SELECT count(*) FROM person")) {}

void ContactReader::note(const Status& status) {
  if (!status.ok() && status_.ok()) status_ = status;
}

void ContactReader::beginReading() {
  if (reading_) return;
  const Status status = database_->execute("BEGIN");
  reading_ = status.ok();
  note(status);
}

void ContactReader::endReading() {
  rows_.clear();
  window_ = 1;
  if (reading_) database_->execute("COMMIT").ignore("a transaction that only read has nothing to lose");
  reading_ = false;
}

std::vector<RecordID> ContactReader::allIDs() {
  std::vector<RecordID> ids = readIDs("SELECT id FROM person ORDER BY id");
  const std::int64_t state = readInteger(stateQuery_);
  if (status_.ok()) count_ = {state, static_cast<int>(ids.size())};
  return ids;
}

std::vector<RecordID> ContactReader::idsWithImage() {
  return readIDs("SELECT person FROM image ORDER BY person");
}

std::vector<RecordID> ContactReader::readIDs(std::string_view sql) {
  beginReading();
  std::vector<RecordID> ids;
  Statement statement = database_->prepare(sql);
  while (statement.step())
    ids.push_back(static_cast<RecordID>(statement.integer(0)));
  note(statement.status());
  ids.shrink_to_fit();
  return ids;
}

int ContactReader::personCount() {
  beginReading();
  const std::int64_t state = readInteger(stateQuery_);
  if (count_ && count_->state == state) return count_->persons;
  const auto persons = static_cast<int>(readInteger(countQuery_));
  if (status_.ok()) count_ = {state, persons};
  return persons;
}

std::int64_t ContactReader::readInteger(Statement& statement) {
  const std::int64_t number = statement.step() ? statement.integer(0) : 0;
  statement.reset();
  note(statement.status());
  return number;
}

// A pass over the book asks for ever larger identifiers, and gets ever larger
// windows; a single look-up reads a single person.
const ContactRows& ContactReader::rowsWith(RecordID id) {
  if (rows_.covers(id)) return rows_;
  beginReading();
  window_ = id > rows_.last() && rows_.last() >= 0 ? std::min(window_ * 4, kLargestWindow) : 1;
  note(rows_.load(id, window_));
  return rows_;
}

// Many passes want names only, and most rows of a book are entries.
const ContactRows& ContactReader::rowsWithEntries(RecordID id) {
  if (rowsWith(id).contains(id)) note(rows_.loadEntries(id));
  return rows_;
}

std::optional<std::string> ContactReader::image(RecordID id) {
  // A person of another window is asked for by a look ahead: the rows stay.
  if (rows_.covers(id) && !rows_.hasImage(id)) return std::nullopt;
  beginReading();
  std::optional<std::string> bytes;
  imageQuery_.bind(id);
  if (imageQuery_.step()) bytes = std::string(imageQuery_.blob(0));
  imageQuery_.reset();
  note(imageQuery_.status());
  return bytes;
}

// In a state that was seen before, the version is known.
bool ContactReader::stillReads(const std::string& path) {
  if (database_->hasMoved()) return false;
  const bool seen = count_ && readInteger(stateQuery_) == count_->state;
  return status_.ok() && (seen || isContactDatabase(*database_, path));
}

std::unique_ptr<ContactReader> IdleContactReader::take(Status& status) {
  std::unique_ptr<ContactReader> reader;
  {
    const std::scoped_lock lock(mutex_);
    reader = std::exchange(idle_, nullptr);
  }
  status = {};
  if (reader != nullptr && reader->stillReads(path_)) return reader;
  auto database = openContactDatabase(path_, status);
  return database == nullptr ? nullptr : std::make_unique<ContactReader>(std::move(database));
}

void IdleContactReader::give(std::unique_ptr<ContactReader> reader) {
  reader->endReading();
  if (!reader->status().ok()) return;
  const std::scoped_lock lock(mutex_);
  idle_ = std::move(reader);
}

}  // namespace varnok
