#include "platform/linux/posix/preference_file_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <unordered_map>

#include "platform/linux/posix/posix_io.h"
#include "platform/linux/posix/preference_file_format.h"
#include "platform/linux/posix/shared_words.h"

namespace varnok {
namespace {

// Below this size rewriting the file at start-up saves nothing worth its cost.
constexpr std::uint64_t kCompactAboveSize = 65536;

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

// A link stays a link: what is replaced is the file that it names.
std::string withoutLinks(const std::string& path) {
  std::error_code error;
  const auto resolved = std::filesystem::canonical(path, error);
  return error ? path : resolved.string();
}

}  // namespace

// The file, the values read from it, and those still to be written.
//
// How processes get along. Appending and replacing happen under an exclusive
// lock on the file. A value of eight bytes whose record is already there is
// changed without the lock, in its slot. That is safe because whoever appends
// or replaces raises the header's count of changes first: a writer that finds
// the count as it was after its store came before them, and one that finds it
// raised takes the lock, looks again and repeats its change. The count is
// remembered only under the lock. Values read from the file while it is being
// replaced are read after the count was raised, so a store is seen by the
// replacer or the count by the storing process.
class PreferenceFileStore::File {
 public:
  static std::unique_ptr<File> open(const std::string& path, Status& status);

  // Null when the key has no value; valid until the next call.
  const Value* value(std::string_view key);

  // Grows when values change otherwise than in their slots.
  std::uint64_t generation();

  // A null `value` removes the key.
  void change(std::string_view key, const Value* value);

  Status flush();

 private:
  struct Entry {
    std::optional<Value> value;  // Absent: a removal that is still to be written.
    bool pending = false;        // The file has not got `value`.
    // The key's newest record in the file.
    std::uint32_t size = 0;    // Its bytes; 0 when there is none, or one that removes the key.
    std::uint64_t slot = 0;    // 0 when it has none.
    std::size_t slotType = 0;  // Which alternative of Value the slot holds.
  };
  using Index = std::unordered_map<std::string, Entry, TextHash, std::equal_to<>>;

  explicit File(std::string path) : path_(std::move(path)) {}

  Status lockAndCatchUp(int operation);
  Status lockNamedFile(int operation);
  bool isNamed(const FileDescriptor& file) const;
  Status useFile(FileDescriptor file);
  Status readNewRecords();
  Status readHeader(std::uint64_t size);
  void apply(PreferenceRecord record);

  void catchUpForRead();
  bool storeInSlot(Entry& entry, const Value& value);
  bool isStored(const Entry& entry, const Value& value) const;
  Status writePending();
  bool settleInPlace(Entry& entry);
  Status append();
  Status appendBytes(const std::string& batch);
  Status settle(std::vector<std::string> unfit);

  bool worthCompacting() const { return end_ > kCompactAboveSize && liveSize_ < end_ / 2; }
  Status rewrite();
  std::string image(std::vector<std::string>& unfit);
  Status replaceWith(const std::string& image, FileDescriptor& file);

  std::string path_;
  FileDescriptor file_;
  SharedWords words_;
  std::uint64_t end_ = 0;          // Just after the last whole record; 0 before the header is read.
  std::uint64_t liveSize_ = 0;     // Bytes of the records that count.
  std::uint64_t changesSeen_ = 0;  // The header's count when end_ was last brought up to date.
  bool damagedTail_ = false;       // Bytes after end_ are no record.
  std::uint64_t generation_ = 0;
  Index index_;
  std::vector<std::string> pending_;
};

// Opening.

std::unique_ptr<PreferenceFileStore::File> PreferenceFileStore::File::open(const std::string& path, Status& status) {
  std::unique_ptr<File> file(new File(withoutLinks(path)));
  status = file->lockAndCatchUp(LOCK_EX);
  if (!status.ok()) return nullptr;
  if (file->worthCompacting()) file->rewrite().ignore("the longer file serves as well");
  lockWhole(file->file_.get(), LOCK_UN);
  return file;
}

// Takes the lock on the file that the path names at this moment, and reads what
// others wrote. Without a good Status no lock is held.
Status PreferenceFileStore::File::lockAndCatchUp(int operation) {
  if (Status status = lockNamedFile(operation); !status.ok()) return status;
  Status status = readNewRecords();
  if (!status.ok()) lockWhole(file_.get(), LOCK_UN);
  return status;
}

Status PreferenceFileStore::File::lockNamedFile(int operation) {
  if (file_.valid()) {
    if (const int error = lockWhole(file_.get(), operation)) return statusOfErrno(error, "lock", path_);
    if (isNamed(file_)) return {};
    lockWhole(file_.get(), LOCK_UN);
  }
  for (;;) {
    FileDescriptor named(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
    if (!named.valid()) return statusOfErrno(errno, "open", path_);
    if (const int error = lockWhole(named.get(), operation)) return statusOfErrno(error, "lock", path_);
    if (isNamed(named)) return useFile(std::move(named));  // Else it was replaced while we waited.
  }
}

bool PreferenceFileStore::File::isNamed(const FileDescriptor& file) const {
  struct stat held {};
  struct stat named {};
  return ::fstat(file.get(), &held) == 0 && ::stat(path_.c_str(), &named) == 0 && held.st_ino == named.st_ino &&
         held.st_dev == named.st_dev;
}

// Forgets what the previous file held; values still to be written are kept.
Status PreferenceFileStore::File::useFile(FileDescriptor file) {
  struct stat information {};
  if (::fstat(file.get(), &information) != 0) return statusOfErrno(errno, "read", path_);
  if (!S_ISREG(information.st_mode)) return {Status::Code::invalidArgument, path_ + " is not a file"};
  file_ = std::move(file);
  words_.attach(file_.get());
  end_ = 0;
  liveSize_ = 0;
  ++generation_;
  std::erase_if(index_, [](const auto& item) { return !item.second.pending; });
  for (auto& item : index_) {
    item.second.size = 0;
    item.second.slot = 0;
  }
  return {};
}

// Under the lock.
Status PreferenceFileStore::File::readNewRecords() {
  struct stat information {};
  if (::fstat(file_.get(), &information) != 0) return statusOfErrno(errno, "read", path_);
  auto size = static_cast<std::uint64_t>(information.st_size);
  if (end_ == 0) {
    if (Status status = readHeader(size); !status.ok()) return status;
    size = std::max<std::uint64_t>(size, kPreferenceHeaderSize);
  }
  if (size < end_) {
    // Somebody cut the file. Its words are not there to be touched any more.
    useFile(FileDescriptor(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0))).ignore("it was a regular file before");
    return readNewRecords();
  }
  std::string bytes;
  if (const int error = readAt(file_.get(), end_, size - end_, bytes)) return statusOfErrno(error, "read", path_);
  std::vector<PreferenceRecord> records;
  end_ += parsePreferenceRecords(bytes, end_, records);
  damagedTail_ = end_ != size;
  words_.reach(end_);
  for (PreferenceRecord& record : records)
    apply(std::move(record));
  changesSeen_ = words_.read(kPreferenceChangesOffset);
  return {};
}

Status PreferenceFileStore::File::readHeader(std::uint64_t size) {
  std::string header;
  const std::size_t length = std::min<std::uint64_t>(size, kPreferenceHeaderSize);
  if (const int error = readAt(file_.get(), 0, length, header)) return statusOfErrno(error, "read", path_);
  switch (readPreferenceHeader(header)) {
    case PreferenceHeader::current: break;
    case PreferenceHeader::absent:
      if (const int error = writeAllAt(file_.get(), preferenceHeader(), 0)) {
        return statusOfErrno(error, "write", path_);
      }
      break;
    case PreferenceHeader::newer:
      return {Status::Code::newerVersion, path_ + " was written by a newer version of this program"};
    case PreferenceHeader::unknown: return {Status::Code::corrupt, path_ + " is damaged or not a preference file"};
  }
  end_ = kPreferenceHeaderSize;
  return {};
}

void PreferenceFileStore::File::apply(PreferenceRecord record) {
  Entry& entry = index_[record.key];
  liveSize_ -= entry.size;
  entry.size = record.value ? record.size : 0;
  entry.slot = record.slot;
  entry.slotType = record.value ? record.value->index() : 0;
  liveSize_ += entry.size;
  if (entry.pending) return;  // This process's change comes after it.
  ++generation_;
  entry.value = std::move(record.value);
  if (!entry.value) index_.erase(record.key);
}

// Reading.

const Value* PreferenceFileStore::File::value(std::string_view key) {
  catchUpForRead();
  const auto found = index_.find(key);
  if (found == index_.end() || !found->second.value) return nullptr;
  Entry& entry = found->second;
  if (entry.slot != 0 && !entry.pending && words_.mapped()) {
    const std::uint64_t word = words_.read(entry.slot);
    if (word != preferenceSlotWord(*entry.value)) entry.value = preferenceSlotValue(word, *entry.value);
  }
  return &*entry.value;
}

std::uint64_t PreferenceFileStore::File::generation() {
  catchUpForRead();
  return generation_;
}

// A reader does not wait for a process that is writing; it looks again next time.
void PreferenceFileStore::File::catchUpForRead() {
  if (!words_.mapped() || words_.read(kPreferenceChangesOffset) == changesSeen_) return;
  const Status status = lockAndCatchUp(LOCK_EX | LOCK_NB);
  if (status.ok()) lockWhole(file_.get(), LOCK_UN);
}

// Changing.

void PreferenceFileStore::File::change(std::string_view key, const Value* value) {
  if (const auto found = index_.find(key); found != index_.end()) {
    if (value != nullptr && (storeInSlot(found->second, *value) || isStored(found->second, *value))) return;
  } else if (value == nullptr && words_.read(kPreferenceChangesOffset) == changesSeen_) {
    return;  // Nothing to remove.
  }
  Entry& entry = index_[std::string(key)];
  if (!entry.pending) pending_.emplace_back(key);
  entry.pending = true;
  ++generation_;
  entry.value = value == nullptr ? std::nullopt : std::optional(*value);
  writePending().ignore("flush() tries again and reports");
}

// True when `value` is in the slot and the slot still counts.
bool PreferenceFileStore::File::storeInSlot(Entry& entry, const Value& value) {
  if (entry.slot == 0 || entry.pending || entry.slotType != value.index()) return false;
  if (!words_.write(entry.slot, preferenceSlotWord(value))) return false;
  entry.value = value;
  return words_.read(kPreferenceChangesOffset) == changesSeen_;
}

// True when the file holds `value` already.
bool PreferenceFileStore::File::isStored(const Entry& entry, const Value& value) const {
  return entry.slot == 0 && !entry.pending && entry.value == value &&
         words_.read(kPreferenceChangesOffset) == changesSeen_;
}

Status PreferenceFileStore::File::flush() {
  return pending_.empty() ? Status() : writePending();
}

Status PreferenceFileStore::File::writePending() {
  if (Status status = lockAndCatchUp(LOCK_EX); !status.ok()) return status;
  Status status = damagedTail_ ? rewrite() : append();
  lockWhole(file_.get(), LOCK_UN);
  return status;
}

// Under the lock. True when the entry's value needs no new record.
bool PreferenceFileStore::File::settleInPlace(Entry& entry) {
  if (!entry.value) return entry.size == 0;
  return entry.slot != 0 && entry.slotType == entry.value->index() &&
         words_.write(entry.slot, preferenceSlotWord(*entry.value));
}

// Under the lock. One write, however many changes have gathered.
Status PreferenceFileStore::File::append() {
  std::string batch;
  std::vector<std::string> unfit;
  for (const std::string& key : pending_) {
    Entry& entry = index_.find(key)->second;
    if (settleInPlace(entry)) continue;
    if (!appendPreferenceRecord(batch, key, entry.value ? &*entry.value : nullptr)) unfit.push_back(key);
  }
  if (!batch.empty()) {
    if (Status status = appendBytes(batch); !status.ok()) return status;
  }
  Status status = settle(std::move(unfit));
  std::vector<PreferenceRecord> records;
  parsePreferenceRecords(batch, end_ - batch.size(), records);
  for (PreferenceRecord& record : records)
    apply(std::move(record));
  return status;
}

// Nothing is pending any more but the keys `unfit`, whose values the format cannot hold.
Status PreferenceFileStore::File::settle(std::vector<std::string> unfit) {
  for (const std::string& key : pending_) {
    if (std::find(unfit.begin(), unfit.end(), key) != unfit.end()) continue;
    const auto found = index_.find(key);
    found->second.pending = false;
    if (!found->second.value && found->second.size == 0) index_.erase(found);
  }
  pending_ = std::move(unfit);
  if (pending_.empty()) return {};
  return {Status::Code::invalidArgument, "The preference " + pending_.front() + " is too large to be stored"};
}

// Under the lock.
Status PreferenceFileStore::File::appendBytes(const std::string& batch) {
  words_.write(kPreferenceChangesOffset, ++changesSeen_);
  if (const int error = writeAllAt(file_.get(), batch, end_)) {
    // No process has looked at these bytes yet; when they stay, they are a damaged tail.
    damagedTail_ = ::ftruncate(file_.get(), static_cast<off_t>(end_)) != 0;
    return statusOfErrno(error, "write", path_);
  }
  end_ += batch.size();
  words_.reach(end_);
  return {};
}

// Replacing.

// Under the lock. Replaces the file by one that holds the values alone, and
// settles what was pending. After a failure the file is as it was.
Status PreferenceFileStore::File::rewrite() {
  words_.write(kPreferenceChangesOffset, ++changesSeen_);
  std::vector<std::string> unfit;
  FileDescriptor file;
  if (Status status = replaceWith(image(unfit), file); !status.ok()) return status;
  Status settled = settle(std::move(unfit));
  if (Status status = useFile(std::move(file)); !status.ok()) return status;
  if (Status status = readNewRecords(); !status.ok()) return status;
  return settled;
}

std::string PreferenceFileStore::File::image(std::vector<std::string>& unfit) {
  std::string image = preferenceHeader();
  for (auto& [key, entry] : index_) {
    if (!entry.value) continue;
    if (entry.slot != 0 && !entry.pending) {
      entry.value = preferenceSlotValue(words_.read(entry.slot), *entry.value);
    }
    if (!appendPreferenceRecord(image, key, &*entry.value)) unfit.push_back(key);
  }
  return image;
}

// Leaves the new file, locked, in `file`.
Status PreferenceFileStore::File::replaceWith(const std::string& image, FileDescriptor& file) {
  // One name is enough: whoever makes it holds the lock.
  const std::string part = path_ + ".new";
  file.reset(::open(part.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file.valid()) return statusOfErrno(errno, "make", part);
  // The new file is locked before anybody can find it under its final name.
  int error = lockWhole(file.get(), LOCK_EX | LOCK_NB);
  if (error == 0) error = writeAll(file.get(), image);
  if (error == 0 && ::fsync(file.get()) != 0) error = errno;
  if (error == 0 && ::rename(part.c_str(), path_.c_str()) != 0) error = errno;
  if (error != 0) {
    ::unlink(part.c_str());
    return statusOfErrno(error, "write", part);
  }
  syncDirectoryOf(path_).ignore("either file holds the values");
  return {};
}

// The store.

PreferenceFileStore::PreferenceFileStore(std::unique_ptr<File> file) : file_(std::move(file)) {}
PreferenceFileStore::~PreferenceFileStore() = default;

std::unique_ptr<PreferenceFileStore> PreferenceFileStore::open(const std::string& path, Status& status) {
  auto file = File::open(path, status);
  if (!file) return nullptr;
  return std::unique_ptr<PreferenceFileStore>(new PreferenceFileStore(std::move(file)));
}

const Value* PreferenceFileStore::storedValue(std::string_view key) const {
  return file_->value(key);
}
std::uint64_t PreferenceFileStore::storedGeneration() const {
  return file_->generation();
}
void PreferenceFileStore::store(std::string_view key, const Value& value) {
  file_->change(key, &value);
}
void PreferenceFileStore::erase(std::string_view key) {
  file_->change(key, nullptr);
}
Status PreferenceFileStore::flush() {
  return file_->flush();
}

}  // namespace varnok
