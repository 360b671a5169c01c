#include "platform/linux/posix/posix_file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

constexpr std::size_t kBufferSize = 262144;
constexpr std::size_t kLargeAppend = 32768;  // Written at once: a copy would cost more than the call saves.
constexpr std::size_t kReadStep = 65536;

constexpr std::string_view kPartMark = ".part-";
constexpr std::size_t kPartRandom = 6;  // What mkostemp() fills in.

// Room for the mark in a name of at most 255 bytes.
constexpr std::size_t kLongestNameInPart = 200;

bool isPartName(std::string_view name) {
  if (!name.starts_with('.') || name.size() < 1 + kPartMark.size() + kPartRandom) return false;
  const std::string_view random = name.substr(name.size() - kPartRandom);
  const std::string_view mark = name.substr(name.size() - kPartRandom - kPartMark.size(), kPartMark.size());
  return mark == kPartMark &&
         std::all_of(random.begin(), random.end(), [](unsigned char c) { return std::isalnum(c); });
}

std::string partTemplate(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  std::string part = path.substr(0, start) + "." + path.substr(start, kLongestNameInPart);
  return part.append(kPartMark).append(kPartRandom, 'X');
}

// Makes the file and takes its lock. Between the two a cleaner may take it for a
// stale one and remove it; then another is made.
int makePart(const std::string& path, std::string& partPath, FileDescriptor& file) {
  for (;;) {
    partPath = partTemplate(path);
    file.reset(::mkostemp(partPath.data(), O_CLOEXEC));
    if (!file.valid()) return errno;
    const int error = lockWhole(file.get(), LOCK_EX | LOCK_NB);
    struct stat information {};
    if (error == 0 && ::fstat(file.get(), &information) == 0 && information.st_nlink > 0) return 0;
    ::unlink(partPath.c_str());
    if (error != 0 && error != EWOULDBLOCK) return error;
  }
}

// Also right for a file that grows meanwhile, or that claims to be empty as those
// of the kernel do. The errno of a failure, 0 when done.
int readToEnd(int fd, std::size_t expected, std::string& content) {
  std::size_t step = expected + 1;  // One more, so that one read sees the end.
  if (const int error = readAt(fd, 0, step, content)) return error;
  while (content.size() >= step) {
    std::string piece;
    if (const int error = readAt(fd, content.size(), kReadStep, piece)) return error;
    if (piece.empty()) break;
    step = content.size() + kReadStep;
    content.append(piece);
  }
  return 0;
}

class PosixOpenFile : public OpenFile {
 public:
  explicit PosixOpenFile(FileDescriptor file) : file_(std::move(file)) {}

  int takeDescriptor() override { return file_.release(); }

 private:
  FileDescriptor file_;
};

class PosixAtomicFile : public AtomicFile {
 public:
  PosixAtomicFile(std::string path, std::string partPath, FileDescriptor file)
      : path_(std::move(path)), partPath_(std::move(partPath)), file_(std::move(file)) {
    buffer_.reserve(kBufferSize);
  }
  PosixAtomicFile(const PosixAtomicFile&) = delete;
  PosixAtomicFile& operator=(const PosixAtomicFile&) = delete;
  ~PosixAtomicFile() override { removePart(); }

  Status append(std::string_view bytes) override {
    if (!status_.ok()) return status_;
    const bool large = bytes.size() >= kLargeAppend;
    if (large || buffer_.size() + bytes.size() > kBufferSize) {
      if (Status status = flush(); !status.ok()) return status;
    }
    if (large) return write(bytes);
    buffer_.append(bytes);
    return {};
  }

  Status truncate(std::uint64_t size) override {
    if (!status_.ok()) return status_;
    if (Status status = flush(); !status.ok()) return status;
    const auto end = static_cast<off_t>(size);
    if (::ftruncate(file_.get(), end) != 0 || ::lseek(file_.get(), end, SEEK_SET) != end) return fail(errno);
    return {};
  }

  Status commit() override {
    if (!status_.ok()) return status_;
    if (Status status = flush(); !status.ok()) return status;
    if (::fsync(file_.get()) != 0) return fail(errno);
    if (Status status = giveName(); !status.ok()) return status;
    // With its lock it is closed only here, when nobody can take it for stale.
    file_.reset();
    return syncDirectoryOf(path_);
  }

  std::unique_ptr<OpenFile> publish(Status& status) override {
    status = status_;
    if (status.ok()) status = flush();
    if (status.ok()) status = giveName();
    return status.ok() ? std::make_unique<PosixOpenFile>(std::move(file_)) : nullptr;
  }

 private:
  Status flush() {
    Status status = write(buffer_);
    buffer_.clear();
    return status;
  }

  Status write(std::string_view bytes) {
    if (const int error = writeAll(file_.get(), bytes)) return fail(error);
    return {};
  }

  Status giveName() {
    if (::rename(partPath_.c_str(), path_.c_str()) != 0) return fail(errno);
    partPath_.clear();
    status_ = {Status::Code::invalidArgument, path_ + " is finished already"};
    return {};
  }

  Status fail(int error) {
    status_ = statusOfErrno(error, "write", path_);
    removePart();
    return status_;
  }

  void removePart() {
    if (!partPath_.empty()) ::unlink(partPath_.c_str());
    partPath_.clear();
    file_.reset();
  }

  std::string path_;
  std::string partPath_;  // Empty when there is no temporary file any more.
  FileDescriptor file_;
  std::string buffer_;
  Status status_;  // The first failure.
};

class PosixFileLock : public FileLock {
 public:
  explicit PosixFileLock(FileDescriptor file) : file_(std::move(file)) {}

 private:
  FileDescriptor file_;  // Closing it gives the lock back.
};

struct DirectoryEntry {
  std::string name;
  unsigned char type = DT_UNKNOWN;
};

unsigned char typeOf(int directory, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type;
  struct stat information {};
  if (::fstatat(directory, entry.d_name, &information, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
  if (S_ISREG(information.st_mode)) return DT_REG;
  return S_ISDIR(information.st_mode) ? DT_DIR : DT_UNKNOWN;
}

// Empty when the directory cannot be read.
std::vector<DirectoryEntry> entriesOf(const std::string& directory) {
  std::vector<DirectoryEntry> entries;
  const int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return entries;
  DIR* stream = ::fdopendir(fd);
  if (stream == nullptr) {
    ::close(fd);
    return entries;
  }
  while (const dirent* entry = ::readdir(stream)) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    entries.push_back({std::string(name), typeOf(fd, *entry)});
  }
  ::closedir(stream);
  return entries;
}

std::string withSlash(std::string path) {
  if (!path.ends_with('/')) path.push_back('/');
  return path;
}

void removeIfStale(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (file.valid() && lockWhole(file.get(), LOCK_EX | LOCK_NB) == 0) ::unlink(path.c_str());
}

}  // namespace

std::unique_ptr<AtomicFile> PosixFileSystem::createAtomic(const std::string& path, Status& status) {
  std::string partPath;
  FileDescriptor file;
  if (const int error = makePart(path, partPath, file)) {
    status = statusOfErrno(error, "make", path);
    return nullptr;
  }
  status = {};
  return std::make_unique<PosixAtomicFile>(path, std::move(partPath), std::move(file));
}

std::optional<std::string> PosixFileSystem::readFile(const std::string& path, Status& status) {
  // Not blocking: opening a pipe would wait for its other end.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat information {};
  if (!file.valid() || ::fstat(file.get(), &information) != 0) {
    status = statusOfErrno(errno, "read", path);
    return std::nullopt;
  }
  if (!S_ISREG(information.st_mode)) {
    status = {Status::Code::invalidArgument, "Cannot read " + path + ": it is not a file"};
    return std::nullopt;
  }
  std::string content;
  if (const int error = readToEnd(file.get(), static_cast<std::size_t>(information.st_size), content)) {
    status = statusOfErrno(error, "read", path);
    return std::nullopt;
  }
  status = {};
  return content;
}

std::optional<FileAttributes> PosixFileSystem::attributes(const std::string& path) {
  struct stat information {};
  if (::stat(path.c_str(), &information) != 0 || !S_ISREG(information.st_mode)) return std::nullopt;
  return FileAttributes{static_cast<std::uint64_t>(information.st_size),
                        Instant(std::chrono::seconds(information.st_mtim.tv_sec))};
}

Status PosixFileSystem::remove(const std::string& path) {
  if (::unlink(path.c_str()) != 0) return statusOfErrno(errno, "delete", path);
  return {};
}

// The folders under way are kept as their unread entries, so that neither the
// stack nor the number of open files grows with the depth.
std::vector<std::string> PosixFileSystem::filesBelow(const std::string& directory) {
  struct Level {
    std::string prefix;  // Relative; empty or with a slash at its end.
    std::vector<DirectoryEntry> entries;
    std::size_t next = 0;
  };
  std::vector<std::string> files;
  std::vector<Level> levels;
  levels.push_back({"", entriesOf(withSlash(directory)), 0});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.entries.size()) {
      levels.pop_back();
      continue;
    }
    const DirectoryEntry& entry = level.entries[level.next++];
    if (entry.type == DT_REG && !isPartName(entry.name)) files.push_back(level.prefix + entry.name);
    if (entry.type != DT_DIR) continue;
    std::string prefix = level.prefix + entry.name + "/";
    auto entries = entriesOf(withSlash(directory) + level.prefix + entry.name);
    levels.push_back({std::move(prefix), std::move(entries), 0});
  }
  return files;
}

bool PosixFileSystem::isReservedName(std::string_view name) const {
  return isPartName(name);
}

std::uint64_t PosixFileSystem::freeSpace(const std::string& directory) {
  struct statvfs information {};
  if (::statvfs(directory.c_str(), &information) != 0) return 0;
  return static_cast<std::uint64_t>(information.f_bavail) * information.f_frsize;
}

std::unique_ptr<FileLock> PosixFileSystem::tryLock(const std::string& path, Status& status) {
  FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600));
  if (!file.valid()) {
    status = statusOfErrno(errno, "open", path);
    return nullptr;
  }
  if (const int error = lockWhole(file.get(), LOCK_EX | LOCK_NB)) {
    status = statusOfErrno(error, "lock", path);
    return nullptr;
  }
  status = {};
  return std::make_unique<PosixFileLock>(std::move(file));
}

void removeStaleParts(const std::string& directory) {
  for (const DirectoryEntry& entry : entriesOf(withSlash(directory))) {
    if (entry.type == DT_REG && isPartName(entry.name)) removeIfStale(withSlash(directory) + entry.name);
  }
}

Status makeDirectories(const std::string& path) {
  std::size_t end = 0;
  while (end < path.size()) {
    end = std::min(path.find('/', end + 1), path.size());
    const std::string part = path.substr(0, end);
    if (::mkdir(part.c_str(), 0700) == 0) continue;
    const int error = errno;
    struct stat information {};
    const bool there = ::stat(part.c_str(), &information) == 0 && S_ISDIR(information.st_mode);
    if (!there) return statusOfErrno(error == EEXIST ? ENOTDIR : error, "make the directory", part);
  }
  return {};
}

}  // namespace varnok
