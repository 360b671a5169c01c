// FileSystem: the files that the core reads and writes. Paths are absolute,
// UTF-8, with "/". Any thread; a stream belongs to the thread that uses it.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

// Bytes on their way into one file. Appends are collected in a buffer, so small
// ones are cheap.
class OutputStream {
 public:
  OutputStream() = default;
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;
  virtual ~OutputStream() = default;

  // After the first failure every later append fails the same way.
  virtual Status append(std::string_view bytes) = 0;
};

// A file open for reading. It can be read, and holds the same, when its name has
// gone or belongs to another file.
class OpenFile {
 public:
  virtual ~OpenFile() = default;

  // The system's descriptor, from now on the caller's to close; -1 when it was
  // taken before or the file is not the system's.
  virtual int takeDescriptor() = 0;
};

// A file that appears under its final name only when it is whole.
class AtomicFile : public OutputStream {
 public:
  // Forgets the bytes from `size` on; the next append continues there.
  virtual Status truncate(std::uint64_t size) = 0;

  // Flushes, makes durable and renames to the final name, replacing a file of
  // that name. After a failure the temporary file is gone and the final name
  // is as it was. Destroyed without commit(): the same.
  virtual Status commit() = 0;

  // As commit(), without waiting for the disk, for a file that can be made
  // again: after a power failure it may be empty. Null with a Status when it
  // cannot be done.
  virtual std::unique_ptr<OpenFile> publish(Status& status) = 0;
};

struct FileAttributes {
  std::uint64_t size = 0;  // Bytes.
  Instant modified;
};

// Held until destroyed.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Null with a Status when the file cannot be made.
  virtual std::unique_ptr<AtomicFile> createAtomic(const std::string& path, Status& status) = 0;

  // The whole file, or nothing with a Status.
  virtual std::optional<std::string> readFile(const std::string& path, Status& status) = 0;

  // Nothing when there is no such file or it cannot be looked at.
  virtual std::optional<FileAttributes> attributes(const std::string& path) = 0;

  // notFound when there is no such file.
  virtual Status remove(const std::string& path) = 0;

  // Every regular file below `directory`, subfolders included, as paths
  // relative to it, in the directory's own order. Files on their way
  // (AtomicFile) are left out; links are not followed.
  virtual std::vector<std::string> filesBelow(const std::string& directory) = 0;

  // Kept for files on their way: a file of such a name may vanish.
  virtual bool isReservedName(std::string_view name) const = 0;

  // Bytes that may still be written below `directory`; 0 when that is not known.
  virtual std::uint64_t freeSpace(const std::string& directory) = 0;

  // Takes the lock without waiting; null when another process or another part
  // of this one holds it (busy) or the file cannot be opened.
  virtual std::unique_ptr<FileLock> tryLock(const std::string& path, Status& status) = 0;
};

}  // namespace varnok
