#include "platform/linux/posix/posix_io.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace varnok {
namespace {

struct ErrorCode {
  int error;
  Status::Code code;
};

// What is not listed is inputOutput. EFBIG is the file size limit of a process,
// which to its user is the same as a full disk.
constexpr ErrorCode kErrorCodes[] = {
    {ENOENT, Status::Code::notFound},     {ENOTDIR, Status::Code::notFound},
    {EACCES, Status::Code::accessDenied}, {EPERM, Status::Code::accessDenied},
    {EROFS, Status::Code::accessDenied},  {ENOSPC, Status::Code::noSpace},
    {EDQUOT, Status::Code::noSpace},      {EFBIG, Status::Code::noSpace},
    {EWOULDBLOCK, Status::Code::busy},    {ENAMETOOLONG, Status::Code::invalidArgument},
};

Status::Code codeOf(int error) {
  for (const ErrorCode& entry : kErrorCodes) {
    if (entry.error == error) return entry.code;
  }
  return Status::Code::inputOutput;
}

}  // namespace

void FileDescriptor::reset(int fd) {
  if (fd_ >= 0) ::close(fd_);
  fd_ = fd;
}

Status statusOfErrno(int error, std::string_view what, const std::string& path) {
  std::string message = "Cannot ";
  message.append(what).append(" ").append(path).append(": ").append(std::generic_category().message(error));
  return {codeOf(error), std::move(message)};
}

int writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int writeAllAt(int fd, std::string_view bytes, std::uint64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    offset += static_cast<std::uint64_t>(written);
  }
  return 0;
}

int readAt(int fd, std::uint64_t offset, std::size_t size, std::string& bytes) {
  bytes.resize(size);
  std::size_t have = 0;
  while (have < size) {
    const ssize_t got = ::pread(fd, bytes.data() + have, size - have, static_cast<off_t>(offset + have));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  bytes.resize(have);
  return 0;
}

int lockWhole(int fd, int operation) {
  while (::flock(fd, operation) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

Status syncDirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  const FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd.valid()) return statusOfErrno(errno, "open", directory);
  // EINVAL: a file system whose directories cannot be synchronised.
  if (::fsync(fd.get()) != 0 && errno != EINVAL) return statusOfErrno(errno, "write", directory);
  return {};
}

}  // namespace varnok
