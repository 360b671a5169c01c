// The few POSIX pieces that the backends of this folder share.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/status.h"

namespace varnok {

// Owns a file descriptor; -1 is none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) reset(std::exchange(other.fd_, -1));
    return *this;
  }
  ~FileDescriptor() { reset(); }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  void reset(int fd = -1);
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_ = -1;
};

// "Cannot WHAT PATH: CAUSE", with the code that fits `error`, an errno.
Status statusOfErrno(int error, std::string_view what, const std::string& path);

// Writes all of `bytes` at the descriptor's position; the errno of a failure, 0 when done.
int writeAll(int fd, std::string_view bytes);

// Writes all of `bytes` at `offset`; the errno of a failure, 0 when done. After
// a failure a part of them may be there.
int writeAllAt(int fd, std::string_view bytes, std::uint64_t offset);

// Reads up to `size` bytes from `offset`; fewer when the file ends before. The
// errno of a failure, 0 when done.
int readAt(int fd, std::uint64_t offset, std::size_t size, std::string& bytes);

// flock() that goes on after a signal; the errno of a failure, 0 when done.
int lockWhole(int fd, int operation);

// Makes a rename or a removal in the directory of `path` durable.
Status syncDirectoryOf(const std::string& path);

}  // namespace varnok
